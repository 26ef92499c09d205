#include "plugin_system.h"

#include <fstream>

#include "orx/test/temp_dir.h"

namespace orx::test::plugin {
namespace {

std::map<std::string, std::string> CommonEnv(const Placement& placement) {
    return {{"ORX_DDS_DRIVER", "dds"},
            {"ORX_DDS_DOMAIN", std::to_string(placement.domain)},
            {"ORX_LOG_LEVEL", "info"},
            {"ORX_DFX_PLUGIN", ORX_TEST_PLUGIN_PATH}};
}

const Json* At(const Json& json, std::initializer_list<const char*> path) {
    const Json* current = &json;
    for (const char* key : path) {
        if (!current->is_object() || !current->contains(key)) {
            return nullptr;
        }
        current = &(*current)[key];
    }
    return current;
}

template <class T>
bool Is(const Json& json, std::initializer_list<const char*> path, const T& value) {
    const Json* found = At(json, path);
    return found != nullptr && *found == value;
}

}  // namespace

std::unique_ptr<ChildProcess> StartDaemon(const Placement& placement, bool offer) {
    ChildProcess::Options options;
    options.name = "maintaind double";
    options.argv = {ORX_TEST_DAEMON_DOUBLE_PATH};
    if (!offer) {
        options.argv.push_back("--no-offer");
    }
    options.env = CommonEnv(placement);
    options.env["ORX_CONFIG"] =
        placement.config.empty() ? "/nonexistent/orx.json" : placement.config;
    options.netns = placement.netns;
    return std::make_unique<ChildProcess>(options);
}

std::unique_ptr<ChildProcess> StartApp(const std::string& role, const Placement& placement) {
    ChildProcess::Options options;
    options.name = role;
    options.argv = {ORX_TEST_DEMO_PATH, role};
    options.env = CommonEnv(placement);
    options.env["ORX_CONFIG"] = placement.config.empty()
                                    ? std::string(ORX_TEST_EXAMPLES_DIR) + "/" + role + "/orx.json"
                                    : placement.config;
    options.netns = placement.netns;
    return std::make_unique<ChildProcess>(options);
}

Json ExampleConfig(const std::string& role) {
    std::ifstream file(std::string(ORX_TEST_EXAMPLES_DIR) + "/" + role + "/orx.json");
    return Json::parse(file);
}

std::string WriteConfig(const std::string& name, const Json& config) {
    static const TempDir folder("orx-plugin-it");
    const std::string path = folder.File(name + ".json");
    std::ofstream(path) << config.dump(2);
    return path;
}

std::vector<Json> Reports(const ChildProcess& daemon) {
    std::vector<Json> reports;
    const std::string prefix = "RECV ";
    for (const auto& line : daemon.Lines()) {
        if (line.rfind(prefix, 0) == 0) {
            reports.push_back(Json::parse(line.substr(prefix.size()), nullptr, false));
        }
    }
    return reports;
}

std::optional<Json> WaitForReport(ChildProcess& daemon,
                                  const std::function<bool(const Json&)>& match,
                                  std::chrono::milliseconds timeout, size_t skip) {
    const std::string prefix = "RECV ";
    const auto line = daemon.WaitForLine(
        [&](const std::string& text) {
            return text.rfind(prefix, 0) == 0 &&
                   match(Json::parse(text.substr(prefix.size()), nullptr, false));
        },
        timeout, skip);
    if (!line) {
        return std::nullopt;
    }
    return Json::parse(line->substr(prefix.size()));
}

std::function<bool(const Json&)> NodeReport(const std::string& app, bool online) {
    return [app, online](const Json& report) {
        return Is(report, {"kind"}, 3) && Is(report, {"nodeCommonRegisterInfo", "appName"}, app) &&
               Is(report, {"nodeCommonRegisterInfo", "nodePidInfo", "isOnline"}, online) &&
               Is(report, {"nodeCommonRegisterInfo", "appE2EConfig", "pubE2EConfigs"},
                  Json::array()) &&
               Is(report, {"nodeCommonRegisterInfo", "appE2EConfig", "subE2EConfigs"},
                  Json::array());
    };
}

std::function<bool(const Json&)> EventReport(const std::string& app, const std::string& event,
                                             bool isPub, bool online) {
    return [=](const Json& report) {
        return Is(report, {"kind"}, 0) && Is(report, {"isPub"}, isPub) &&
               Is(report, {"eventRegisterInfo", "appName"}, app) &&
               Is(report, {"eventRegisterInfo", "eventName"}, event) &&
               Is(report, {"eventRegisterInfo", "isOnline"}, online);
    };
}

std::function<bool(const Json&)> MethodReport(const std::string& app, bool online) {
    return [=](const Json& report) {
        return Is(report, {"kind"}, 1) && Is(report, {"methodRegisterInfo", "appName"}, app) &&
               Is(report, {"methodRegisterInfo", "isOnline"}, online);
    };
}

std::function<bool(const Json&)> FieldReport(const std::string& app, bool online) {
    return [=](const Json& report) {
        return Is(report, {"kind"}, 2) && Is(report, {"fieldRegisterInfo", "appName"}, app) &&
               Is(report, {"fieldRegisterInfo", "isOnline"}, online);
    };
}

std::function<bool(const Json&)> E2EReport(const std::string& app) {
    return [=](const Json& report) {
        const Json* configs =
            At(report, {"nodeCommonRegisterInfo", "appE2EConfig", "pubE2EConfigs"});
        const Json* subConfigs =
            At(report, {"nodeCommonRegisterInfo", "appE2EConfig", "subE2EConfigs"});
        const size_t count = (configs != nullptr ? configs->size() : 0) +
                             (subConfigs != nullptr ? subConfigs->size() : 0);
        return Is(report, {"kind"}, 3) && Is(report, {"nodeCommonRegisterInfo", "appName"}, app) &&
               count > 0;
    };
}

std::function<bool(const Json&)> LatencyReport(const std::string& app, int type) {
    return [=](const Json& report) {
        return Is(report, {"latencyInfo", "appName"}, app) &&
               Is(report, {"latencyInfo", "type"}, type);
    };
}

std::function<bool(const Json&)> SampleTimeoutReport(uint32_t count) {
    return [=](const Json& report) {
        const Json* params = At(report, {"listenerParams"});
        if (params == nullptr || !params->is_array() || params->size() != 1) {
            return false;
        }
        return Is((*params)[0], {"value", "sampleTimeoutCount"}, count);
    };
}

}  // namespace orx::test::plugin
