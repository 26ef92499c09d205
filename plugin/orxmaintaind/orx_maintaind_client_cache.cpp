// The report jobs and the replay of the caches: a report is sent at once when the daemon's
// method is ready, and otherwise kept, keyed by its bind index, until a replay delivers it, a
// withdrawal cancels it or a failing periodic pass drops it.

#include "orx/sync/mutex.h"
#include "orxmaintaind/orx_maintaind_client.h"
#include "orxmaintaind/orx_maintaind_constants.h"
#include "orxmaintaind/orx_maintaind_e2e_client.h"
#include "orxmaintaind/orx_maintaind_event_client.h"
#include "orxmaintaind/orx_maintaind_field_client.h"
#include "orxmaintaind/orx_maintaind_method_client.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

struct CacheLogTexts {
    const char* cachedWithoutProxy;
    const char* registerType;
    const char* droppedWithoutProxy;
    const char* notInCache;
    const char* droppedUnsent;
    const char* unregisterType;
    const char* replayFailed;
};

namespace {

using vorx::vcc::api::types::EventE2EConfigInfo;

// A periodic pass gives up after this many failures in a row.
constexpr uint16_t kMaxReplayFailures = 2U;

const CacheLogTexts kEventTexts{
    "Maintaind Proxy is not create, push EventInfo to cache.",
    "registerEvent",
    "Maintaind Proxy is not created, pop eventinfo from cache.",
    "Can't find EventInfo with serviceid",
    "Find event info in cache, pop eventinfo from cache.",
    "unregisterEvent",
    "EventInfo to maintaind failed, register failure count is ",
};

const CacheLogTexts kMethodTexts{
    "Maintaind Proxy is not create, push methodinfo to the cache.",
    "registerMethod",
    "Maintaind Proxy is not created, pop methodinfo from cache.",
    "Can't find MethodInfo with serviceid",
    "Find method info in cache, pop methodinfo from cache.",
    "unregisterMethod",
    "MethodInfo to maintaind failed, register failure count is ",
};

const CacheLogTexts kFieldTexts{
    "Maintaind Proxy is not create, push fieldinfo to the cache.",
    "registerField",
    "Maintaind Proxy is not created, pop fieldinfo from cache.",
    "Can't find FieldInfo with serviceid",
    "Find field info in cache, pop fieldinfo from cache.",
    "unregisterField",
    "FieldInfo to maintaind failed, register failure count is ",
};

// Adds the bindings to the entry of `index`; bindings already cached there are kept, and so is
// the key already there.
template <typename Cache, typename Infos>
void MergeIntoCache(Cache& cache, const OrxMaintaindBindIndex& index, const Infos& infos) {
    cache[index].insert(infos.begin(), infos.end());
}

template <typename Cache>
bool FindAndErase(Cache& cache, const OrxMaintaindBindIndex& index, bool& isRegister) {
    const auto found = cache.find(index);
    if (found == cache.end()) {
        return false;
    }
    isRegister = found->first.isRegister;
    cache.erase(found);
    return true;
}

OrxMaintaindBindIndex E2EBindIndex(const EventE2EConfigInfo& config) {
    return OrxMaintaindBindIndex(config.serviceId, config.instanceId, config.entityId,
                                 {config.driverType}, config.isPub, true);
}

}  // namespace

template <typename Info, typename Send>
void OrxMaintaindClient::SendOrCache(InfoCache<Info>& cache, const OrxMaintaindBindIndex& index,
                                     const InfoMap<Info>& infos, const Send& send,
                                     const CacheLogTexts& texts) {
    PrepareClients();
    if (!GetMaintaindProxy() || !methodReady_) {
        logger_->LogVerbose() << texts.cachedWithoutProxy;
        MergeIntoCache(cache, index, infos);
        return;
    }
    bool isRegister = true;
    FindAndErase(cache, index, isRegister);
    const ErrorCode result = send(infos, index.isPub, true);
    if (result != ErrorCode::kOk) {
        MergeIntoCache(cache, index, infos);
        PrintRegisterInfo(texts.registerType, result, false);
    }
    lastResult_ = result;
}

