#include "vorx/vcc/app/runtime.h"

#include <atomic>
#include <cstdlib>

#include "app_log.h"
#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/orxConfigParser/config_reader.h"
#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/vcc/app/deployment_parser.h"
#include "vorx/vcc/dfx_plugin_loader.h"
#include "vorx/vcc/orx_maintaind_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace vorx::vcc::app {
namespace {

namespace config = ara::kelda::common::orxConfigParser;
namespace kelda = ara::kelda::common::log;

std::atomic<bool> gRuntimeMade{false};

bool EnvSet(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && value[0] != '\0';
}

// Makes every reader of the process read the file this runtime chose.
void ChooseConfigFile(const std::string& fallback) {
    if (!EnvSet("ORX_CONFIG") && !fallback.empty()) {
        ::setenv("ORX_CONFIG", fallback.c_str(), 1);
    }
}

kelda::LogLevel ConfiguredLevel(const std::string& name) {
    kelda::LogLevel level = kelda::LogLevel::kInfo;
    if (!name.empty()) {
        kelda::ParseLevel(name, &level);
    }
    return level;
}

const ServiceDeployment* FindDeployment(const std::vector<ServiceDeployment>& all,
                                        const std::string& service, ServiceRole role) {
    for (const auto& deployment : all) {
        if (deployment.role == role &&
            (deployment.serviceName == service || deployment.shortName == service)) {
            return &deployment;
        }
    }
    return nullptr;
}

}  // namespace

struct Runtime::State {
    bool active{false};
    std::string appName;
    std::string configPath;
    std::vector<ServiceDeployment> deployments;
    std::vector<std::string> errors;
    uint32_t sampleTimeoutThresholdMs{0};
};

Runtime::Runtime() : Runtime(Options{}) {}

Runtime::Runtime(const Options& options) : state_(std::make_unique<State>()) {
    if (gRuntimeMade.exchange(true)) {
        detail::AppLog()->LogWarn() << "[App][A second Runtime in one process is refused]";
        return;
    }
    state_->active = true;
    ChooseConfigFile(options.configPath);
    const auto parser = config::ParseJsonToGetConfig::GetInstance();
    state_->configPath = parser->FilePath();
    if (state_->configPath != config::ConfigFilePath()) {
        detail::AppLog()->LogWarn()
            << "[App][orx.json was read before the runtime started, "
               "keeping that file][file="
            << state_->configPath << ", wanted=" << config::ConfigFilePath() << "]";
    }
    state_->appName = parser->GetAppName();
    kelda::Log::InitLog(state_->appName.empty() ? "orx-app" : state_->appName, "APP",
                        ConfiguredLevel(parser->GetLogLevel()), "application");

    DeploymentParseResult parsed = ParseDeployments(parser->Document(), state_->configPath);
    state_->deployments = std::move(parsed.services);
    state_->errors = std::move(parsed.errors);
    // The same key the plug-in's listener reads; taken from the document read above, so the
    // file is read once.
    config::ConfigReader reader(parser->Document(), state_->configPath);
    state_->sampleTimeoutThresholdMs = reader.GetUint32("dfx.sampleTimeoutThresholdMs").value_or(0);

    // The DDS driver serves the DDS binding when orx.json or the environment chooses "dds".
    driver::dds::RegisterDdsDriver();

    if (options.loadPlugin) {
        const bool named = EnvSet("ORX_DFX_PLUGIN") || !parser->GetPluginPath().empty();
        DfxPluginLoader::Load(named ? std::string() : options.pluginPath);
    }
    if (auto maintaind = RegisterDfxInterface::GetOrxMaintaindInterface()) {
        maintaind->InitializeAll();
    }
    detail::AppLog()->LogInfo() << "[App][Runtime started][appName=" << state_->appName
                                << ", config=" << state_->configPath
                                << ", services=" << state_->deployments.size()
                                << ", maintenance=" << (MaintenanceEnabled() ? "on" : "off") << "]";
}

Runtime::~Runtime() {
    if (state_->active) {
        gRuntimeMade.store(false);
    }
}

const std::string& Runtime::AppName() const {
    return state_->appName;
}

const std::string& Runtime::ConfigPath() const {
    return state_->configPath;
}

const std::vector<ServiceDeployment>& Runtime::Deployments() const {
    return state_->deployments;
}

const std::vector<std::string>& Runtime::DeploymentErrors() const {
    return state_->errors;
}

bool Runtime::MaintenanceEnabled() const {
    return RegisterDfxInterface::GetOrxMaintaindInterface() != nullptr;
}

uint32_t Runtime::SampleTimeoutThresholdMs() const {
    return state_->sampleTimeoutThresholdMs;
}

std::unique_ptr<ServiceProvider> Runtime::Provide(const std::string& service) const {
    const ServiceDeployment* deployment =
        FindDeployment(state_->deployments, service, ServiceRole::kProvided);
    if (deployment == nullptr) {
        detail::AppLog()->LogError()
            << "[App][No provided service of this name deployed][service=" << service
            << ", config=" << state_->configPath << "]";
        return nullptr;
    }
    return std::make_unique<ServiceProvider>(*deployment);
}

std::unique_ptr<ServiceConsumer> Runtime::Require(const std::string& service) const {
    const ServiceDeployment* deployment =
        FindDeployment(state_->deployments, service, ServiceRole::kRequired);
    if (deployment == nullptr) {
        detail::AppLog()->LogError()
            << "[App][No required service of this name deployed][service=" << service
            << ", config=" << state_->configPath << "]";
        return nullptr;
    }
    ConsumerSettings settings;
    settings.sampleTimeoutThresholdMs = state_->sampleTimeoutThresholdMs;
    return std::make_unique<ServiceConsumer>(*deployment, settings);
}

}  // namespace vorx::vcc::app
