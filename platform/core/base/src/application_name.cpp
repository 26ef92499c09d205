#include "vorx/vcc/application_name.h"

#include <utility>

#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"

namespace vorx::vcc {

ApplicationName::ApplicationName(std::string name) : name_(std::move(name)) {}

std::shared_ptr<ApplicationName> ApplicationName::GetInstance() {
    // Leaked on purpose: destructors at process exit still ask for the name.
    static auto* const instance =
        new std::shared_ptr<ApplicationName>(std::make_shared<ApplicationName>(
            ara::kelda::common::orxConfigParser::ParseJsonToGetConfig::GetInstance()
                ->GetAppName()));
    return *instance;
}

}  // namespace vorx::vcc
