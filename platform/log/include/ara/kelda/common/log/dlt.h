#ifndef ARA_KELDA_COMMON_LOG_DLT_H
#define ARA_KELDA_COMMON_LOG_DLT_H

#include <string>
#include <string_view>

#include "ara/kelda/common/log/export.h"
#include "ara/kelda/common/log/log_level.h"

// Log lines into DLT (Diagnostic Log and Trace): the local dlt-daemon collects the lines of
// every process of the vehicle for dlt-viewer and dlt-receive.
namespace ara::kelda::common::log {

// A DLT id (application or context id: at most 4 characters) made from a name: its first four
// letters and digits, in upper case ("radar" -> "RADA", "CM" -> "CM", "MAINTAIND" -> "MAIN",
// "orx-app" -> "ORXA"); "LOG" for a name without any.
KELDA_LOG_EXPORT std::string DltIdOf(std::string_view name);

// Sends every line at or above `threshold` to the local dlt-daemon too, beside the console and
// file sinks. `appId` is the DLT application id (it is cut to 4 characters); "" takes
// DltIdOf(the application id of the logging set-up). Every logger is a DLT context with the id
// DltIdOf(its context id), so the plug-in's logger "CM" logs as context "CM". Levels map one to
// one (verbose, debug, info, warning, error, fatal); the daemon may filter further per context.
// A line that carries rate-limited drops starts with "[suppressed N] ", as on the console.
//
// Nothing blocks on a missing or slow daemon: the DLT library keeps lines in its own buffer until
// a daemon is there and drops them when that buffer is full; the other sinks get every line
// regardless. Lines logged after the DLT library has shut down at process exit go to the other
// sinks only.
//
// Once per process: returns true when the sink was added, false when DLT is on already or the
// DLT library refused the application (one warning line says why). Thread-safe.
KELDA_LOG_EXPORT bool EnableDlt(const std::string& appId, LogLevel threshold);

}  // namespace ara::kelda::common::log

#endif  // ARA_KELDA_COMMON_LOG_DLT_H
