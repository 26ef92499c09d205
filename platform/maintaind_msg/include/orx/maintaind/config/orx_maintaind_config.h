#ifndef ORX_MAINTAIND_CONFIG_ORX_MAINTAIND_CONFIG_H
#define ORX_MAINTAIND_CONFIG_ORX_MAINTAIND_CONFIG_H

#include <memory>
#include <string>

#include "orx/maintaind/config/export.h"
#include "orx/maintaind/config/orx_maintaind_serialize_helper.h"
#include "orx/maintaind/config/value_conversions.h"
#include "orx/maintaind/types.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/driver/someip/someip_entity_info.h"
#include "vorx/vcc/api/types/e2e_config.h"

namespace orx {
namespace maintaind {
namespace config {

// Converts the core's entity descriptions into maintenance records. Stateless and
// cheap to make: the registration clients create one per binding entry. All
// operations are const and safe to call from any thread on distinct records.
class MAINTAIND_MSG_EXPORT OrxMaintaindConfig {
  public:
    OrxMaintaindConfig() = default;

    // Fills the shared members of `record` from the event's DDS binding and stores
    // the binding's entry under DriverType::DDS in record.eventInfos (replacing an
    // earlier DDS entry). Shared members the description leaves empty keep what the
    // record already holds, so the call for the SOME/IP binding of the same event,
    // before or after, completes the same record. Also sets appName (when not empty)
    // and pid (this process). Leaves record.isOnline alone; isPub travels with the
    // request and is not used here. Always returns true.
    bool GetDDSEventRegisterInfo(const vorx::driver::dds::DDSEventInfo& info,
                                 orx::maintaind::EventRegisterInfo& record, bool isPub,
                                 const std::string& appName) const;

    // The same for the event's SOME/IP binding, stored under DriverType::SOMEIP.
    bool GetSOMEIPEventRegisterInfo(const vorx::driver::someip::SomeipEventInfo& info,
                                    orx::maintaind::EventRegisterInfo& record, bool isPub,
                                    const std::string& appName) const;

    // The core's E2E transformer settings as the record carries them. The profile
    // keeps its number when it is one of 4, 5, 6, 7, 11, 22, 41 or 44, and the data-id
    // mode when it is 0 or 3; any other value leaves that member at its default. A
    // null pointer (no E2E protection) gives a default record.
    orx::maintaind::E2EConfigInfo ChangeE2EInfoToTransportStruct(
        const std::shared_ptr<vorx::vcc::api::types::E2EXfConfig>& config) const;
};

}  // namespace config
}  // namespace maintaind
}  // namespace orx

#endif  // ORX_MAINTAIND_CONFIG_ORX_MAINTAIND_CONFIG_H
