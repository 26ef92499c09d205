#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_EVENT_CLIENT_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_EVENT_CLIENT_H

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "ara/kelda/common/log/log.h"
#include "orx/maintaind/types.h"
#include "orxmaintaind/maintaind_client_error_code.h"
#include "orxmaintaind/orx_maintaind_e2e_client.h"
#include "orxmaintaind/orx_maintaind_request.h"
#include "orxmaintaind/orxcm_dfx_export.h"
#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/api/types/entity_info.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

// Reports one event, as seen on all the bindings that carry it, to the maintenance daemon: one
// EventRegisterInfo with an entry per DDS and SOME/IP binding (other bindings are not reported),
// sent in one AppRegisterInfo of kind 0.
//
// No lock of its own: the client core calls it on the EventController thread with the client
// mutex held. The application name is set by the client core before the first send and only
// changes under that mutex. Failures are returned, never thrown.
class ORXCM_DFX_EXPORT OrxMaintaindEventClient {
  public:
    using EventInfoMap = std::map<vorx::vcc::api::types::DriverType,
                                  std::shared_ptr<vorx::vcc::api::types::EventInfo>>;

    OrxMaintaindEventClient();

    // Where to send; the client core hands it over before every send. Until then there is no
    // proxy and every send returns 3.
    void SetDaemonLink(DaemonLink link) { link_ = std::move(link); }

    void SetApplicationName(const std::string& appName);
    const std::string& GetApplicationName() const { return appName_; }

    // Reports the event as online (RegisterEvent) or offline (UnRegisterEvent). isPub: offering
    // side. Blocks up to 300 ms for the reply.
    type::MaintaindClientErrorCode RegisterEvent(const EventInfoMap& infos, const bool& isPub);
    type::MaintaindClientErrorCode UnRegisterEvent(const EventInfoMap& infos, const bool& isPub);
    // Converts, marks with isOnline, sends and logs the outcome.
    type::MaintaindClientErrorCode SendEventInfoToMaintaind(const EventInfoMap& infos,
                                                            const bool& isPub,
                                                            const bool& isOnline);
    // Conversion only: always returns a record, without binding entries when the map holds no
    // DDS or SOME/IP description.
    std::shared_ptr<orx::maintaind::EventRegisterInfo> ChangeToEventRegisterInfo(
        const EventInfoMap& infos, const bool& isPub);
    // One request with the record (online flag as it is) and the wait for its reply. Returns 3
    // without a proxy, 2 without a reply within 300 ms, 1 when the request produced no result,
    // else 0 (whatever return code the daemon sent).
    type::MaintaindClientErrorCode RegisterEventInfo(
        const std::shared_ptr<orx::maintaind::EventRegisterInfo>& record, bool isPub);

  private:
    DaemonLink link_;
    std::string appName_;
    std::shared_ptr<ara::kelda::common::log::Log> logger_;
    std::shared_ptr<OrxMaintaindE2EClient> e2eClient_;
};

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx

#endif
