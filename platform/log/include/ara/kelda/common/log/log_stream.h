#ifndef ARA_KELDA_COMMON_LOG_LOG_STREAM_H
#define ARA_KELDA_COMMON_LOG_LOG_STREAM_H

#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

#include "ara/kelda/common/log/export.h"
#include "ara/kelda/common/log/log_level.h"

namespace ara::kelda::common::log {

class Log;

// One log line under construction. Obtained from Log (LogInfo(), LogWarn(limit), ...); the line
// is handed to the sinks as ONE record when the stream object is destroyed, normally at the end
// of the full expression `logger->LogInfo() << "x=" << x;`.
//
// A disabled stream (level below every sink's threshold, or dropped by a rate limit) ignores
// everything streamed into it: nothing is formatted, nothing is allocated, and the operator<< of
// user types is not called. The arguments themselves are still evaluated by the language.
//
// Formatting rules:
//   - bool prints 0 or 1;
//   - integers print as decimal numbers, including one-byte ones (uint8_t, int8_t);
//   - char prints as a character;
//   - enums print as their underlying number (also when that is one byte);
//   - std::string, std::string_view, const char* and char arrays print as text (a null
//     const char* prints "(null)");
//   - floating point prints as a default std::ostream would (6 significant digits);
//   - object pointers print as addresses; any other type goes through its operator<< on a
//     std::ostream.
//
// A stream belongs to the thread that uses it; it is movable, not copyable.
class KELDA_LOG_EXPORT LogStream {
  public:
    LogStream(LogStream&& other) noexcept;
    LogStream& operator=(LogStream&& other) noexcept;
    LogStream(const LogStream&) = delete;
    LogStream& operator=(const LogStream&) = delete;
    // Emits the line if the stream is enabled. Never throws.
    ~LogStream() {
        if (log_ != nullptr) {
            Emit();
        }
    }

    template <typename T>
    LogStream& operator<<(const T& value) {
        if (log_ != nullptr) {
            Append(value);
        }
        return *this;
    }

    bool Enabled() const { return log_ != nullptr; }

  private:
    friend class Log;
    LogStream() = default;  // disabled
    LogStream(const Log* log, LogLevel level, uint32_t suppressed);

    template <typename T>
    void Append(const T& value) {
        using D = std::decay_t<T>;
        if constexpr (std::is_same_v<D, bool>) {
            text_.push_back(value ? '1' : '0');
        } else if constexpr (std::is_same_v<D, char>) {
            text_.push_back(value);
        } else if constexpr (std::is_enum_v<D>) {
            AppendInteger(static_cast<std::underlying_type_t<D>>(value));
        } else if constexpr (std::is_integral_v<D>) {
            AppendInteger(value);
        } else if constexpr (std::is_floating_point_v<D>) {
            if constexpr (std::is_same_v<D, long double>) {
                AppendLongDouble(value);
            } else {
                AppendDouble(static_cast<double>(value));  // what std::ostream does with float
            }
        } else if constexpr (std::is_same_v<D, const char*> || std::is_same_v<D, char*>) {
            AppendCString(value);
        } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
            AppendText(std::string_view(value));
        } else if constexpr (std::is_pointer_v<D> && std::is_object_v<std::remove_pointer_t<D>>) {
            AppendStreamed(static_cast<const void*>(value));
        } else {
            AppendStreamed(value);
        }
    }

    template <typename I>
    void AppendInteger(I value) {
        if constexpr (std::is_signed_v<I>) {
            AppendSigned(static_cast<int64_t>(value));
        } else {
            AppendUnsigned(static_cast<uint64_t>(value));
        }
    }

    template <typename T>
    void AppendStreamed(const T& value) {
        std::ostringstream os;
        os << value;
        AppendText(os.str());
    }

    void AppendSigned(int64_t value);
    void AppendUnsigned(uint64_t value);
    void AppendDouble(double value);
    void AppendLongDouble(long double value);
    void AppendCString(const char* value);
    void AppendText(std::string_view value);
    void Emit() noexcept;

    const Log* log_ = nullptr;  // null: disabled
    LogLevel level_ = LogLevel::kOff;
    uint32_t suppressed_ = 0;
    std::string text_;
};

}  // namespace ara::kelda::common::log

#endif  // ARA_KELDA_COMMON_LOG_LOG_STREAM_H
