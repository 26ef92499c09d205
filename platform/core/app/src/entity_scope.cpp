#include "entity_scope.h"

namespace vorx::vcc::app::detail {

std::string SkippedHeadline(const std::string& what) {
    return "[App][Invalid deployment value, " + what + " not deployed]";
}

void EntityScope::Fail(const std::string& name, const nlohmann::json* value,
                       const std::string& reason) {
    *usable_ = false;
    reader_.Problems().Report(SkippedHeadline(what_), name.empty() ? Path() : reader_.Key(name),
                              value, reason);
}

std::unique_ptr<EntityScope> EntityScope::Child(const std::string& name, bool required) {
    const nlohmann::json* value = Find(name);
    if (value == nullptr) {
        if (required) {
            Fail(name, nullptr, "missing");
        }
        return nullptr;
    }
    if (!value->is_object()) {
        if (required) {
            Fail(name, value, "must be an object");
        } else {
            Ignore(name, value, "must be an object");
        }
        return nullptr;
    }
    auto child = std::make_unique<EntityScope>(reader_.Nested(*value, reader_.Key(name)), what_);
    child->usable_ = usable_;
    return child;
}

std::vector<EntityScope> EntityScope::Elements(const std::string& name, const std::string& what) {
    std::vector<EntityScope> elements;
    const nlohmann::json* value = Find(name);
    if (value == nullptr) {
        return elements;
    }
    if (!value->is_array()) {
        Ignore(name, value, "must be a list of objects");
        return elements;
    }
    for (size_t i = 0; i < value->size(); ++i) {
        const std::string path = reader_.Key(name) + "[" + std::to_string(i) + "]";
        const nlohmann::json& element = (*value)[i];
        if (!element.is_object()) {
            reader_.Problems().Report(SkippedHeadline(what), path, &element, "must be an object");
            continue;
        }
        elements.emplace_back(reader_.Nested(element, path), what);
    }
    return elements;
}

}  // namespace vorx::vcc::app::detail
