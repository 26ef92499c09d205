#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_FIELD_CLIENT_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_FIELD_CLIENT_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "ara/kelda/common/log/log.h"
#include "orx/maintaind/types.h"
#include "orxmaintaind/maintaind_client_error_code.h"
#include "orxmaintaind/orx_maintaind_request.h"
#include "orxmaintaind/orxcm_dfx_export.h"
#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/api/types/entity_info.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

// Reports one field (a value with an optional notifier event, getter and setter), as seen on all
// the bindings that carry it, to the maintenance daemon: one FieldRegisterInfo with a FieldInfo
// sub-record and an instance short name per DDS and SOME/IP binding, sent in one AppRegisterInfo
// of kind 2. The members all bindings share (names, ids, presence flags) are written by each
// binding entry in turn from its own description, so with both bindings the SOME/IP entry, which
// comes last, decides them.
//
// No lock of its own; called on the EventController thread under the client core's mutex.
// Failures are returned, never thrown.
class ORXCM_DFX_EXPORT OrxMaintaindFieldClient {
  public:
    using FieldInfoPtr = std::shared_ptr<vorx::vcc::api::types::FieldInfo>;
    using FieldInfoMap = std::map<vorx::vcc::api::types::DriverType, FieldInfoPtr>;
    using FieldEntry = std::pair<const vorx::vcc::api::types::DriverType, FieldInfoPtr>;

    OrxMaintaindFieldClient();

    // Where to send; the client core hands it over before every send. Until then there is no
    // proxy and every send returns 3.
    void SetDaemonLink(DaemonLink link) { link_ = std::move(link); }

    void SetApplicationName(const std::string& appName) { appName_ = appName; }
    const std::string& GetApplicationName() const { return appName_; }

    // Reports the field as online (RegisterField) or offline (UnregisterField). Blocks up to
    // 300 ms for the reply.
    type::MaintaindClientErrorCode RegisterField(const FieldInfoMap& infos, const bool& isPub);
    type::MaintaindClientErrorCode UnregisterField(const FieldInfoMap& infos, const bool& isPub);
    type::MaintaindClientErrorCode SendFieldInfoToMaintaind(const FieldInfoMap& infos,
                                                            const bool& isPub,
                                                            const bool& isOnline);
    // Conversion, the online flag included.
    std::shared_ptr<orx::maintaind::FieldRegisterInfo> ChangeToFieldRegisterInfo(
        const FieldInfoMap& infos, const bool& isPub, const bool& isOnline);
    void DDSRegisterFieldInfo(const FieldEntry& entry, orx::maintaind::FieldRegisterInfo& record,
                              bool isPub) const;
    void SomeipRegisterFieldInfo(const FieldEntry& entry, orx::maintaind::FieldRegisterInfo& record,
                                 bool isPub) const;
    // Fills the shared members and adds the binding's sub-record and short name under
    // `driverType` (maintenance numbering). EventT/MethodT: the binding's descriptions
    // (DDSEventInfo with DDSMethodInfo, or SomeipEventInfo with SomeipMethodInfo).
    template <typename EventT, typename MethodT>
    void GetFieldInfo(const FieldEntry& entry, orx::maintaind::FieldRegisterInfo& record,
                      orx::maintaind::DriverType driverType, bool isPub) const;
    // Name and service id of the field from the first entry of `infos`: from its notifier, else
    // its getter, else its setter. Left untouched when it has none of them.
    void ParseToGetFieldInfo(std::string& name, uint16_t& id, const FieldInfoMap& infos) const;

    // One request with the record and the wait for its reply (codes as the event client's).
    type::MaintaindClientErrorCode RegisterFieldInfo(
        const std::shared_ptr<orx::maintaind::FieldRegisterInfo>& record, const bool& isPub);

  private:
    void LogFieldChange(const FieldEntry& entry, const orx::maintaind::FieldRegisterInfo& record,
                        orx::maintaind::DriverType driverType, const char* binding) const;

    DaemonLink link_;
    std::string appName_;
    int32_t pid_;
    std::shared_ptr<ara::kelda::common::log::Log> logger_;
};

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx

#endif
