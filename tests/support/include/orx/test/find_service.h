// The maintenance daemon's services and a blocking search for one service, for tests and benchmarks
// that need a proxy and nothing else.
#ifndef ORX_TEST_FIND_SERVICE_H
#define ORX_TEST_FIND_SERVICE_H

#include <chrono>
#include <cstdint>
#include <optional>

#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/handle_type.h"
#include "vorx/vcc/proxy.h"

namespace orx::test {

// A maintenance daemon's service as a client looks for it: the application side
// (service::kAppServiceId) or the tools side (any other id), instance "1", on `binding`.
vorx::vcc::ServiceDescription MaintaindService(uint16_t serviceId,
                                               vorx::vcc::api::types::DriverType binding);

// Searches `service` until the first offer shows up or `timeout` passes; the search is stopped
// before returning. std::nullopt when nothing was offered in time.
std::optional<vorx::vcc::HandleType> FindFirstOffer(const vorx::vcc::ServiceDescription& service,
                                                    std::chrono::milliseconds timeout);

}  // namespace orx::test

#endif  // ORX_TEST_FIND_SERVICE_H
