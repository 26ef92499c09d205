#ifndef ORX_ORXCM_CONFIG_DDS_DFX_CONFIG_H
#define ORX_ORXCM_CONFIG_DDS_DFX_CONFIG_H

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "ara/com/internal/bind_index.h"
#include "ara/kelda/common/log/log.h"
#include "orxmaintaind/orxcm_dfx_export.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/dds_dfx_config_interface.h"

namespace ara {
namespace kelda {
namespace common {
namespace orxConfigParser {
class ParseJsonToGetConfig;
}  // namespace orxConfigParser
}  // namespace common
}  // namespace kelda
}  // namespace ara

namespace vorx {
namespace vcc {
namespace orxmaintaind {
namespace type {
class OrxMaintaindType;
}  // namespace type
}  // namespace orxmaintaind
}  // namespace vcc
}  // namespace vorx

namespace orx {
namespace orxcm {
namespace orxmaintaind {
namespace type {
class OrxMaintaindType;
}  // namespace type
}  // namespace orxmaintaind

namespace config {

// Supplies the core's DDS driver with the DDS settings of the maintenance daemon's own service
// (discovery, its event and its methods), which no application deploys in its orx.json. It
// answers only for the daemon's two services (application side and tools side) and returns false
// for every other service without touching the record.
//
// One provider per process (GetInstance); the library registers it with the core at load. The
// first read operation initialises it (logger, configuration, network); after that it is only
// read, so the driver may call it from several threads.
class ORXCM_DFX_EXPORT DDSDfxConfig : public vorx::vcc::DDSDfxConfigInterface {
  public:
    // The process-wide provider, created on first call and destroyed at process exit.
    static std::shared_ptr<DDSDfxConfig> GetInstance();

    ~DDSDfxConfig() override;
    DDSDfxConfig(const DDSDfxConfig&) = delete;
    DDSDfxConfig& operator=(const DDSDfxConfig&) = delete;

    // Fills the event record for the daemon's event `index.entityId`: topic name, instance id,
    // resource attributes, network, transport QoS. False for a foreign service or when the
    // driver refuses the instance id text (warning logged).
    bool ReadEventData(const ara::com::internal::BindIndex& index,
                       vorx::driver::dds::DDSEventInfo& info) override;
    // The same for the daemon's method `index.entityId`, with its request and reply topics.
    bool ReadMethodData(const ara::com::internal::BindIndex& index,
                        vorx::driver::dds::DDSMethodInfo& info) override;
    // Fills the discovery record of the daemon's application-side or tools-side service. False
    // for a foreign service or a refused instance id text.
    bool ReadServiceDiscoveryData(const ara::com::internal::BindIndex& index,
                                  vorx::driver::dds::DDSServiceDiscoveryInfo& info) override;

    // Runs the lazy initialisation once per process; every read operation calls it first.
    // Throws std::system_error when the once mechanism fails.
    void DoInit();

  private:
    DDSDfxConfig();

    // Takes the network from the configuration; ("BUILTIN_APP_SERVER_FLAG", false) when none is
    // configured. Runs inside DoInit only.
    void ParseOrxConfigNetwork();

    // Which of the daemon's services a name is: 1 application side, 2 tools side, 0 neither.
    int MatchService(const std::string& serviceName) const;
    // Sets the instance id from its text; logs the warning and returns false on refusal.
    bool SetInstanceId(vorx::vcc::api::types::EntityInfo& info, const std::string& instanceId);
    // Instance id, resource attributes, network and transport QoS shared by events and methods.
    bool FillEntity(vorx::vcc::api::types::EntityInfo& info,
                    const ara::com::internal::BindIndex& index);

    // Written once under initOnce_, read afterwards.
    std::pair<std::string, bool> network_;
    std::shared_ptr<ara::kelda::common::orxConfigParser::ParseJsonToGetConfig> configParser_;
    std::shared_ptr<ara::kelda::common::log::Log> logger_;
    std::shared_ptr<vorx::vcc::orxmaintaind::type::OrxMaintaindType> coreType_;
    std::shared_ptr<orxmaintaind::type::OrxMaintaindType> ownType_;
    // Entity id -> topic name of the daemon's events.
    std::map<uint16_t, std::string> eventTopics_;
    // Entity id -> {"Request": topic, "Reply": topic} of the daemon's methods.
    std::map<uint16_t, std::map<std::string, std::string>> methodTopics_;
    std::once_flag initOnce_;
};

}  // namespace config
}  // namespace orxcm
}  // namespace orx

#endif  // ORX_ORXCM_CONFIG_DDS_DFX_CONFIG_H
