#ifndef ARA_KELDA_COMMON_ORXCONFIGPARSER_CONFIG_READER_H
#define ARA_KELDA_COMMON_ORXCONFIGPARSER_CONFIG_READER_H

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "ara/kelda/common/orxConfigParser/export.h"
#include "ara/kelda/common/orxConfigParser/setting.h"

// The one typed reader of orx.json: loading the file, converting values, and reporting every
// value that cannot be used with one error line that names the file, the key, the value and the
// reason. Every reader of the file (the configuration parser, the core's settings, the service
// deployments, the DDS driver's settings) goes through it, so the rules are the same everywhere.
namespace ara::kelda::common::orxConfigParser {

class ConfigProblems;

// Loads a configuration file. Returns the parsed JSON object; returns {} when the file is
// missing (one debug line) or cannot be read, is not valid JSON, or does not hold an object
// (one error line on the "CM" logger naming the file, with line and column for a syntax error,
// also recorded in `problems` when given). With `warnKeys`, a loaded file also gets one warning
// per duplicated key and per key no reader knows (with a close known key as "didYouMean").
// Never throws.
ORX_CONFIG_EXPORT nlohmann::json LoadConfigDocument(const std::string& filePath,
                                                    ConfigProblems* problems = nullptr,
                                                    bool warnKeys = false);

// Names of the values a setting written as a word may take, with what each stands for.
template <class T>
using Choices = std::vector<std::pair<const char*, T>>;

// Conversions of one JSON value. Each returns true and sets `out` when the value fits; otherwise
// returns false, sets `reason` (e.g. "must be a text") and leaves `out` alone.
ORX_CONFIG_EXPORT bool ToValue(const nlohmann::json& value, std::string& out, std::string& reason);
ORX_CONFIG_EXPORT bool ToValue(const nlohmann::json& value, bool& out, std::string& reason);
// A non-negative integer, however the document holds it (a parsed file holds it unsigned, a
// document built in code signed).
ORX_CONFIG_EXPORT bool AsUnsigned(const nlohmann::json& value, uint64_t& out);
// An integer from 0 to `max`.
ORX_CONFIG_EXPORT bool ToUnsigned(const nlohmann::json& value, uint64_t max, uint64_t& out,
                                  std::string& reason);
// An integer from `min` to `max`; the reason names exactly that range.
ORX_CONFIG_EXPORT bool ToUnsignedIn(const nlohmann::json& value, uint64_t min, uint64_t max,
                                    uint64_t& out, std::string& reason);
// A short rendering of a value for messages: scalars as JSON (cut after 80 characters),
// containers by their kind ("<array>"), so a huge value never floods the log.
ORX_CONFIG_EXPORT std::string DescribeValue(const nlohmann::json& value);

template <class U>
std::enable_if_t<std::is_unsigned_v<U> && !std::is_same_v<U, bool>, bool> ToValue(
    const nlohmann::json& value, U& out, std::string& reason) {
    uint64_t number = 0;
    if (!ToUnsigned(value, std::numeric_limits<U>::max(), number, reason)) {
        return false;
    }
    out = static_cast<U>(number);
    return true;
}

// A list whose elements all convert.
template <class E>
bool ToValue(const nlohmann::json& value, std::vector<E>& out, std::string& reason) {
    if (!value.is_array()) {
        reason = "must be a list";
        return false;
    }
    std::vector<E> result;
    for (size_t i = 0; i < value.size(); ++i) {
        E element{};
        if (!ToValue(value[i], element, reason)) {
            reason = "element " + std::to_string(i) + " " + reason;
            return false;
        }
        result.push_back(std::move(element));
    }
    out = std::move(result);
    return true;
}

// A text that names one of `choices`.
template <class T>
bool ToChoice(const nlohmann::json& value, const Choices<T>& choices, T& out, std::string& reason) {
    if (value.is_string()) {
        const auto& text = value.get_ref<const std::string&>();
        for (const auto& [name, choice] : choices) {
            if (text == name) {
                out = choice;
                return true;
            }
        }
    }
    reason = "must be one of";
    const char* separator = " ";
    for (const auto& choice : choices) {
        reason += separator;
        reason += choice.first;
        separator = ", ";
    }
    return false;
}

// The problems found in one file: each is written at once as one error line on the "CM" logger
// and kept, in the order found. One instance belongs to one thread.
class ORX_CONFIG_EXPORT ConfigProblems {
  public:
    explicit ConfigProblems(std::string filePath);

