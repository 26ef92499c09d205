#ifndef VORX_VCC_APP_SRC_ENTITY_SCOPE_H
#define VORX_VCC_APP_SRC_ENTITY_SCOPE_H

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ara/kelda/common/orxConfigParser/config_reader.h"

namespace vorx::vcc::app::detail {

namespace config = ara::kelda::common::orxConfigParser;

// The headline of a bad optional value: ignored, its default applies.
inline constexpr const char* kIgnored = "[App][Invalid deployment value, ignored]";
// The headline of a value that makes an entity (`what`: "service", "event", ...) unusable.
std::string SkippedHeadline(const std::string& what);

// One JSON object of a deployment, as a part of one entity. Values are read through the
// configuration reader (its conversions, keys and error lines); on top come the deployment's
// rules: a bad optional value is ignored, a missing or bad mandatory one makes the whole entity
// unusable. Child scopes share the entity's verdict.
class EntityScope {
  public:
    // `reader` reports with kIgnored.
    EntityScope(config::ConfigReader reader, std::string what)
        : reader_(std::move(reader)),
          what_(std::move(what)),
          usable_(std::make_shared<bool>(true)) {}

    const std::string& Path() const { return reader_.Path(); }
    bool Usable() const { return *usable_; }
    // Marks the entity unusable and logs why. An empty `name` names the scope itself.
    void Fail(const std::string& name, const nlohmann::json* value, const std::string& reason);
    // Logs that the value of `name` is ignored.
    void Ignore(const std::string& name, const nlohmann::json* value, const std::string& reason) {
        reader_.ReportInvalid(name, value, reason);
    }
    // The value under `name`; nullptr when absent or JSON null.
    const nlohmann::json* Find(const std::string& name) { return reader_.Find(name); }
    bool Has(const std::string& name) { return Find(name) != nullptr; }

    // Stores the value of `name` in `out` and returns true when it is present and fits; an unfit
    // value is logged as ignored and `out` keeps its default.
    template <class T>
    bool Optional(const std::string& name, T& out) {
        return Take(reader_.Get<T>(name), out);
    }
    template <class T>
    bool OptionalChoice(const std::string& name, const config::Choices<T>& choices, T& out) {
        return Take(reader_.GetChoice(name, choices), out);
    }
    // Like Optional, but a missing or unfit value makes the entity unusable.
    template <class T>
    bool Required(const std::string& name, T& out) {
        return RequiredWith(name, out, [](const nlohmann::json& value, T& to, std::string& reason) {
            return config::ToValue(value, to, reason);
        });
    }
    template <class T>
    bool RequiredChoice(const std::string& name, const config::Choices<T>& choices, T& out) {
        return RequiredWith(name, out,
                            [&choices](const nlohmann::json& value, T& to, std::string& reason) {
                                return config::ToChoice(value, choices, to, reason);
                            });
    }

    // The object under `name` as a scope of the same entity. Absent: nothing (a failure when
    // `required`). Not an object: ignored with an error line, or a failure when `required`.
    std::unique_ptr<EntityScope> Child(const std::string& name, bool required = false);
    // The objects of the list under `name`, each a scope of a new entity `what`. Elements that
    // are not objects are skipped with an error line; a value that is not a list is ignored.
    std::vector<EntityScope> Elements(const std::string& name, const std::string& what);

  private:
    template <class T>
    static bool Take(std::optional<T> value, T& out) {
        if (!value) {
            return false;
        }
        out = std::move(*value);
        return true;
    }

  public:
    // The value under `name` converted by `convert(value, out, reason)`; missing or refused: a
    // failure of the entity.
    template <class T, class Convert>
    bool RequiredWith(const std::string& name, T& out, Convert convert) {
        const nlohmann::json* value = Find(name);
        if (value == nullptr) {
            Fail(name, nullptr, "missing");
            return false;
        }
        T converted{};
        std::string reason;
        if (!convert(*value, converted, reason)) {
            Fail(name, value, reason);
            return false;
        }
        out = std::move(converted);
        return true;
    }

  private:
    config::ConfigReader reader_;
    std::string what_;
    std::shared_ptr<bool> usable_;
};

}  // namespace vorx::vcc::app::detail

#endif  // VORX_VCC_APP_SRC_ENTITY_SCOPE_H
