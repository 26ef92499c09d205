// A blocking search for one service, for tests and benchmarks that need a proxy and nothing else.
#ifndef ORX_TEST_FIND_SERVICE_H
#define ORX_TEST_FIND_SERVICE_H

#include <chrono>
#include <optional>

#include "vorx/vcc/handle_type.h"
#include "vorx/vcc/proxy.h"

namespace orx::test {

// Searches `service` until the first offer shows up or `timeout` passes; the search is stopped
// before returning. std::nullopt when nothing was offered in time.
std::optional<vorx::vcc::HandleType> FindFirstOffer(const vorx::vcc::ServiceDescription& service,
                                                    std::chrono::milliseconds timeout);

}  // namespace orx::test

#endif  // ORX_TEST_FIND_SERVICE_H