    // Writes "<headline>[file=F, key=K, value=V, reason=R]" (without ", value=V" when `value` is
    // null: a missing value) and keeps it, unless a problem of `key` was reported before. A key
    // that StopsStart gets the headline "[OrxConfigParser][Invalid config value, the process does
    // not start]" instead.
    void Report(const std::string& headline, const std::string& key, const nlohmann::json* value,
                const std::string& reason);
    // Keeps a problem that its finder has written already.
    void Add(SettingProblem problem, std::string line);

    const std::string& FilePath() const;
    const std::vector<SettingProblem>& Problems() const;
    // The lines written, one per problem.
    const std::vector<std::string>& Lines() const;

  private:
    std::string filePath_;
    std::set<std::string> reportedKeys_;
    std::vector<SettingProblem> problems_;
    std::vector<std::string> lines_;
};

// Typed reads from one JSON object of a loaded file, by key relative to that object; a dotted
// key reaches into nested objects ("maintenance.network.address"). The rules:
//   - an absent key or JSON null gives std::nullopt silently;
//   - a value that does not convert, or an enclosing section that is not an object, gives one
//     problem (headline, file, key, value, reason) and std::nullopt; each key is reported once.
// Keys in messages are full paths: the reader's own path ("services[0].events[1]", empty for
// the whole file), a dot, and the key.
//
// The JSON must outlive the reader. Readers of one file share its ConfigProblems; one reader
// belongs to one thread.
class ORX_CONFIG_EXPORT ConfigReader {
  public:
    // The headline of problems reported by readers of the whole file.
    static constexpr const char* kInvalidValue =
        "[OrxConfigParser][Invalid config value, treated as not configured]";

    // The whole document of `filePath`, with problems of its own.
    ConfigReader(const nlohmann::json& document, std::string filePath);
    // One object of a file, named `path` in messages; problems go to `problems` with `headline`.
    ConfigReader(const nlohmann::json& object, std::string path,
                 std::shared_ptr<ConfigProblems> problems, std::string headline);

    // Another object of the same file, named `path`, reporting the same way.
    ConfigReader Nested(const nlohmann::json& object, std::string path) const;

    // The value at `key`, or null when absent, JSON null or under a section that is not an
    // object (reported).
    const nlohmann::json* Find(const std::string& key);

    // The value at `key` as a T (text, bool, unsigned integer, list of those, or an object of
    // texts). For an object of texts, members that are not texts are reported as "key.member"
    // and left out.
    template <class T>
    std::optional<T> Get(const std::string& key) {
        if constexpr (std::is_same_v<T, std::map<std::string, std::string>>) {
            return GetStringMap(key);
        } else {
            const nlohmann::json* value = Find(key);
            if (value == nullptr) {
                return std::nullopt;
            }
            T out{};
            std::string reason;
            if (!ToValue(*value, out, reason)) {
                ReportInvalid(key, value, reason);
                return std::nullopt;
            }
            return out;
        }
    }
    template <class T>
    std::optional<T> GetChoice(const std::string& key, const Choices<T>& choices) {
        const nlohmann::json* value = Find(key);
        if (value == nullptr) {
            return std::nullopt;
        }
        T out{};
        std::string reason;
        if (!ToChoice(*value, choices, out, reason)) {
            ReportInvalid(key, value, reason);
            return std::nullopt;
        }
        return out;
    }
    std::optional<std::string> GetString(const std::string& key) { return Get<std::string>(key); }
    std::optional<bool> GetBool(const std::string& key) { return Get<bool>(key); }
    std::optional<uint32_t> GetUint32(const std::string& key) { return Get<uint32_t>(key); }
    std::optional<std::map<std::string, std::string>> GetStringMap(const std::string& key);

    // The object at `key` as a reader. Absent or null: std::nullopt. Not an object: reported,
    // std::nullopt.
    std::optional<ConfigReader> Child(const std::string& key);

    // Reports a bad value at `key` (relative to this reader) with this reader's headline.
    // `value` may be null.
    void ReportInvalid(const std::string& key, const nlohmann::json* value,
                       const std::string& reason);
    // Where the value at `key` comes from: this file and the full key.
    SettingOrigin OriginOf(const std::string& key) const;

    // The full key of `key`: "path.key", or `key` when the reader has no path.
    std::string Key(const std::string& key) const;
    const std::string& Path() const;
    const std::string& FilePath() const;
    ConfigProblems& Problems() const;
    const std::shared_ptr<ConfigProblems>& SharedProblems() const;

  private:
    const nlohmann::json* object_;
    std::string path_;
    std::shared_ptr<ConfigProblems> problems_;
    std::string headline_;
};

}  // namespace ara::kelda::common::orxConfigParser

#endif  // ARA_KELDA_COMMON_ORXCONFIGPARSER_CONFIG_READER_H
