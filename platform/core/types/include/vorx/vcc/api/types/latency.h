#ifndef VORX_VCC_API_TYPES_LATENCY_H
#define VORX_VCC_API_TYPES_LATENCY_H

#include <cstdint>

namespace vorx {
namespace vcc {
namespace api {
namespace types {

// Whether an event measures the latency of its samples.
enum class LatencyAnalysisMode : uint8_t {
    DISABLE = 0,
    ENABLE = 1,
};

// Latency of the samples a subscriber received since it was last asked, in
// microseconds (send time stamped by the publisher, receive time taken by the
// subscriber). A period without samples has maxLatency 0.
struct LatencyResult {
    uint64_t minLatency{0};
    uint64_t maxLatency{0};
    uint64_t averageLatency{0};
};

}  // namespace types
}  // namespace api
}  // namespace vcc
}  // namespace vorx

#endif
