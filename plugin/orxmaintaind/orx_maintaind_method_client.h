#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_METHOD_CLIENT_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_METHOD_CLIENT_H

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
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/api/types/entity_info.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

// Reports one method, as seen on all the bindings that carry it, to the maintenance daemon: one
// MethodRegisterInfo with the shared members taken from the first DDS or SOME/IP binding (DDS
// sorts first) and a sub-record per binding, sent in one AppRegisterInfo of kind 1.
//
// No lock of its own; called on the EventController thread under the client core's mutex.
// Failures are returned, never thrown.
class ORXCM_DFX_EXPORT OrxMaintaindMethodClient {
  public:
    using MethodInfoPtr = std::shared_ptr<vorx::vcc::api::types::MethodInfo>;
    using MethodInfoMap = std::map<vorx::vcc::api::types::DriverType, MethodInfoPtr>;
    using MethodEntry = std::pair<const vorx::vcc::api::types::DriverType, MethodInfoPtr>;

    OrxMaintaindMethodClient();

    // Where to send; the client core hands it over before every send. Until then there is no
    // proxy and every send returns 3.
    void SetDaemonLink(DaemonLink link) { link_ = std::move(link); }

    void SetApplicationName(const std::string& appName);
    const std::string& GetApplicationName() const { return appName_; }

    // Reports the method as online (RegisterMethod) or offline (UnregisterMethod). Blocks up to
    // 300 ms for the reply.
    type::MaintaindClientErrorCode RegisterMethod(const MethodInfoMap& infos, const bool& isPub);
    type::MaintaindClientErrorCode UnregisterMethod(const MethodInfoMap& infos, const bool& isPub);
    type::MaintaindClientErrorCode SendMethodInfoToMaintaind(const MethodInfoMap& infos,
                                                             const bool& isPub,
                                                             const bool& isOnline);
    // Conversion only; the online flag is left false.
    std::shared_ptr<orx::maintaind::MethodRegisterInfo> ChangeToMethodRegisterInfo(
        const MethodInfoMap& infos, const bool& isPub);

    // Adds one binding entry to the record; `driverType` is the maintenance numbering (0 DDS,
    // anything else SOME/IP). The shared members are filled only while the record's method name
    // is still empty, so the first binding processed sets them.
    template <typename BindingInfo>
    void GetMethodInfo(const MethodEntry& entry, orx::maintaind::MethodRegisterInfo& record,
                       orx::maintaind::DriverType driverType, bool isPub);
    void GetDDSMethodRegisterInfo(const MethodEntry& entry,
                                  orx::maintaind::MethodRegisterInfo& record, bool isPub);
    void GetSomeipMethodRegisterInfo(const MethodEntry& entry,
                                     orx::maintaind::MethodRegisterInfo& record, bool isPub);
    void ChangeDDSQosToMaintaindQos(const std::shared_ptr<vorx::driver::dds::DDSMethodInfo>& info,
                                    orx::maintaind::DDSMethodInfo& record) const;
    // Copies request and reply serialization kinds, role and the field flag, each only when it is
    // 0 or 1.
    void GetMethodSerializationInfo(const MethodInfoPtr& info,
                                    orx::maintaind::MethodRegisterInfo& record) const;
    void PrintMethodArgsList(const orx::maintaind::MethodRegisterInfo& record);
    // The text from its last "/" on, the "/" included; "" without a "/".
    std::string GetMethodName(const std::string& text) const;
    // "SEA" when this platform's C library names the SEA host domain, else "GEA".
    std::string GetHostDomainInfo();

    // One request with the record and the wait for its reply (codes as the event client's).
    type::MaintaindClientErrorCode RegisterMethodInfo(
        const std::shared_ptr<orx::maintaind::MethodRegisterInfo>& record, const bool& isPub);

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
