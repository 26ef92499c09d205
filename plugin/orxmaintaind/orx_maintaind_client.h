#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_CLIENT_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_CLIENT_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "ara/kelda/common/log/log.h"
#include "orx/maintaind/types.h"
#include "orx/sync/mutex.h"
#include "orxmaintaind/maintaind_client_error_code.h"
#include "orxmaintaind/orx_maintaind_bind_index.h"
#include "orxmaintaind/orxcm_dfx_export.h"
#include "vorx/vcc/api/types/driver_type.h"
#include "vorx/vcc/api/types/e2e_config.h"
#include "vorx/vcc/api/types/entity_info.h"
#include "vorx/vcc/api/types/subscriber_listener.h"
#include "vorx/vcc/event_controller.h"
#include "vorx/vcc/handle_type.h"
#include "vorx/vcc/orx_maintaind_interface.h"

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
class ApplicationName;
class Proxy;
namespace orxmaintaind {
namespace type {
class OrxMaintaindType;
}  // namespace type
}  // namespace orxmaintaind
}  // namespace vcc
}  // namespace vorx

namespace orx {
namespace orxcm {
namespace maintaind {
class MaintaindListener;
}  // namespace maintaind
namespace orxmaintaind {

class OrxMaintaindEventClient;
class OrxMaintaindMethodClient;
class OrxMaintaindFieldClient;
class OrxMaintaindE2EClient;
class OrxMaintaindLatencyClient;
namespace type {
class OrxMaintaindType;
}  // namespace type
// The log texts of one kind of cached entity (event, method, field).
struct CacheLogTexts;

// The process's client of the maintenance daemon "maintaind".
//
// The plug-in registers the one instance with the core while it is being loaded; the core then
// calls InitializeAll once and reports the process's events, methods, fields and E2E settings as
// they come and go. Every report operation only schedules a job on the core's EventController and
// returns; the jobs send through the per-kind clients when the daemon's method is ready, and
// otherwise keep the report in a cache that is replayed once right after the daemon has been
// found and then every 2 s. The process itself is reported once (node registration) and withdrawn
// when the client is destroyed at process exit.
//
// Threads: the client starts none. Report operations run on the core's callers, the discovery
// callback on the core's discovery thread, every send and replay on the EventController thread.
//
// Locks (annotated below, checked by clang): mutex_ guards the caches, the node state, the
// method-ready flag and every send, including the waits of up to 300 ms for a reply. The proxy
// pointer is written only with mutex_ held and read through GetMaintaindProxy, which takes only
// the leaf lock proxyMutex_, so the per-kind clients, the latency client and the listener may read
// it while mutex_ is held elsewhere. nameMutex_ (leaf) guards the application name, which report
// operations copy on the caller's thread. listenerMutex_ guards the listener's creation only.
//
// Failures toward the daemon are never thrown; only system errors of mutexes and once-flags
// escape.
class ORXCM_DFX_EXPORT OrxMaintaindClient final
    : public vorx::vcc::OrxMaintaindInterface,
      public std::enable_shared_from_this<OrxMaintaindClient> {
    struct ConstructionKey {};

  public:
    using DriverType = vorx::vcc::api::types::DriverType;
    using ErrorCode = type::MaintaindClientErrorCode;
    template <typename Info>
    using InfoMap = std::map<DriverType, std::shared_ptr<Info>>;
    using EventInfoMap = InfoMap<vorx::vcc::api::types::EventInfo>;
    using MethodInfoMap = InfoMap<vorx::vcc::api::types::MethodInfo>;
    using FieldInfoMap = InfoMap<vorx::vcc::api::types::FieldInfo>;
    template <typename Info>
    using InfoCache = std::map<OrxMaintaindBindIndex, InfoMap<Info>>;
    using EventCache = InfoCache<vorx::vcc::api::types::EventInfo>;
    using MethodCache = InfoCache<vorx::vcc::api::types::MethodInfo>;
    using FieldCache = InfoCache<vorx::vcc::api::types::FieldInfo>;
    using E2ECache = std::map<OrxMaintaindBindIndex, vorx::vcc::api::types::EventE2EConfigInfo>;

    // The process-wide client, created on first use (at library load) and destroyed at process
    // exit once its last owner lets go.
    static const std::shared_ptr<OrxMaintaindClient>& GetInstance();

    // Only GetInstance can make one.
    explicit OrxMaintaindClient(ConstructionKey key);
    // Stops the search for the daemon, waits for scheduled withdrawals, stops the periodic
    // replay and withdraws the node report if the daemon has it.
    ~OrxMaintaindClient() override;
    OrxMaintaindClient(const OrxMaintaindClient&) = delete;
    OrxMaintaindClient& operator=(const OrxMaintaindClient&) = delete;

    // --- the core's interface -------------------------------------------------------------

    // Reads the configuration, creates the per-kind clients and starts searching for the daemon.
    // Runs once per process; later calls return at once.
    void InitializeAll() override;
    // Schedules the node registration, once InitializeAll has run, unless the service is the
    // daemon's own.
    void RegisterNodePid(const uint16_t& serviceId) override;
    void RegisterNodePid(const std::string& serviceName) override;
    // Schedule one report job each (nothing before InitializeAll). Withdrawals schedule one job
    // per entity and are waited for by the destructor.
    void RegisterEventInfoToMaintaind(const EventInfoMap& infos, const bool& isPub) override;
    void UnregisterEventInfoToMaintaind(
        const EntityBindingMap<vorx::vcc::api::types::EventInfo>& infos,
        const bool& isPub) override;
    void RegisterMethodInfoToMaintaind(const MethodInfoMap& infos, const bool& isPub) override;
    void UnregisterMethodInfoToMaintaind(
        const EntityBindingMap<vorx::vcc::api::types::MethodInfo>& infos,
        const bool& isPub) override;
    void RegisterFieldInfoToMaintaind(const FieldInfoMap& infos, const bool& isPub) override;
    void UnregisterFieldInfoToMaintaind(
        const EntityBindingMap<vorx::vcc::api::types::FieldInfo>& infos,
        const bool& isPub) override;
    // Forwarded to the latency client once InitializeAll has run.
    void RegisterLatencyMode(
        const std::function<void(const vorx::vcc::api::types::LatencyAnalysisMode&)>& handler,
        const EventInfoMap& infos, const bool& isPub) override;
    void RegisterLatencyQuery(const std::function<vorx::vcc::api::types::LatencyResult()>& handler,
                              const std::shared_ptr<vorx::vcc::api::types::EventInfo>& info,
                              const DriverType& driverType) override;
    void RegisterE2EInfoToMaintaind(
        const std::vector<vorx::vcc::api::types::EventE2EConfigInfo>& configs) override;
    // The sample-timeout listener when orx.json sets a threshold of at least 5 ms (kind 2);
    // an empty descriptor otherwise.
    vorx::vcc::api::types::ListenerDescriptor GetMaintaindClientListener() override;

    // --- for tests and benchmarks ---------------------------------------------------------

    // Makes the client schedule its jobs on `controller`, and time its waits for the daemon's
    // replies with that controller's clock, instead of the process-wide controller. Call it
    // before InitializeAll (later calls have no effect), on the thread that then calls it.
    void UseEventController(std::shared_ptr<vorx::vcc::EventController> controller);

    // --- for the plug-in's other parts ----------------------------------------------------

    // The daemon's proxy; empty until the daemon has been found. Any thread, with or without
    // mutex_ held.
    std::shared_ptr<vorx::vcc::Proxy> GetMaintaindProxy() const EXCLUDES(proxyMutex_);
    // Stores this process's pid.
    void SetProcessPid();
    int32_t GetProcessPid() const;

  private:
    // Part of the setup and discovery.
    void ParseOrxConfigNetwork();
    void InitializeProxy();
    static void MaintaindServiceAvailabilityCallback(
        const std::vector<vorx::vcc::HandleType>& handles, std::weak_ptr<OrxMaintaindClient> self);
    void ScheduleReplayJobs(const std::weak_ptr<OrxMaintaindClient>& self) REQUIRES(mutex_);
    std::string GetApplicationName() const EXCLUDES(nameMutex_);
    void SetApplicationName(const std::string& name) EXCLUDES(nameMutex_);
    void EnsureApplicationName() EXCLUDES(nameMutex_);
    // Hands the application name, the proxy and the clock to the per-kind clients.
    void PrepareClients() REQUIRES(mutex_);

    // Binding to the daemon's service.
    bool InitializeMethodInfo(const uint32_t& methodEntityId) REQUIRES(mutex_);
    bool InitializeEventInfo(const uint32_t& eventEntityId) REQUIRES(mutex_);
    void InitializeMaintaindMethod() REQUIRES(mutex_);
    void InitializeMaintaindEvent() REQUIRES(mutex_);

    // Node registration.
    void StartToRegisterNodePid();
    void RegisterNodePidInfo() EXCLUDES(mutex_);
    ErrorCode RegisterNodePidAndState(const std::string& appName, const int32_t& pid,
                                      const bool& isOnline) REQUIRES(mutex_);
    void UnregisterNodePidInfo() EXCLUDES(mutex_);

    // Scheduling of the report jobs. A withdrawal job does not own the client (see
    // WithdrawalGate); it is given the client when it runs.
    bool ScheduleJob(const std::function<void()>& job, const char* what);
    void ScheduleWithdrawal(const std::function<void(OrxMaintaindClient&)>& job, const char* what,
                            const char* failure);

    // The report jobs: send at once or keep in the cache. Each takes mutex_ for its whole run.
    void RegisterEventWithThreadPool(const OrxMaintaindBindIndex& index, const EventInfoMap& infos,
                                     bool isPub) EXCLUDES(mutex_);
    void UnregisterEventWithThreadPool(const OrxMaintaindBindIndex& index,
                                       const EventInfoMap& infos, bool isPub) EXCLUDES(mutex_);
    void RegisterMethodWithThreadPool(const OrxMaintaindBindIndex& index,
                                      const MethodInfoMap& infos, bool isPub) EXCLUDES(mutex_);
    void UnregisterMethodWithThreadPool(const OrxMaintaindBindIndex& index,
                                        const MethodInfoMap& infos, bool isPub) EXCLUDES(mutex_);
    void RegisterFieldWithThreadPool(const OrxMaintaindBindIndex& index, const FieldInfoMap& infos,
                                     bool isPub) EXCLUDES(mutex_);
    void UnregisterFieldWithThreadPool(const OrxMaintaindBindIndex& index,
                                       const FieldInfoMap& infos, bool isPub) EXCLUDES(mutex_);
    void RegisterE2EWithThreadPool(
        const std::vector<vorx::vcc::api::types::EventE2EConfigInfo>& configs) EXCLUDES(mutex_);

    // The steps the three kinds of entity share; `send(infos, isPub, isRegister)` sends through
    // the kind's client.
    template <typename Info, typename Send>
    void SendOrCache(InfoCache<Info>& cache, const OrxMaintaindBindIndex& index,
                     const InfoMap<Info>& infos, const Send& send, const CacheLogTexts& texts)
        REQUIRES(mutex_);
    template <typename Info, typename Send>
    void WithdrawOrForget(InfoCache<Info>& cache, const OrxMaintaindBindIndex& index,
                          const InfoMap<Info>& infos, const Send& send, const CacheLogTexts& texts)
        REQUIRES(mutex_);
    template <typename Info, typename Send>
    void ReplayCache(InfoCache<Info>& replayed, InfoCache<Info>& cache, uint16_t& failureCount,
                     bool periodic, const Send& send, const CacheLogTexts& texts) REQUIRES(mutex_);

    // The replay; the two jobs take mutex_ for their whole run.
    bool FindAndEraseCacheEventInfo(const OrxMaintaindBindIndex& index, bool& isRegister)
        REQUIRES(mutex_);
    bool FindAndEraseCacheMethodInfo(const OrxMaintaindBindIndex& index, bool& isRegister)
        REQUIRES(mutex_);
    bool FindAndEraseCacheFieldInfo(const OrxMaintaindBindIndex& index, bool& isRegister)
        REQUIRES(mutex_);
    void FirstTimeRegisterCacheInfo() EXCLUDES(mutex_);
    void PeriodicRegisterCacheInfo() EXCLUDES(mutex_);
    void RegisterCacheInfo(bool periodic) REQUIRES(mutex_);
    void RegisterEventCacheInfo(EventCache& cache, uint16_t& failureCount, bool periodic)
        REQUIRES(mutex_);
    void RegisterMethodCacheInfo(MethodCache& cache, uint16_t& failureCount, bool periodic)
        REQUIRES(mutex_);
    void RegisterFieldCacheInfo(FieldCache& cache, uint16_t& failureCount, bool periodic)
        REQUIRES(mutex_);
    void RegisterE2ECacheInfo(uint16_t& failureCount, bool periodic) REQUIRES(mutex_);
    void InsertE2ECache(const std::vector<vorx::vcc::api::types::EventE2EConfigInfo>& configs)
        REQUIRES(mutex_);
    bool CheckCacheInfoIsEmpty() const REQUIRES(mutex_);
    void PrintRegisterInfo(const std::string& entityType, ErrorCode result, bool quiet)
        REQUIRES(mutex_);

    // A log line at info (warning) level, or at debug level when `quiet`.
    ara::kelda::common::log::LogStream LogInfo(bool quiet) const;
    ara::kelda::common::log::LogStream LogWarn(bool quiet) const;

    // Fields, in the order of their roles. The core's service callback handle, service list
    // handle and plog instance have no counterpart in this core, so the client keeps none.
    std::atomic<int32_t> processPid_{-1};
    // Written with mutex_ held too, so one discovery callback at a time decides to create it.
    std::shared_ptr<vorx::vcc::Proxy> maintaindProxy_ GUARDED_BY(proxyMutex_);
    mutable orx::sync::Mutex proxyMutex_ ACQUIRED_AFTER(mutex_);
    std::atomic<bool> destructing_{false};
    std::atomic<bool> initialised_{false};
    std::string applicationName_ GUARDED_BY(nameMutex_);
    mutable orx::sync::Mutex nameMutex_ ACQUIRED_AFTER(mutex_);
    mutable orx::sync::Mutex mutex_;
    uint8_t nodeState_ GUARDED_BY(mutex_){2};  // 2 nothing requested, 1 pending, 0 done
    std::shared_ptr<OrxMaintaindEventClient> eventClient_;
    std::shared_ptr<OrxMaintaindMethodClient> methodClient_;
    std::shared_ptr<OrxMaintaindFieldClient> fieldClient_;
    std::shared_ptr<OrxMaintaindE2EClient> e2eClient_;
    std::shared_ptr<OrxMaintaindLatencyClient> latencyClient_;
    std::shared_ptr<ara::kelda::common::orxConfigParser::ParseJsonToGetConfig> configReader_;
    EventCache eventCache_ GUARDED_BY(mutex_);
    MethodCache methodCache_ GUARDED_BY(mutex_);
    FieldCache fieldCache_ GUARDED_BY(mutex_);
    E2ECache e2eCache_ GUARDED_BY(mutex_);
    std::shared_ptr<vorx::vcc::EventController> eventController_;
    std::shared_ptr<vorx::vcc::ApplicationName> applicationNameService_;
    std::shared_ptr<ara::kelda::common::log::Log> logger_;
    bool methodReady_ GUARDED_BY(mutex_){false};
    vorx::vcc::FindServiceHandle findServiceHandle_;
    std::pair<std::string, bool> network_;
    // Withdrawal jobs reach the client through this gate instead of owning it, so the client can
    // be destroyed while some are still scheduled: its destructor waits until `pending` is back
    // at 0, that is until each of them has been sent or cached, and then closes the gate.
    struct WithdrawalGate {
        orx::sync::Mutex mutex;                        // held while a withdrawal job runs
        OrxMaintaindClient* client GUARDED_BY(mutex);  // null once the gate is closed
        std::atomic<int32_t> pending{0};               // withdrawal jobs the controller still holds
    };
    const std::shared_ptr<WithdrawalGate> withdrawals_;
    std::shared_ptr<vorx::vcc::orxmaintaind::type::OrxMaintaindType> coreType_;
    std::shared_ptr<type::OrxMaintaindType> ownType_;
    // The daemon's methods (entity id to topic map) and events (entity id to name).
    std::map<uint16_t, std::map<std::string, std::string>> methodTopics_;
    std::map<uint16_t, std::string> eventNames_;
    vorx::vcc::EventHandle periodicEventHandle_ GUARDED_BY(mutex_){vorx::vcc::kInvalidEventHandle};
    uint32_t periodicCount_ GUARDED_BY(mutex_){0};
    ErrorCode lastResult_ GUARDED_BY(mutex_){ErrorCode::kOk};
    std::once_flag initOnce_;
    std::once_flag unregisterOnce_;
    std::shared_ptr<maintaind::MaintaindListener> listener_ GUARDED_BY(listenerMutex_);
    orx::sync::Mutex listenerMutex_;
};

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx

#endif