template <typename Info, typename Send>
void OrxMaintaindClient::WithdrawOrForget(InfoCache<Info>& cache,
                                          const OrxMaintaindBindIndex& index,
                                          const InfoMap<Info>& infos, const Send& send,
                                          const CacheLogTexts& texts) {
    PrepareClients();
    bool isRegister = true;
    if (!GetMaintaindProxy() || !methodReady_) {
        logger_->LogVerbose() << texts.droppedWithoutProxy;
        if (!FindAndErase(cache, index, isRegister)) {
            logger_->LogVerbose() << texts.notInCache << index.serviceId << "instanceid"
                                  << index.instanceId << "entityId" << index.entityId
                                  << "in the cache.";
        }
        return;
    }
    if (FindAndErase(cache, index, isRegister) && isRegister) {
        // The registration never left the cache: the daemon has nothing to forget.
        logger_->LogVerbose() << texts.droppedUnsent;
        return;
    }
    const ErrorCode result = send(infos, index.isPub, false);
    lastResult_ = result;
    if (result == ErrorCode::kOk) {
        return;
    }
    MergeIntoCache(cache, index, infos);
    PrintRegisterInfo(texts.unregisterType, result, false);
}

template <typename Info, typename Send>
void OrxMaintaindClient::ReplayCache(InfoCache<Info>& replayed, InfoCache<Info>& cache,
                                     uint16_t& failureCount, bool periodic, const Send& send,
                                     const CacheLogTexts& texts) {
    for (const auto& entry : replayed) {
        // After three failures in a row the rest of this pass is dropped, not retried.
        if (destructing_.load() || failureCount > kMaxReplayFailures) {
            return;
        }
        const OrxMaintaindBindIndex& index = entry.first;
        const ErrorCode result = send(entry.second, index.isPub, index.isRegister);
        if (result == ErrorCode::kOk) {
            failureCount = 0U;
            continue;
        }
        if (periodic) {
            ++failureCount;
        }
        MergeIntoCache(cache, index, entry.second);
        logger_->LogDebug() << (index.isRegister ? "Register" : "Unregister") << texts.replayFailed
                            << failureCount;
    }
}

void OrxMaintaindClient::RegisterEventWithThreadPool(const OrxMaintaindBindIndex& index,
                                                     const EventInfoMap& infos, bool isPub) {
    orx::sync::MutexLock lock(mutex_);
    OrxMaintaindBindIndex key = index;
    key.isPub = isPub;
    SendOrCache(
        eventCache_, key, infos,
        [this](const EventInfoMap& sent, bool pub, bool /*isRegister*/) {
            return eventClient_->RegisterEvent(sent, pub);
        },
        kEventTexts);
}

void OrxMaintaindClient::UnregisterEventWithThreadPool(const OrxMaintaindBindIndex& index,
                                                       const EventInfoMap& infos, bool isPub) {
    orx::sync::MutexLock lock(mutex_);
    OrxMaintaindBindIndex key = index;
    key.isPub = isPub;
    WithdrawOrForget(
        eventCache_, key, infos,
        [this](const EventInfoMap& sent, bool pub, bool /*isRegister*/) {
            return eventClient_->UnRegisterEvent(sent, pub);
        },
        kEventTexts);
}

void OrxMaintaindClient::RegisterMethodWithThreadPool(const OrxMaintaindBindIndex& index,
                                                      const MethodInfoMap& infos, bool isPub) {
    orx::sync::MutexLock lock(mutex_);
    OrxMaintaindBindIndex key = index;
    key.isPub = isPub;
    SendOrCache(
        methodCache_, key, infos,
        [this](const MethodInfoMap& sent, bool pub, bool /*isRegister*/) {
            return methodClient_->RegisterMethod(sent, pub);
        },
        kMethodTexts);
}

void OrxMaintaindClient::UnregisterMethodWithThreadPool(const OrxMaintaindBindIndex& index,
                                                        const MethodInfoMap& infos, bool isPub) {
    orx::sync::MutexLock lock(mutex_);
    OrxMaintaindBindIndex key = index;
    key.isPub = isPub;
    WithdrawOrForget(
        methodCache_, key, infos,
        [this](const MethodInfoMap& sent, bool pub, bool /*isRegister*/) {
            return methodClient_->UnregisterMethod(sent, pub);
        },
        kMethodTexts);
}

