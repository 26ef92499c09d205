#include "vorx/vcc/driver/driver_registry.h"

#include <cctype>
#include <cstdlib>
#include <utility>

#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "orx/sync/mutex.h"

namespace vorx::vcc {
namespace {

using api::types::DriverType;

constexpr const char* kInProcessName = "inprocess";

size_t IndexOf(DriverType binding) {
    const auto index = static_cast<size_t>(binding);
    return index < 3 ? index : 0;
}

// "proloc", "dds", "someip": the binding's key in orx.json.
std::string BindingKey(DriverType binding) {
    switch (binding) {
        case DriverType::DDS:
            return "dds";
        case DriverType::SOMEIP:
            return "someip";
        case DriverType::PROLOC:
        default:
            return "proloc";
    }
}

std::string EnvironmentName(DriverType binding) {
    std::string variable = "ORX_" + BindingKey(binding) + "_DRIVER";
    for (char& c : variable) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    const char* value = std::getenv(variable.c_str());
    return value != nullptr ? std::string(value) : std::string();
}

std::string ConfigFileName(DriverType binding) {
    const nlohmann::json& document =
        ara::kelda::common::orxConfigParser::ParseJsonToGetConfig::GetInstance()->Document();
    const auto drivers = document.find("drivers");
    if (drivers == document.end() || !drivers->is_object()) {
        return {};
    }
    const auto name = drivers->find(BindingKey(binding));
    if (name == drivers->end() || !name->is_string()) {
        return {};
    }
    return name->get<std::string>();
}

}  // namespace

std::shared_ptr<DriverRegistry> DriverRegistry::GetInstance() {
    // Never destroyed: proxies and skeletons are used from destructors at process exit.
    static auto* const instance =
        new std::shared_ptr<DriverRegistry>(std::make_shared<DriverRegistry>());
    return *instance;
}

DriverRegistry::DriverRegistry() = default;

std::string DriverRegistry::ConfiguredName(DriverType binding) const {
    std::string name = EnvironmentName(binding);
    if (name.empty()) {
        name = ConfigFileName(binding);
    }
    return name.empty() ? std::string(kInProcessName) : name;
}

std::shared_ptr<InProcessDriver> DriverRegistry::GetInProcessDriver() {
    orx::sync::MutexLock lock(mutex_);
    if (!inProcess_) {
        inProcess_ = std::make_shared<InProcessDriver>();
    }
    return inProcess_;
}

std::shared_ptr<Driver> DriverRegistry::GetDriver(DriverType binding) {
    {
        orx::sync::MutexLock lock(mutex_);
        const auto& driver = drivers_[IndexOf(binding)];
        if (driver) {
            return driver;
        }
    }
    std::shared_ptr<Driver> made = Create(binding);
    orx::sync::MutexLock lock(mutex_);
    auto& slot = drivers_[IndexOf(binding)];
    if (!slot) {
        slot = std::move(made);
    }
    return slot;
}

std::shared_ptr<Driver> DriverRegistry::Create(DriverType binding) {
    const std::string name = ConfiguredName(binding);
    if (name != kInProcessName) {
        Factory factory;
        {
            orx::sync::MutexLock lock(mutex_);
            auto made = made_.find(name);
            if (made != made_.end()) {
                return made->second;
            }
            auto it = factories_.find(name);
            if (it != factories_.end()) {
                factory = it->second;
            }
        }
        std::shared_ptr<Driver> driver = factory ? factory() : nullptr;
        if (driver) {
            orx::sync::MutexLock lock(mutex_);
            return made_.emplace(name, std::move(driver)).first->second;
        }
        ara::kelda::common::log::Log::GetLog("CM")->LogWarn()
            << "[DriverRegistry][Unknown driver, the in-process driver is used instead][binding="
            << BindingKey(binding) << ", driver=" << name << "]";
    }
    return GetInProcessDriver();
}

void DriverRegistry::SetDriver(DriverType binding, std::shared_ptr<Driver> driver) {
    orx::sync::MutexLock lock(mutex_);
    drivers_[IndexOf(binding)] = std::move(driver);
}

void DriverRegistry::RegisterFactory(const std::string& name, Factory factory) {
    orx::sync::MutexLock lock(mutex_);
    factories_[name] = std::move(factory);
}

}  // namespace vorx::vcc
