#include "vorx/vcc/app/runtime.h"

#include <atomic>
#include <cstdlib>

#include "app_log.h"
#include "ara/kelda/common/log/dlt.h"
#include "ara/kelda/common/log/log.h"
#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"
#include "vorx/vcc/app/deployment_parser.h"
#include "vorx/vcc/dfx_plugin_loader.h"
#include "vorx/vcc/orx_maintaind_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace vorx::vcc::app {
namespace {

namespace config = ara::kelda::common::orxConfigParser;
namespace kelda = ara::kelda::common::log;

std::atomic<bool> gRuntimeMade{false};

// Makes every reader of the process read the file this runtime chose: the plug-in reads orx.json
// through the configuration parser itself.
void ChooseConfigFile(const std::string& fallback) {
    if (!config::NonEmpty(config::ProcessEnvironment(), "ORX_CONFIG") && !fallback.empty()) {
        ::setenv("ORX_CONFIG", fallback.c_str(), 1);
    }
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
    ProcessSettings settings;
    std::vector<ServiceDeployment> deployments;
    std::vector<std::string> errors;
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
    if (parser->FilePath() != config::ConfigFilePath()) {
        detail::AppLog()->LogWarn()
            << "[App][orx.json was read before the runtime started, "
               "keeping that file][file="
            << parser->FilePath() << ", wanted=" << config::ConfigFilePath() << "]";
    }
    ProcessDefaults defaults;
    defaults.pluginPath = options.pluginPath;
    state_->settings = LoadProcessSettings(*parser, config::ProcessEnvironment(), defaults);
    const ProcessSettings& settings = state_->settings;
    kelda::Log::SetUp({settings.appName.empty() ? "orx-app" : settings.appName, "APP",
                       settings.logLevel, settings.logFile, "application"});
    if (settings.logDlt) {
        kelda::EnableDlt(settings.dltAppId, settings.logLevel);
    }
    if (const auto* blocking = settings.report.Blocking()) {
        detail::AppLog()->LogFatal()
            << "[App][Not started][setting=" << blocking->origin.Describe()
            << ", value=" << blocking->value << ", reason=" << blocking->reason
            << ", exitCode=" << kExitInvalidSettings << "]";
        std::exit(kExitInvalidSettings);
    }

    DeploymentParseResult parsed = ParseDeployments(parser->Document(), settings.configPath);
    state_->deployments = std::move(parsed.services);
    state_->errors = std::move(parsed.errors);

    ApplyProcessSettings(settings);
    if (options.loadPlugin) {
        DfxPluginLoader::Load(settings.pluginPath);
    }
    if (auto maintaind = RegisterDfxInterface::GetOrxMaintaindInterface()) {
        maintaind->InitializeAll();
    }
    detail::AppLog()->LogInfo() << "[App][Runtime started][appName=" << settings.appName
                                << ", config=" << settings.configPath
                                << ", services=" << state_->deployments.size()
                                << ", maintenance=" << (MaintenanceEnabled() ? "on" : "off") << "]";
}

Runtime::~Runtime() {
    if (state_->active) {
        gRuntimeMade.store(false);
    }
}

const ProcessSettings& Runtime::Settings() const {
    return state_->settings;
}

const std::string& Runtime::AppName() const {
    return state_->settings.appName;
}

const std::string& Runtime::ConfigPath() const {
    return state_->settings.configPath;
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
    return state_->settings.sampleTimeoutThresholdMs;
}

std::unique_ptr<ServiceProvider> Runtime::Provide(const std::string& service) const {
    const ServiceDeployment* deployment =
        FindDeployment(state_->deployments, service, ServiceRole::kProvided);
    if (deployment == nullptr) {
        detail::AppLog()->LogError()
            << "[App][No provided service of this name deployed][service=" << service
            << ", config=" << state_->settings.configPath << "]";
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
            << ", config=" << state_->settings.configPath << "]";
        return nullptr;
    }
    ConsumerSettings settings;
    settings.sampleTimeoutThresholdMs = state_->settings.sampleTimeoutThresholdMs;
    return std::make_unique<ServiceConsumer>(*deployment, settings);
}

}  // namespace vorx::vcc::app