void OrxMaintaindClient::RegisterFieldWithThreadPool(const OrxMaintaindBindIndex& index,
                                                     const FieldInfoMap& infos, bool isPub) {
    orx::sync::MutexLock lock(mutex_);
    OrxMaintaindBindIndex key = index;
    key.isPub = isPub;
    SendOrCache(
        fieldCache_, key, infos,
        [this](const FieldInfoMap& sent, bool pub, bool /*isRegister*/) {
            return fieldClient_->RegisterField(sent, pub);
        },
        kFieldTexts);
}

void OrxMaintaindClient::UnregisterFieldWithThreadPool(const OrxMaintaindBindIndex& index,
                                                       const FieldInfoMap& infos, bool isPub) {
    orx::sync::MutexLock lock(mutex_);
    OrxMaintaindBindIndex key = index;
    key.isPub = isPub;
    WithdrawOrForget(
        fieldCache_, key, infos,
        [this](const FieldInfoMap& sent, bool pub, bool /*isRegister*/) {
            return fieldClient_->UnregisterField(sent, pub);
        },
        kFieldTexts);
}

void OrxMaintaindClient::RegisterE2EWithThreadPool(const std::vector<EventE2EConfigInfo>& configs) {
    orx::sync::MutexLock lock(mutex_);
    PrepareClients();
    if (!GetMaintaindProxy() || !methodReady_) {
        InsertE2ECache(configs);
        logger_->LogVerbose()
            << "Maintaind Proxy is not create, push E2E info to the cache[cacheSize ="
            << e2eCache_.size() << "]";
        return;
    }
    const ErrorCode result = e2eClient_->RegisterE2EInfo(configs);
    if (result != ErrorCode::kOk) {
        InsertE2ECache(configs);
        PrintRegisterInfo("registerE2E", result, false);
    }
    lastResult_ = result;
}

void OrxMaintaindClient::InsertE2ECache(const std::vector<EventE2EConfigInfo>& configs) {
    for (const auto& config : configs) {
        e2eCache_[E2EBindIndex(config)] = config;
    }
}

bool OrxMaintaindClient::FindAndEraseCacheEventInfo(const OrxMaintaindBindIndex& index,
                                                    bool& isRegister) {
    return FindAndErase(eventCache_, index, isRegister);
}

bool OrxMaintaindClient::FindAndEraseCacheMethodInfo(const OrxMaintaindBindIndex& index,
                                                     bool& isRegister) {
    return FindAndErase(methodCache_, index, isRegister);
}

bool OrxMaintaindClient::FindAndEraseCacheFieldInfo(const OrxMaintaindBindIndex& index,
                                                    bool& isRegister) {
    return FindAndErase(fieldCache_, index, isRegister);
}

void OrxMaintaindClient::FirstTimeRegisterCacheInfo() {
    orx::sync::MutexLock lock(mutex_);
    InitializeMaintaindMethod();
    InitializeMaintaindEvent();
    logger_->LogDebug() << "Register cache information for the first time.";
    RegisterCacheInfo(false);
}

void OrxMaintaindClient::PeriodicRegisterCacheInfo() {
    orx::sync::MutexLock lock(mutex_);
    if (!CheckCacheInfoIsEmpty() && methodReady_) {
        RegisterCacheInfo(true);
    }
}

void OrxMaintaindClient::RegisterCacheInfo(bool periodic) {
    logger_->LogDebug() << "Registering cache information...";
    PrepareClients();
    EventCache events = std::move(eventCache_);
    MethodCache methods = std::move(methodCache_);
    FieldCache fields = std::move(fieldCache_);
    eventCache_.clear();
    methodCache_.clear();
    fieldCache_.clear();
    uint16_t failureCount = 0U;
    if (nodeState_ == 1U) {
        const std::string name = GetApplicationName();
        const int32_t pid = GetProcessPid();
        if (RegisterNodePidAndState(name, pid, true) == ErrorCode::kOk) {
            nodeState_ = 0U;
            LogInfo(!periodic) << "Register node pid info successfully[appname=" << name
                               << ", pid=" << pid << "]";
            failureCount = 0U;
        } else {
            ++failureCount;
        }
    }
    RegisterE2ECacheInfo(failureCount, periodic);
    RegisterEventCacheInfo(events, failureCount, periodic);
    RegisterMethodCacheInfo(methods, failureCount, periodic);
    RegisterFieldCacheInfo(fields, failureCount, periodic);
    if (periodic) {
        ++periodicCount_;
        LogInfo(!CheckCacheInfoIsEmpty())
            << "Registered cache information completed[reriodicCount=" << periodicCount_ << "]";
    } else {
        logger_->LogDebug() << "Registered cache information completed[reriodicCount="
                            << periodicCount_ << "]";
    }
}

