#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_LATENCY_CLIENT_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_LATENCY_CLIENT_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "ara/kelda/common/log/log.h"
#include "orx/maintaind/latency.h"
#include "orx/sync/mutex.h"
#include "orxmaintaind/orx_maintaind_latency_index.h"
#include "orxmaintaind/orxcm_dfx_export.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/api/types/entity_info.h"
#include "vorx/vcc/api/types/latency.h"
#include "vorx/vcc/event_controller.h"

namespace vorx {
namespace vcc {
class Proxy;
}  // namespace vcc
}  // namespace vorx

namespace orx {
namespace orxcm {
namespace orxmaintaind {

class OrxMaintaindClient;

// Latency analysis on the application side.
//
// The maintenance daemon switches latency measurement of single events on and off by publishing
// "SwitchApplicationLatency" orders. This client keeps, per event binding, the mode handler the
// core registered for that event, calls it when an order names the event and acknowledges the
// order to the daemon. While analysis is on for at least one subscribed event, a task on the
// core's EventController asks the core's query handlers once per second for the measured latency
// and reports every non-empty result.
//
// Ownership: always held by a std::shared_ptr (make it with std::make_shared); the
// acknowledgement and query jobs keep it alive through shared_from_this().
//
// Locks: modeMutex_ guards the four mode-handler maps and modeTranslation_; queryMutex_ guards
// the two enabled sets and the two query-handler maps. When both are needed they are taken in
// that order (mode, then query), never the other way round. Handlers registered by the core are
// called with a lock held and must not call back into registration.
//
// Nothing here throws toward the daemon: failed sends are logged and dropped. What does escape is
// listed per operation (bad instance id text, an empty handler, a mutex error).
class ORXCM_DFX_EXPORT OrxMaintaindLatencyClient
    : public std::enable_shared_from_this<OrxMaintaindLatencyClient> {
  public:
    using DriverType = vorx::vcc::api::types::DriverType;
    using EventInfo = vorx::vcc::api::types::EventInfo;
    using LatencyAnalysisMode = vorx::vcc::api::types::LatencyAnalysisMode;
    using ModeHandler = std::function<void(const LatencyAnalysisMode&)>;
    using QueryHandler = std::function<vorx::vcc::api::types::LatencyResult()>;
    using EventInfoMap = std::map<DriverType, std::shared_ptr<EventInfo>>;

    // Takes the "CM" logger, `controller` (the process-wide EventController when null) and a
    // weak reference to the maintenance client; fills the mode translation. The acknowledgement
    // and query jobs run on that controller, and its clock gives their start times, the 300 ms
    // reply wait and the results' notification times.
    // REQUIRES: the maintenance client exists (do not make one inside its constructor).
    explicit OrxMaintaindLatencyClient(
        std::shared_ptr<vorx::vcc::EventController> controller = nullptr);
    // Deletes the query task (a no-op when it never started). While the task exists it holds
    // this client, so in practice this runs at process exit or when the task never started.
    ~OrxMaintaindLatencyClient();
    OrxMaintaindLatencyClient(const OrxMaintaindLatencyClient&) = delete;
    OrxMaintaindLatencyClient& operator=(const OrxMaintaindLatencyClient&) = delete;

    // --- mode switching -------------------------------------------------------------------

    // Keeps `handler` for the event described by the FIRST entry of `infos` (lowest core driver
    // type; other entries are ignored): DDS (1) keyed by DDSLatencyIndex, SOME/IP (2) keyed by
    // SomeipLatencyIndex, in the publisher or subscriber map by `isPub`. An empty map, a null
    // description or another driver type does nothing; an index already present keeps its first
    // handler. Throws std::invalid_argument / std::out_of_range ("stoul") for an instance id
    // text that is not a decimal number.
    void RegisterLatencyMode(ModeHandler handler, const EventInfoMap& infos, const bool& isPub)
        EXCLUDES(modeMutex_);
    // Forgets the mode and query handlers of every binding in `infos` (null descriptions and
    // other driver types are skipped). The enabled sets are left as they are.
    void UnregisterLatencyHandler(const EventInfoMap& infos);
    void UnRegisterDDSLatencyHandler(const std::shared_ptr<EventInfo>& info)
        EXCLUDES(modeMutex_, queryMutex_);
    void UnRegisterSOMEIPLatencyHandler(const std::shared_ptr<EventInfo>& info)
        EXCLUDES(modeMutex_, queryMutex_);

    // Subscribes the daemon's latency-switch event `entityId` on the daemon proxy and routes its
    // samples to TriggerEventReceive. Returns false when there is no proxy yet or the event is
    // subscribed already.
    bool LatencySubscribe(const uint32_t& entityId,
                          const std::shared_ptr<vorx::driver::dds::DDSEventInfo>& info);
    // Runs on the core's event thread: applies every new order of event `entityId`.
    void TriggerEventReceive(const uint32_t& entityId);
    // Applies one order: calls the matching handlers and, when the last named binding matched,
    // starts the query task (first time only) and schedules the acknowledgement on the
    // EventController. Throws std::bad_function_call for an empty handler.
    void ChangeEventLatencyMode(const orx::maintaind::LatencyMode& mode,
                                const orx::maintaind::LatencyIndex& index);
    // Calls the DDS publisher and subscriber handlers of the index, fills the match flags of
    // `ack` and updates the enabled set for a subscriber. Returns whether any handler matched.
    bool DDSLatencyModeReceive(const orx::maintaind::LatencyMode& mode,
                               const orx::maintaind::LatencyIndex& index,
                               orx::maintaind::LatencyModeAckInfo& ack)
        EXCLUDES(modeMutex_, queryMutex_);
    // The same for SOME/IP (keyed by the SOME/IP event id).
    bool SOMEIPLatencyModeReceive(const orx::maintaind::LatencyMode& mode,
                                  const orx::maintaind::LatencyIndex& index,
                                  orx::maintaind::LatencyModeAckInfo& ack)
        EXCLUDES(modeMutex_, queryMutex_);
    // Sends the acknowledgement of one order (a LatencyInfo of type 0). Blocks up to 300 ms.
    void SendLatencyModeAck(const orx::maintaind::LatencyIndex& index,
                            const orx::maintaind::LatencyMode& mode,
                            const orx::maintaind::LatencyModeAckInfo& ack);

    // --- latency query --------------------------------------------------------------------

    // Keeps the query handler of one event (core driver type 1 DDS, 2 SOME/IP; others and a null
    // description are ignored; an existing entry is kept). Throws like RegisterLatencyMode for a
    // bad instance id text. Waits while a query period runs.
    void RegisterLatencyQuery(QueryHandler handler, const std::shared_ptr<EventInfo>& info,
                              const DriverType& driverType) EXCLUDES(queryMutex_);
    // Starts the cyclic query task (every 1 s); only the first call in the process does anything.
    void InitializeQueryTask();
    // One query period: asks every enabled subscriber event that has a query handler, DDS ones
    // first, each in ascending index order, and reports the results one after another.
    void QueryLatencyResult() EXCLUDES(queryMutex_);
    // Calls `handler`; reports its result through `info` unless the maximum figure is 0.
    void SendLatencyResult(const QueryHandler& handler,
                           const std::shared_ptr<orx::maintaind::LatencyInfo>& info);
    // Milliseconds of the controller's clock (the monotonic clock in production).
    uint64_t RecordNotifyTime() const;
    void NotifyLatencyResult(const std::shared_ptr<orx::maintaind::LatencyInfo>& info);
    // Sends one latency record to the daemon and waits up to 300 ms for the reply. Failures are
    // logged and the record is dropped; nothing is retried.
    void SendLatencyInfo(const std::shared_ptr<orx::maintaind::LatencyInfo>& info);

  private:
    // The publisher/subscriber lookup shared by DDS and SOME/IP; takes queryMutex_ for the
    // enabled set of `key`'s kind.
    template <typename Index>
    bool ReceiveMode(const Index& key, const orx::maintaind::LatencyMode& mode,
                     orx::maintaind::LatencyModeAckInfo& ack,
                     const std::map<Index, ModeHandler>& pubHandlers,
                     const std::map<Index, ModeHandler>& subHandlers, const char* pubText,
                     const char* subText) REQUIRES(modeMutex_) EXCLUDES(queryMutex_);
    // The enabled set of the index's kind.
    std::set<DDSLatencyIndex>& EnabledSubs(const DDSLatencyIndex& /*kind*/) REQUIRES(queryMutex_) {
        return ddsEnabledSubs_;
    }
    std::set<SomeipLatencyIndex>& EnabledSubs(const SomeipLatencyIndex& /*kind*/)
        REQUIRES(queryMutex_) {
        return someipEnabledSubs_;
    }
    // Key parts of a core event description. The instance id text is read as a base-10
    // unsigned number and cut to 16 bits (throws std::invalid_argument / std::out_of_range
    // "stoul"). A description that is not of the DDS (SOME/IP) kind has an empty topic name
    // (event id 0).
    static uint16_t InstanceIdOf(const EventInfo& info);
    static std::string TopicNameOf(const EventInfo& info);
    static uint16_t EventIdOf(const EventInfo& info);
    // The daemon's proxy, or nullptr when there is none or the maintenance client is gone
    // (process exit: jobs of ours may still run then).
    std::shared_ptr<vorx::vcc::Proxy> DaemonProxy() const;
    // Translates the daemon's mode and calls `handler`.
    void CallModeHandler(const ModeHandler& handler, const orx::maintaind::LatencyMode& mode)
        REQUIRES(modeMutex_);

    std::shared_ptr<ara::kelda::common::log::Log> logger_;
    std::shared_ptr<vorx::vcc::EventController> eventController_;
    // Weak: the maintenance client owns this object, and our jobs may outlive the client.
    std::weak_ptr<OrxMaintaindClient> owner_;
    // All bits set until the query task starts. Written once by InitializeQueryTask.
    vorx::vcc::EventHandle queryTaskHandle_;
    // Daemon's LatencyMode value -> core's LatencyAnalysisMode value.
    std::map<uint8_t, uint8_t> modeTranslation_ GUARDED_BY(modeMutex_);
    std::map<DDSLatencyIndex, ModeHandler> ddsPubModeHandlers_ GUARDED_BY(modeMutex_);
    std::map<SomeipLatencyIndex, ModeHandler> someipPubModeHandlers_ GUARDED_BY(modeMutex_);
    std::map<DDSLatencyIndex, ModeHandler> ddsSubModeHandlers_ GUARDED_BY(modeMutex_);
    std::map<SomeipLatencyIndex, ModeHandler> someipSubModeHandlers_ GUARDED_BY(modeMutex_);
    std::set<DDSLatencyIndex> ddsEnabledSubs_ GUARDED_BY(queryMutex_);
    std::set<SomeipLatencyIndex> someipEnabledSubs_ GUARDED_BY(queryMutex_);
    std::map<DDSLatencyIndex, QueryHandler> ddsQueryHandlers_ GUARDED_BY(queryMutex_);
    std::map<SomeipLatencyIndex, QueryHandler> someipQueryHandlers_ GUARDED_BY(queryMutex_);
    // Application name; written once when the query task starts, read by the sends after that.
    std::string appName_;
    // When both are needed, modeMutex_ is taken first (a subscriber's order updates its enabled
    // set while its mode handler's lookup holds modeMutex_).
    orx::sync::Mutex modeMutex_;
    orx::sync::Mutex queryMutex_ ACQUIRED_AFTER(modeMutex_);
};

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx

#endif  // ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_LATENCY_CLIENT_H
