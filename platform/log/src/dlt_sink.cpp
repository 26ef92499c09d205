#include "dlt_sink.h"

#include <dlt/dlt.h>

#include <cstdlib>
#include <cstring>

#include "ara/kelda/common/log/dlt.h"

namespace ara::kelda::common::log::detail {
namespace {

// libdlt shuts itself down in an exit handler; a line written after that would start it again
// in a dying process. Set by our own exit handler, registered after libdlt's and so run before it.
std::atomic<bool> g_dltClosed{false};

void MarkDltClosed() {
    g_dltClosed.store(true);
}

DltLogLevelType DltLevelOf(LogLevel level) {
    switch (level) {
        case LogLevel::kVerbose:
            return DLT_LOG_VERBOSE;
        case LogLevel::kDebug:
            return DLT_LOG_DEBUG;
        case LogLevel::kInfo:
            return DLT_LOG_INFO;
        case LogLevel::kWarn:
            return DLT_LOG_WARN;
        case LogLevel::kError:
            return DLT_LOG_ERROR;
        case LogLevel::kFatal:
            return DLT_LOG_FATAL;
        case LogLevel::kOff:
            break;
    }
    return DLT_LOG_OFF;
}

}  // namespace

struct DltSink::Context {
    DltContext handle{};
    bool registered{false};
};

std::shared_ptr<DltSink> DltSink::Open(const std::string& appId, const std::string& description,
                                       LogLevel threshold, std::string* error) {
    const std::string id = appId.substr(0, DLT_ID_SIZE);
    if (id.empty()) {
        *error = "empty DLT application id";
        return nullptr;
    }
    const DltReturnValue result = dlt_register_app(id.c_str(), description.c_str());
    if (result < DLT_RETURN_OK) {
        *error = "dlt_register_app failed with " + std::to_string(static_cast<int>(result));
        return nullptr;
    }
    std::atexit(&MarkDltClosed);
    return std::shared_ptr<DltSink>(new DltSink(threshold));
}

DltSink::DltSink(LogLevel threshold) : threshold_(threshold) {}

DltSink::~DltSink() {
    if (g_dltClosed.load()) {
        return;
    }
    for (auto& [id, context] : byDltId_) {
        if (context->registered) {
            dlt_unregister_context(&context->handle);
        }
    }
    dlt_unregister_app();
}

DltSink::Context& DltSink::ContextOf(const std::string& logger) {
    auto found = byLogger_.find(logger);
    if (found != byLogger_.end()) {
        return *found->second;
    }
    const std::string id = DltIdOf(logger);
    auto& context = byDltId_[id];
    if (!context) {
        context = std::make_shared<Context>();
        // The process's threshold is the context's first level; the daemon may change it.
        context->registered = dlt_register_context_ll_ts(&context->handle, id.c_str(),
                                                         logger.c_str(), DltLevelOf(Threshold()),
                                                         DLT_TRACE_STATUS_DEFAULT) >= DLT_RETURN_OK;
    }
    byLogger_.emplace(logger, context);
    return *context;
}

void DltSink::Write(const LogRecord& record) {
    if (g_dltClosed.load(std::memory_order_relaxed)) {
        return;
    }
    Context& context = ContextOf(record.contextId);
    if (!context.registered) {
        return;
    }
    DltContextData data;
    if (dlt_user_log_write_start(&context.handle, &data, DltLevelOf(record.level)) !=
        DLT_RETURN_TRUE) {
        return;  // the daemon filters this level out for the context
    }
    if (record.suppressed != 0) {
        const std::string text =
            "[suppressed " + std::to_string(record.suppressed) + "] " + record.text;
        dlt_user_log_write_string(&data, text.c_str());
    } else {
        dlt_user_log_write_string(&data, record.text.c_str());
    }
    dlt_user_log_write_finish(&data);
}

LogLevel DltSink::Threshold() const {
    return threshold_.load(std::memory_order_relaxed);
}

}  // namespace ara::kelda::common::log::detail