void OrxMaintaindClient::RegisterEventCacheInfo(EventCache& cache, uint16_t& failureCount,
                                                bool periodic) {
    ReplayCache(
        cache, eventCache_, failureCount, periodic,
        [this](const EventInfoMap& infos, bool isPub, bool isRegister) {
            return isRegister ? eventClient_->RegisterEvent(infos, isPub)
                              : eventClient_->UnRegisterEvent(infos, isPub);
        },
        kEventTexts);
}

void OrxMaintaindClient::RegisterMethodCacheInfo(MethodCache& cache, uint16_t& failureCount,
                                                 bool periodic) {
    ReplayCache(
        cache, methodCache_, failureCount, periodic,
        [this](const MethodInfoMap& infos, bool isPub, bool isRegister) {
            return isRegister ? methodClient_->RegisterMethod(infos, isPub)
                              : methodClient_->UnregisterMethod(infos, isPub);
        },
        kMethodTexts);
}

void OrxMaintaindClient::RegisterFieldCacheInfo(FieldCache& cache, uint16_t& failureCount,
                                                bool periodic) {
    ReplayCache(
        cache, fieldCache_, failureCount, periodic,
        [this](const FieldInfoMap& infos, bool isPub, bool isRegister) {
            return isRegister ? fieldClient_->RegisterField(infos, isPub)
                              : fieldClient_->UnregisterField(infos, isPub);
        },
        kFieldTexts);
}

void OrxMaintaindClient::RegisterE2ECacheInfo(uint16_t& failureCount, bool periodic) {
    // Nothing cached, nothing to send: an empty E2E report would only cost the daemon a request.
    if (failureCount > kMaxReplayFailures || e2eCache_.empty()) {
        return;
    }
    std::vector<EventE2EConfigInfo> configs;
    configs.reserve(e2eCache_.size());
    for (const auto& entry : e2eCache_) {
        configs.push_back(entry.second);
    }
    e2eCache_.clear();
    if (e2eClient_->RegisterE2EInfo(configs) == ErrorCode::kOk) {
        failureCount = 0U;
        return;
    }
    InsertE2ECache(configs);
    if (periodic) {
        ++failureCount;
    }
    logger_->LogDebug() << "Register e2e info to maintaind failed, register failure count is "
                        << failureCount;
}

bool OrxMaintaindClient::CheckCacheInfoIsEmpty() const {
    return eventCache_.empty() && methodCache_.empty() && fieldCache_.empty() &&
           e2eCache_.empty() && nodeState_ == 0U;
}

void OrxMaintaindClient::PrintRegisterInfo(const std::string& entityType, ErrorCode result,
                                           bool quiet) {
    if (result == ErrorCode::kNotInitialized) {
        LogWarn(quiet)
            << "OrxMaintaindClient some resources is not init, such as proxy is not create";
        return;
    }
    const char* what = nullptr;
    if (result == ErrorCode::kSendFailed) {
        what = "OrxMaintaindClient register info cannot send out";
    } else if (result == ErrorCode::kTimeout) {
        what = "OrxMaintaindClient register info timeout";
    } else {
        return;
    }
    LogWarn(quiet) << what << "[entityType=" << entityType
                   << ", eventCacheSize=" << eventCache_.size()
                   << ", methodCacheSize=" << methodCache_.size()
                   << ", fieldCacheSize=" << fieldCache_.size()
                   << ", e2eCachesize=" << e2eCache_.size()
                   << ", pidState=" << (nodeState_ != 0U ? 1 : 0) << "]";
}

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx
