#ifndef VORX_DRIVER_DDS_DDS_STATUS_H
#define VORX_DRIVER_DDS_DDS_STATUS_H

#include <cstdint>
#include <string>
#include <utility>

#include "vorx/vcc/export.h"

namespace vorx {
namespace driver {
namespace dds {

// What went wrong in a DDS call, as our own value. Cyclone's return codes are
// turned into these where they are met (TranslateReturnCode) and never leave
// the driver's source files as raw numbers.
enum class DdsErrc : uint8_t {
    kOk = 0,
    kError,                 // unspecified failure inside DDS
    kUnsupported,           // the feature is not available in this DDS build
    kBadParameter,          // a value we passed was refused
    kPreconditionNotMet,    // the call came at the wrong time (entity state)
    kOutOfResources,        // memory, sockets, history or participant index exhausted
    kNotEnabled,            // the entity is not enabled yet
    kInconsistentPolicy,    // QoS settings contradict each other
    kAlreadyDeleted,        // the entity is gone
    kTimeout,               // a blocking write or wait ran out of time
    kNoData,                // nothing to read
    kIllegalOperation,      // the call is not allowed on this entity
    kNotAllowedBySecurity,  // refused by DDS security
    kNoPeer,                // no matching reader/writer of the peer was found in time
    kNotReady,              // the driver has no participant or the entity was never set up
    kUnknown,               // a return code this driver does not know
};

// Stable name of a code, e.g. "kTimeout".
VCC_EXPORT const char* DdsErrcName(DdsErrc code);

// Outcome of a driver operation: kOk, or an error code with a message that
// names what failed ("create reader on topic \"T\": DDS_RETCODE_BAD_PARAMETER
// (Bad Parameter)").
class VCC_EXPORT DdsStatus {
  public:
    DdsStatus() = default;  // success
    DdsStatus(DdsErrc code, std::string message) : code_(code), message_(std::move(message)) {}

    static DdsStatus Ok() { return DdsStatus(); }

    bool ok() const { return code_ == DdsErrc::kOk; }
    explicit operator bool() const { return ok(); }
    DdsErrc code() const { return code_; }
    const std::string& message() const { return message_; }

  private:
    DdsErrc code_{DdsErrc::kOk};
    std::string message_;
};

// Turns a Cyclone return value (dds_return_t, or an entity handle: negative
// means failure) into a status. Non-negative values give Ok. For a failure the
// message is `what` + ": " + the code's Cyclone name + " (" + Cyclone's own
// description + ")".
VCC_EXPORT DdsStatus TranslateReturnCode(int32_t returnCode, const std::string& what);

// The code alone, without building a message.
VCC_EXPORT DdsErrc TranslateReturnCodeValue(int32_t returnCode);

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif  // VORX_DRIVER_DDS_DDS_STATUS_H
