#include "vorx/vcc/app/deployment_parser.h"

#include <cstdint>
#include <set>

#include "binding_parser.h"
#include "entity_scope.h"
#include "vorx/vcc/handle_type.h"
#include "vorx/vcc/reserve_service.h"

namespace vorx::vcc::app {
namespace {

using detail::EntityScope;
namespace config = ara::kelda::common::orxConfigParser;

const config::Choices<ServiceRole> kRoles = {{"provided", ServiceRole::kProvided},
                                             {"required", ServiceRole::kRequired}};

// Instance ids are decimal numbers 0 to 65535, written as a text or a number.
bool ToInstanceId(const nlohmann::json& value, std::string& out, std::string& reason) {
    api::types::EntityInfo probe;
    std::string text;
    uint64_t number = 0;
    if (config::AsUnsigned(value, number)) {
        text = std::to_string(number);
    } else if (value.is_string()) {
        text = value.get<std::string>();
    }
    if (!probe.SetInstanceId(text)) {
        reason = "must be a decimal number from 0 to 65535";
        return false;
    }
    out = text;
    return true;
}

std::string LastPathPart(const std::string& path) {
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// What every entity of the service uses unless it says otherwise.
uint8_t DefaultSerializeType(const ServiceDeployment& service) {
    return (service.dds || service.proloc) ? 1 : 0;  // CDR for the carried bindings
}

// Reads the part of an event that follows its name and entity id.
void ParseEventBody(EntityScope& scope, const ServiceDeployment& service, EventDeployment& event) {
    event.serialize.serializeType = DefaultSerializeType(service);
    scope.Optional("dataType", event.dataTypeName);
    detail::ParseSerializeSetting(scope, "serialization", event.serialize);
    scope.Optional("latencyAnalysis", event.latencyAnalysis);
    if (auto e2e = scope.Child("e2e")) {
        event.e2e = detail::ParseE2E(*e2e);
    }
    if (auto dds = scope.Child("dds")) {
        detail::ParseDdsEventBinding(*dds, event.dds);
    }
    if (event.dds.topic.empty()) {
        event.dds.topic = service.shortName + "_" + event.name;
    }
    if (service.someip) {
        if (auto someip = scope.Child("someip", true)) {
            detail::ParseSomeipEventBinding(*someip, event.someip);
        }
    }
}

void ParseMethodBody(EntityScope& scope, const ServiceDeployment& service,
                     MethodDeployment& method) {
    const std::string baseName =
        method.serviceLevelName.empty() ? method.name : method.serviceLevelName + "_" + method.name;
    method.requestSerialize.serializeType = DefaultSerializeType(service);
    method.replySerialize.serializeType = DefaultSerializeType(service);
    scope.Optional("inputArgs", method.inputArgNames);
    scope.Optional("outputArgs", method.outputArgNames);
    for (auto& domain : scope.Elements("errorDomains", "error domain")) {
        api::types::ErrorDomainDescription description;
        domain.Required("name", description.name);
        domain.Required("id", description.id);
        if (domain.Usable()) {
            method.errorDomains.push_back(description);
        }
    }
    detail::ParseSerializeSetting(scope, "requestSerialization", method.requestSerialize);
    detail::ParseSerializeSetting(scope, "replySerialization", method.replySerialize);
    scope.Optional("fireAndForget", method.fireAndForget);
    if (auto e2e = scope.Child("e2e")) {
        method.e2e = detail::ParseE2E(*e2e);
    }
    if (auto dds = scope.Child("dds")) {
        detail::ParseDdsMethodBinding(*dds, method.dds);
    }
    if (method.dds.requestTopic.empty()) {
        method.dds.requestTopic = service.shortName + "_" + baseName + "_Request";
    }
    if (method.dds.replyTopic.empty()) {
        method.dds.replyTopic = service.shortName + "_" + baseName + "_Reply";
    }
    if (service.someip) {
        if (auto someip = scope.Child("someip", true)) {
            detail::ParseSomeipMethodBinding(*someip, method.someip);
        }
    }
}

// Entity ids and names already taken in one service.
class EntityBook {
  public:
    // Takes `id`; false (and a failure of `scope`) when another entity has it.
    bool TakeId(EntityScope& scope, const std::string& key, uint32_t id) {
        if (ids_.insert(id).second) {
            return true;
        }
        const nlohmann::json value = id;
        scope.Fail(key, &value, "duplicate entity id in the service");
        return false;
    }
    bool TakeName(EntityScope& scope, const std::string& kind, const std::string& name) {
        if (names_.insert(kind + "/" + name).second) {
            return true;
        }
        const nlohmann::json value = name;
        scope.Fail("name", &value, "duplicate " + kind + " name in the service");
        return false;
    }

  private:
    std::set<uint32_t> ids_;
    std::set<std::string> names_;
};

bool ReadEntityId(EntityScope& scope, uint32_t& id) {
    return scope.RequiredWith("entityId", id,
                              [](const nlohmann::json& value, uint32_t& to, std::string& reason) {
                                  uint64_t number = 0;
                                  if (!config::ToUnsignedIn(value, 1, UINT32_MAX, number, reason)) {
                                      return false;
                                  }
                                  to = static_cast<uint32_t>(number);
                                  return true;
                              });
}

void ParseEvents(EntityScope& scope, ServiceDeployment& service, EntityBook& book) {
    for (auto& element : scope.Elements("events", "event")) {
        EventDeployment event;
        element.Required("name", event.name);
        event.shortName = event.name;
        element.Optional("shortName", event.shortName);
        ReadEntityId(element, event.entityId);
        ParseEventBody(element, service, event);
        if (element.Usable() && book.TakeName(element, "event", event.name) &&
            book.TakeId(element, "entityId", event.entityId)) {
            service.events.push_back(std::move(event));
        }
    }
}

void ParseMethods(EntityScope& scope, ServiceDeployment& service, EntityBook& book) {
    for (auto& element : scope.Elements("methods", "method")) {
        MethodDeployment method;
        element.Required("name", method.name);
        method.shortName = method.name;
        element.Optional("shortName", method.shortName);
        element.Optional("interface", method.serviceLevelName);
        ReadEntityId(element, method.entityId);
        ParseMethodBody(element, service, method);
        if (element.Usable() && book.TakeName(element, "method", method.name) &&
            book.TakeId(element, "entityId", method.entityId)) {
            service.methods.push_back(std::move(method));
        }
    }
}

std::optional<MethodDeployment> ParseFieldMethod(EntityScope& field, const std::string& key,
                                                 const std::string& fieldName,
                                                 const std::string& methodName,
                                                 const ServiceDeployment& service) {
    auto scope = field.Child(key);
    if (!scope) {
        return std::nullopt;
    }
    MethodDeployment method;
    method.name = methodName;
    method.shortName = methodName + fieldName;
    method.serviceLevelName = fieldName;
    ReadEntityId(*scope, method.entityId);
    ParseMethodBody(*scope, service, method);
    return method;
}

void ParseFields(EntityScope& scope, ServiceDeployment& service, EntityBook& book) {
    for (auto& element : scope.Elements("fields", "field")) {
        FieldDeployment field;
        element.Required("name", field.name);
        element.Optional("dataType", field.dataTypeName);
        if (auto notifier = element.Child("notifier")) {
            EventDeployment event;
            event.name = field.name;
            event.shortName = field.name;
            event.dataTypeName = field.dataTypeName;
            ReadEntityId(*notifier, event.entityId);
            ParseEventBody(*notifier, service, event);
            field.notifier = std::move(event);
        }
        field.getter = ParseFieldMethod(element, "getter", field.name, "Get", service);
        field.setter = ParseFieldMethod(element, "setter", field.name, "Set", service);
        if (!field.notifier && !field.getter && !field.setter) {
            element.Fail("", nullptr, "a field needs a notifier, a getter or a setter");
        }
        if (!element.Usable() || !book.TakeName(element, "field", field.name)) {
            continue;
        }
        bool idsFree = true;
        if (field.notifier) {
            idsFree = book.TakeId(element, "notifier.entityId", field.notifier->entityId);
        }
        if (idsFree && field.getter) {
            idsFree = book.TakeId(element, "getter.entityId", field.getter->entityId);
        }
        if (idsFree && field.setter) {
            idsFree = book.TakeId(element, "setter.entityId", field.setter->entityId);
        }
        if (idsFree) {
            service.fields.push_back(std::move(field));
        }
    }
}

void ParseInstanceId(EntityScope& scope, ServiceDeployment& service) {
    const nlohmann::json* value = scope.Find("instanceId");
    std::string reason;
    if (service.role == ServiceRole::kRequired) {
        service.instanceId = kAnyInstanceId;
        if (value != nullptr && !ToInstanceId(*value, service.instanceId, reason)) {
            scope.Ignore("instanceId", value, reason);
        }
        return;
    }
    if (value == nullptr) {
        scope.Fail("instanceId", nullptr, "missing");
    } else if (!ToInstanceId(*value, service.instanceId, reason)) {
        scope.Fail("instanceId", value, reason);
    } else if (ServiceDescription::IsAnyInstance(service.instanceId)) {
        scope.Fail("instanceId", value, "an offered instance needs its own id, not 65534 or 65535");
    }
}

void ParseBindings(EntityScope& scope, ServiceDeployment& service) {
    auto bindings = scope.Child("bindings", true);
    if (!bindings) {
        return;
    }
    if (auto dds = bindings->Child("dds")) {
        service.dds.emplace();
        detail::ParseDdsServiceBinding(*dds, *service.dds);
    }
    if (auto someip = bindings->Child("someip")) {
        service.someip.emplace();
        detail::ParseSomeipServiceBinding(*someip, *service.someip);
    }
    if (bindings->Child("proloc")) {
        service.proloc = true;
    }
    if (!service.dds && !service.someip && !service.proloc) {
        scope.Fail("bindings", nullptr,
                   "must hold at least one of \"dds\", \"someip\", \"proloc\"");
    }
}

std::optional<ServiceDeployment> ParseService(EntityScope& scope) {
    ServiceDeployment service;
    if (scope.Required("service", service.serviceName) && service.serviceName.empty()) {
        const nlohmann::json value = service.serviceName;
        scope.Fail("service", &value, "must not be empty");
    }
    service.shortName = LastPathPart(service.serviceName);
    scope.Optional("shortName", service.shortName);
    if (scope.Required("serviceId", service.serviceId) &&
        CheckIsReserveServiceId(service.serviceId)) {
        const nlohmann::json value = service.serviceId;
        scope.Fail("serviceId", &value, "reserved for the maintenance daemon");
    }
    scope.RequiredChoice("role", kRoles, service.role);
    ParseInstanceId(scope, service);
    scope.Optional("instanceName", service.instanceName);
    scope.Optional("instanceShortName", service.instanceShortName);
    ParseBindings(scope, service);
    if (!scope.Usable()) {
        return std::nullopt;
    }
    EntityBook book;
    ParseEvents(scope, service, book);
    ParseMethods(scope, service, book);
    ParseFields(scope, service, book);
    return service;
}

}  // namespace

std::optional<api::types::DriverType> ServiceDeployment::TrafficBinding() const {
    if (dds) {
        return api::types::DriverType::DDS;
    }
    if (proloc) {
        return api::types::DriverType::PROLOC;
    }
    return std::nullopt;
}

const EventDeployment* ServiceDeployment::FindEvent(const std::string& name) const {
    for (const auto& event : events) {
        if (event.name == name) {
            return &event;
        }
    }
    return nullptr;
}

const MethodDeployment* ServiceDeployment::FindMethod(const std::string& name) const {
    for (const auto& method : methods) {
        if (method.name == name) {
            return &method;
        }
    }
    return nullptr;
}

const FieldDeployment* ServiceDeployment::FindField(const std::string& name) const {
    for (const auto& field : fields) {
        if (field.name == name) {
            return &field;
        }
    }
    return nullptr;
}

DeploymentParseResult ParseDeployments(const nlohmann::json& document,
                                       const std::string& filePath) {
    DeploymentParseResult result;
    if (!document.is_object()) {
        return result;
    }
    auto problems = std::make_shared<config::ConfigProblems>(filePath);
    config::ConfigReader root(document, "", problems, detail::kIgnored);
    const nlohmann::json* services = root.Find("services");
    if (services != nullptr && !services->is_array()) {
        root.ReportInvalid("services", services, "must be a list of service deployments");
    }
    if (services != nullptr && services->is_array()) {
        for (size_t i = 0; i < services->size(); ++i) {
            const std::string path = "services[" + std::to_string(i) + "]";
            const nlohmann::json& element = (*services)[i];
            if (!element.is_object()) {
                problems->Report(detail::SkippedHeadline("service"), path, &element,
                                 "must be an object");
                continue;
            }
            EntityScope scope(root.Nested(element, path), "service");
            if (auto service = ParseService(scope)) {
                result.services.push_back(std::move(*service));
            }
        }
    }
    result.errors = problems->Lines();
    return result;
}

}  // namespace vorx::vcc::app
