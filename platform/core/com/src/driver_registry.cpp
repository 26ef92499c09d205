#include "vorx/vcc/driver/driver_registry.h"

#include <utility>

#include "ara/kelda/common/log/log.h"
#include "orx/sync/mutex.h"

namespace vorx::vcc {
namespace {

using api::types::DriverType;

size_t IndexOf(DriverType binding) {
    const auto index = static_cast<size_t>(binding);
    return index < 3 ? index : 0;
}

}  // namespace

std::shared_ptr<DriverRegistry> DriverRegistry::GetInstance() {
    // Never destroyed: proxies and skeletons are used from destructors at process exit.
    static auto* const instance =
        new std::shared_ptr<DriverRegistry>(std::make_shared<DriverRegistry>());
    return *instance;
}

DriverRegistry::DriverRegistry(ara::kelda::common::orxConfigParser::EnvLookup env)
    : env_(std::move(env)) {}

const DriverSettings& DriverRegistry::SettingsLocked() const {
    if (!settings_) {
        DriverSettings fromEnvironment;
        LoadDriverSettings(fromEnvironment, nullptr, env_, nullptr);
        settings_ = fromEnvironment;
    }
    return *settings_;
}

void DriverRegistry::Configure(const DriverSettings& settings) {
    orx::sync::MutexLock lock(mutex_);
    settings_ = settings;
    if (inProcess_) {
        inProcess_->SetPayloadMode(settings.inProcessPayload);
    }
}

DriverSettings DriverRegistry::Settings() const {
    orx::sync::MutexLock lock(mutex_);
    return SettingsLocked();
}

std::string DriverRegistry::ConfiguredName(DriverType binding) const {
    orx::sync::MutexLock lock(mutex_);
    return SettingsLocked().NameOf(binding);
}

std::shared_ptr<InProcessDriver> DriverRegistry::GetInProcessDriver() {
    orx::sync::MutexLock lock(mutex_);
    if (!inProcess_) {
        inProcess_ = std::make_shared<InProcessDriver>(SettingsLocked().inProcessPayload);
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
    if (name != kInProcessDriverName) {
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
