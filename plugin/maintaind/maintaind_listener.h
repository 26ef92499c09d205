#ifndef ORX_ORXCM_MAINTAIND_MAINTAIND_LISTENER_H
#define ORX_ORXCM_MAINTAIND_MAINTAIND_LISTENER_H

#include <atomic>
#include <cstdint>
#include <memory>

#include "ara/kelda/common/log/log.h"
#include "orxmaintaind/orxcm_dfx_export.h"
#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/api/types/subscriber_listener.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {
class OrxMaintaindClient;
}  // namespace orxmaintaind

namespace maintaind {

// The sample-timeout listener the plug-in hands to the core: every timeout notice becomes one
// registration request to the maintenance daemon carrying a ListenerParams record. No
// throttling, no de-duplication, no retry, no cache: a notice without a daemon proxy is dropped
// after a warning, a failed reply is only logged.
//
// Made with std::make_shared by the maintenance client, which also stores the configured
// threshold in it. Thread-safe: the core may call it from any of its threads at once.
class ORXCM_DFX_EXPORT MaintaindListener : public vorx::vcc::api::types::SubscriberListener {
  public:
    // Takes the "CM" logger and a weak reference to the maintenance client.
    // REQUIRES: the maintenance client exists (do not make one inside its constructor).
    MaintaindListener();
    ~MaintaindListener() override;
    MaintaindListener(const MaintaindListener&) = delete;
    MaintaindListener& operator=(const MaintaindListener&) = delete;

    // Sends one report for `info` (name, timeout and timeout count) and returns at once; the
    // reply is checked by a continuation on the thread that completes it. `driverType` is not
    // used. Never throws toward the core.
    void OnSampleTimeout(const vorx::vcc::api::types::ListenerTimeoutInfo& info,
                         vorx::vcc::api::types::DriverType driverType) override;

    // The sample-timeout threshold in milliseconds as configured; kept for the core, not read by
    // OnSampleTimeout.
    void SetTimeoutThreshold(uint32_t threshold);
    uint32_t GetTimeoutThreshold() const;

  private:
    std::shared_ptr<ara::kelda::common::log::Log> logger_;
    // Weak: the client owns this listener, and the core may still call it while the client is
    // being destroyed at process exit.
    std::weak_ptr<orxmaintaind::OrxMaintaindClient> client_;
    std::atomic<uint32_t> timeoutThreshold_{0};
};

}  // namespace maintaind
}  // namespace orxcm
}  // namespace orx

#endif  // ORX_ORXCM_MAINTAIND_MAINTAIND_LISTENER_H
