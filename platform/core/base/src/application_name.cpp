#include "vorx/vcc/application_name.h"

#include <utility>

namespace vorx::vcc {

ApplicationName::ApplicationName(std::string name) : name_(std::move(name)) {}

std::shared_ptr<ApplicationName> ApplicationName::GetInstance() {
    // Leaked on purpose: destructors at process exit still ask for the name.
    static auto* const instance =
        new std::shared_ptr<ApplicationName>(std::make_shared<ApplicationName>(std::string()));
    return *instance;
}

void ApplicationName::Configure(const std::string& name) {
    const auto instance = GetInstance();
    orx::sync::MutexLock lock(instance->mutex_);
    instance->name_ = name;
}

std::string ApplicationName::GetAppName() const {
    orx::sync::MutexLock lock(mutex_);
    return name_;
}

}  // namespace vorx::vcc
