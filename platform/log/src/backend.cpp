#include "backend.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>

namespace ara::kelda::common::log::detail {
namespace {

constexpr const char* kLevelVariable = "ORX_LOG_LEVEL";
constexpr const char* kFileVariable = "ORX_LOG_FILE";
constexpr const char* kInitialContext = "DEFAULT";

int64_t NowNs(clockid_t clock) {
    struct timespec ts {};
    clock_gettime(clock, &ts);
    return static_cast<int64_t>(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

// Cached per thread; a forked child's thread has a new id although it keeps the cache.
uint64_t CurrentThreadId(int pid) {
    thread_local int cachedForPid = -1;
    thread_local uint64_t id = 0;
    if (cachedForPid != pid) {
        id = static_cast<uint64_t>(::gettid());
        cachedForPid = pid;
    }
    return id;
}

// The level named by ORX_LOG_LEVEL, if that is set and valid. *invalid is set when it is set
// but not a level name.
bool LevelFromEnvironment(LogLevel* level, std::string* invalid) {
    const char* value = std::getenv(kLevelVariable);
    if (value == nullptr || *value == '\0') {
        return false;
    }
    if (ParseLevel(value, level)) {
        return true;
    }
    *invalid = value;
    return false;
}

thread_local bool t_insideSink = false;

}  // namespace

Backend& Backend::Instance() {
    // Never destroyed: loggers must outlive every other static object.
    static Backend* const instance = new Backend();
    return *instance;
}

Backend::Backend() : defaultContext_(kInitialContext), pid_(::getpid()) {
    pthread_atfork(nullptr, nullptr, &Backend::OnForkChild);
    LogLevel level = LogLevel::kInfo;
    std::string ignored;
    LevelFromEnvironment(&level, &ignored);
    console_ = std::make_shared<ConsoleSink>(level);
    sinks_.push_back(console_);
    minLevel_.store(static_cast<uint8_t>(level), std::memory_order_relaxed);
}

void Backend::OnForkChild() {
    Instance().pid_.store(::getpid(), std::memory_order_relaxed);
}

void Backend::Emit(const std::string& contextId, LogLevel level, std::string text,
                   uint32_t suppressed) {
    if (t_insideSink) {
        return;
    }
    const int pid = pid_.load(std::memory_order_relaxed);
    LogRecord record{level, std::string(),        contextId, std::move(text), NowNs(CLOCK_REALTIME),
                     pid,   CurrentThreadId(pid), suppressed};
    orx::sync::MutexLock lock(mutex_);
    record.appId = appId_;
    t_insideSink = true;
    for (const auto& sink : sinks_) {
        if (level >= sink->Threshold()) {
            try {
                sink->Write(record);
            } catch (...) {
                // A failing sink must not take the line away from the others.
            }
        }
    }
    t_insideSink = false;
}

bool Backend::AllowLimited(const LogLimitConfig& limit, uint32_t* suppressed) {
    const int64_t now = NowNs(CLOCK_MONOTONIC);
    orx::sync::MutexLock lock(limiterMutex_);
    return limiter_.Allow(limit, now, suppressed);
}

void Backend::AddSink(std::shared_ptr<LogSink> sink) {
    if (!sink) {
        return;
    }
    orx::sync::MutexLock lock(mutex_);
    if (std::find(sinks_.begin(), sinks_.end(), sink) == sinks_.end()) {
        sinks_.push_back(std::move(sink));
    }
    RecomputeMinLevelLocked();
}

void Backend::RemoveSink(const std::shared_ptr<LogSink>& sink) {
    orx::sync::MutexLock lock(mutex_);
    sinks_.erase(std::remove(sinks_.begin(), sinks_.end(), sink), sinks_.end());
    if (sink == file_) {
        file_.reset();
    }
    RecomputeMinLevelLocked();
}

void Backend::SetConsoleThreshold(LogLevel level) {
    orx::sync::MutexLock lock(mutex_);
    console_->SetThreshold(level);
    RecomputeMinLevelLocked();
}

LogLevel Backend::ConsoleThreshold() const {
    return console_->Threshold();
}

void Backend::RefreshThresholds() {
    orx::sync::MutexLock lock(mutex_);
    RecomputeMinLevelLocked();
}

void Backend::RecomputeMinLevelLocked() {
    LogLevel lowest = LogLevel::kOff;
    for (const auto& sink : sinks_) {
        lowest = std::min(lowest, sink->Threshold());
    }
    minLevel_.store(static_cast<uint8_t>(lowest), std::memory_order_relaxed);
}

bool Backend::SetUp(const LogSetup& setup) {
    bool first = false;
    std::string keptAppId;
    std::string fileError;
    {
        orx::sync::MutexLock lock(mutex_);
        first = !setUp_;
        if (!first) {
            keptAppId = appId_;
        } else {
            setUp_ = true;
            appId_ = setup.appId;
            defaultContext_ = setup.contextId;
            description_ = setup.description;
            console_->SetThreshold(setup.level);
            if (!setup.filePath.empty()) {
                file_ = FileSink::Open(setup.filePath, setup.level, &fileError);
                if (file_) {
                    sinks_.push_back(file_);
                }
            }
            RecomputeMinLevelLocked();
        }
    }
    // Reported after the lock is released: reporting goes through Emit.
    if (!first) {
        GetLog(setup.contextId)->LogDebug()
            << "[Log][Logging was set up before, keeping it][appId=" << keptAppId
            << ", ignoredAppId=" << setup.appId << "]";
        return false;
    }
    if (!fileError.empty()) {
        GetLog(setup.contextId)->LogWarn() << "[Log][Cannot open log file][file=" << setup.filePath
                                           << ", reason=" << fileError << "]";
    }
    return true;
}

void Backend::InitFromEnvironment(LogSetup setup) {
    std::string invalidLevel;
    LevelFromEnvironment(&setup.level, &invalidLevel);
    const char* file = std::getenv(kFileVariable);
    setup.filePath = file == nullptr ? std::string() : std::string(file);
    // Only the set-up that counts reports a bad level, so it is reported once.
    if (SetUp(setup) && !invalidLevel.empty()) {
        GetLog(setup.contextId)->LogWarn()
            << "[Log][Invalid " << kLevelVariable << " ignored][value=" << invalidLevel
            << ", used=" << LevelName(setup.level) << "]";
    }
}

std::shared_ptr<Log> Backend::GetLog(const std::string& contextId) {
    orx::sync::MutexLock lock(registryMutex_);
    auto& slot = logs_[contextId];
    if (!slot) {
        slot = std::make_shared<Log>(contextId);
    }
    return slot;
}

std::string Backend::DefaultContext() const {
    orx::sync::MutexLock lock(mutex_);
    return defaultContext_;
}

}  // namespace ara::kelda::common::log::detail
