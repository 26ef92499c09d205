#ifndef ORX_ORXCM_ORXMAINTAIND_MAINTAIND_CLIENT_ERROR_CODE_H
#define ORX_ORXCM_ORXMAINTAIND_MAINTAIND_CLIENT_ERROR_CODE_H

#include <cstdint>

namespace orx {
namespace orxcm {
namespace orxmaintaind {
namespace type {

// Outcome of one request to the maintenance daemon.
enum class MaintaindClientErrorCode : uint8_t {
    kOk = 0,              // a reply came, whatever return code it carried
    kSendFailed = 1,      // the request could not be sent or produced an error result
    kTimeout = 2,         // no reply within 300 ms
    kNotInitialized = 3,  // no proxy yet, or the daemon's method is not ready
};

}  // namespace type
}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx

#endif
