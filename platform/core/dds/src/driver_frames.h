// Translations between the core's driver types and the transport's frames and
// offers.
#ifndef VORX_DRIVER_DDS_SRC_DRIVER_FRAMES_H
#define VORX_DRIVER_DDS_SRC_DRIVER_FRAMES_H

#include <cstdint>
#include <string>
#include <vector>

#include "vorx/driver/dds/frame.h"
#include "vorx/vcc/driver/driver.h"

namespace vorx {
namespace driver {
namespace dds {

// The search filter of a service description.
FindFilter FilterOf(const vcc::ServiceDescription& desc);
// Same binding, service, path and instance: an offer a client of `desc` may
// talk to.
bool SameService(const ServiceOffer& offer, const vcc::ServiceDescription& desc);
// The core's handle of an offer.
vcc::HandleType HandleOf(const ServiceOffer& offer, const std::string& network);
// The bytes of a payload for the wire; false for a payload that holds only an
// object (this driver cannot encode it).
bool WireBytes(const vcc::Payload& payload, std::vector<uint8_t>* out);
vcc::Payload PayloadOf(std::vector<uint8_t> bytes);
// A received reply frame as the core's reply.
vcc::MethodReply ReplyOf(Frame frame);
// A received event frame as the core's sample, its send time on this process's
// monotonic clock.
vcc::EventSample SampleOf(Frame frame);

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
