#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_E2E_CLIENT_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_E2E_CLIENT_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ara/kelda/common/log/log.h"
#include "orx/maintaind/types.h"
#include "orxmaintaind/maintaind_client_error_code.h"
#include "orxmaintaind/orx_maintaind_request.h"
#include "orxmaintaind/orxcm_dfx_export.h"
#include "vorx/vcc/api/types/e2e_config.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

// Reports the E2E protection settings of this process's events to the maintenance daemon: one
// NodeCommonRegisterInfo carrying the list, sent in one AppRegisterInfo of kind 3. Publisher-side
// configurations go to pubE2EConfigs, the others to subE2EConfigs.
//
// No lock of its own; called on the EventController thread under the client core's mutex. The
// owner sets the application name before use. Failures are returned, never thrown.
class ORXCM_DFX_EXPORT OrxMaintaindE2EClient {
  public:
    using E2EConfigList = std::vector<vorx::vcc::api::types::EventE2EConfigInfo>;

    OrxMaintaindE2EClient();

    // Where to send; the client core hands it over before every send. Until then there is no
    // proxy and every send returns 3.
    void SetDaemonLink(DaemonLink link) { link_ = std::move(link); }

    void SetApplicationName(const std::string& appName) { appName_ = appName; }
    const std::string& GetApplicationName() const { return appName_; }

    // Converts and sends the whole list in one request (also an empty list). Blocks up to 300 ms.
    type::MaintaindClientErrorCode RegisterE2EInfo(const E2EConfigList& configs);
    // The process record carrying the converted list.
    std::shared_ptr<orx::maintaind::NodeCommonRegisterInfo> ChangeAppE2EConfigToRegisterInfo(
        const E2EConfigList& configs);
    // Converts every entry; an entry whose instance id text is not a 16-bit number is dropped
    // with a rate-limited warning, the others are kept in order.
    std::vector<orx::maintaind::EventE2EConfigInfo> ChangeEventE2EConfigToRegisterInfo(
        const E2EConfigList& configs);
    // One request with the record and the wait for its reply (codes as the event client's).
    type::MaintaindClientErrorCode RegisterNodeE2ESubInfo(
        const orx::maintaind::NodeCommonRegisterInfo& record);

  private:
    DaemonLink link_;
    std::string appName_;
    int32_t pid_;
    std::shared_ptr<ara::kelda::common::log::Log> logger_;
    // Core transformer values that the records carry, each to the same number.
    std::map<vorx::vcc::api::types::E2EXf_Profile, orx::maintaind::E2EProfile> profileMap_;
    std::map<vorx::vcc::api::types::E2EXf_DataIDMode, orx::maintaind::E2EDataIDMode> dataIdModeMap_;
};

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx

#endif
