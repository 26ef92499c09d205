#ifndef VORX_VCC_APP_SRC_JSON_SCOPE_H
#define VORX_VCC_APP_SRC_JSON_SCOPE_H

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace vorx::vcc::app::detail {

// Collects the problems of one deployment file and logs each one at once (error level, "CM").
class ProblemLog {
  public:
    explicit ProblemLog(std::string filePath) : filePath_(std::move(filePath)) {}

    // An optional value that is unusable; its default applies.
    void Ignored(const std::string& key, const nlohmann::json* value, const std::string& reason);
    // A value that makes `what` (e.g. "event") unusable, so it is not deployed.
    void Skipped(const std::string& what, const std::string& key, const nlohmann::json* value,
                 const std::string& reason);
    std::vector<std::string> TakeErrors() { return std::move(errors_); }

  private:
    void Write(const std::string& headline, const std::string& key, const nlohmann::json* value,
               const std::string& reason);

    std::string filePath_;
    std::vector<std::string> errors_;
};

// A name-to-value table for values written as words in the file.
template <class T>
using Choices = std::vector<std::pair<const char*, T>>;

// Conversions of one JSON value; each returns false and sets `reason` when the value does not fit.
bool ToValue(const nlohmann::json& value, std::string& out, std::string& reason);
bool ToValue(const nlohmann::json& value, bool& out, std::string& reason);
bool ToValue(const nlohmann::json& value, std::map<std::string, std::string>& out,
             std::string& reason);
// A non-negative integer, however the document stores it.
bool AsUnsigned(const nlohmann::json& value, uint64_t& out);
bool ToUnsigned(const nlohmann::json& value, uint64_t max, uint64_t& out, std::string& reason);

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

template <class T>
bool ToChoice(const nlohmann::json& value, const Choices<T>& choices, T& out, std::string& reason) {
    if (value.is_string()) {
        const auto text = value.get<std::string>();
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

// Typed reads from one JSON object of a deployment, named by its path in the file
// ("services[0].events[1]"). A scope belongs to one entity (`what`: "service", "event", ...);
// its child scopes share the entity's verdict, so a bad mandatory value anywhere inside makes
// Usable() false.
class JsonScope {
  public:
    JsonScope(const nlohmann::json& object, std::string path, std::string what, ProblemLog& log)
        : object_(&object),
          path_(std::move(path)),
          what_(std::move(what)),
          log_(&log),
          usable_(std::make_shared<bool>(true)) {}

    const std::string& Path() const { return path_; }
    std::string Key(const std::string& name) const { return path_ + "." + name; }
    ProblemLog& Log() const { return *log_; }
    bool Usable() const { return *usable_; }
    // Marks the entity unusable and logs why.
    void Fail(const std::string& name, const nlohmann::json* value, const std::string& reason);
    // The value under `name`; nullptr when absent or JSON null.
    const nlohmann::json* Find(const std::string& name) const;
    bool Has(const std::string& name) const { return Find(name) != nullptr; }

    // Stores the value of `name` in `out` and returns true when it is present and fits; an unfit
    // value is logged as ignored and `out` keeps its default.
    template <class T>
    bool Optional(const std::string& name, T& out) {
        const nlohmann::json* value = Find(name);
        if (value == nullptr) {
            return false;
        }
        T converted{};
        std::string reason;
        if (!ToValue(*value, converted, reason)) {
            log_->Ignored(Key(name), value, reason);
            return false;
        }
        out = std::move(converted);
        return true;
    }
    // Like Optional, but a missing or unfit value makes the entity unusable.
    template <class T>
    bool Required(const std::string& name, T& out) {
        const nlohmann::json* value = Find(name);
        if (value == nullptr) {
            Fail(name, nullptr, "missing");
            return false;
        }
        T converted{};
        std::string reason;
        if (!ToValue(*value, converted, reason)) {
            Fail(name, value, reason);
            return false;
        }
        out = std::move(converted);
        return true;
    }
    template <class T>
    bool OptionalChoice(const std::string& name, const Choices<T>& choices, T& out) {
        const nlohmann::json* value = Find(name);
        if (value == nullptr) {
            return false;
        }
        std::string reason;
        if (!ToChoice(*value, choices, out, reason)) {
            log_->Ignored(Key(name), value, reason);
            return false;
        }
        return true;
    }
    template <class T>
    bool RequiredChoice(const std::string& name, const Choices<T>& choices, T& out) {
        const nlohmann::json* value = Find(name);
        if (value == nullptr) {
            Fail(name, nullptr, "missing");
            return false;
        }
        std::string reason;
        if (!ToChoice(*value, choices, out, reason)) {
            Fail(name, value, reason);
            return false;
        }
        return true;
    }

    // The object under `name` as a scope of the same entity. Absent: nothing (a failure when
    // `required`). Not an object: ignored with an error line, or a failure when `required`.
    std::unique_ptr<JsonScope> Child(const std::string& name, bool required = false);
    // The objects of the list under `name`, each a scope of a new entity `what`. Elements that
    // are not objects are skipped with an error line; a value that is not a list is ignored.
    std::vector<JsonScope> Elements(const std::string& name, const std::string& what);

  private:
    const nlohmann::json* object_;
    std::string path_;
    std::string what_;
    ProblemLog* log_;
    std::shared_ptr<bool> usable_;
};

}  // namespace vorx::vcc::app::detail

#endif  // VORX_VCC_APP_SRC_JSON_SCOPE_H
