#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "ara/kelda/common/orxConfigParser/config_reader.h"
#include "config_log.h"
#include "orx_json_keys.h"

namespace ara::kelda::common::orxConfigParser {
namespace {

constexpr const char* kConfigVariable = "ORX_CONFIG";
constexpr const char* kDefaultConfigFile = "./orx.json";

// Reports whatever escaped the careful reads below; the values read so far stay.
void ReportUnexpected(const std::string& filePath, const char* what) {
    detail::ConfigLog()->LogError() << "[OrxConfigParser][Unexpected failure while reading config "
                                       "file, the rest is not configured][file="
                                    << filePath << ", reason=" << what << "]";
}

// A file that ORX_CONFIG names and that does not exist is a mistake worth one line; the default
// file is optional.
void WarnWhenNamedFileMissing(const std::string& filePath) {
    const char* named = std::getenv(kConfigVariable);
    if (named == nullptr || filePath != named || ::access(filePath.c_str(), F_OK) == 0 ||
        errno != ENOENT) {
        return;
    }
    detail::ConfigLog()->LogWarn()
        << "[OrxConfigParser][Config file does not exist, nothing configured][file=" << filePath
        << ", from=environment variable " << kConfigVariable << "]";
}

}  // namespace

bool IsInstanceId(const std::string& text) {
    if (text.empty() || text.size() > 5) {
        return false;
    }
    uint32_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') {
            return false;
        }
        value = value * 10 + static_cast<uint32_t>(c - '0');
    }
    return value <= 65535;
}

std::string ConfigFilePath() {
    const char* path = std::getenv(kConfigVariable);
    return path != nullptr && *path != '\0' ? std::string(path) : std::string(kDefaultConfigFile);
}

OrxConfigParser::OrxConfigParser() : OrxConfigParser(ConfigFilePath()) {}

OrxConfigParser::OrxConfigParser(const std::string& filePath) {
    try {
        const nlohmann::json document = LoadConfigDocument(filePath);
        ConfigReader reader(document, filePath);
        snapshot_.timeoutThreshold = reader.GetUint32(keys::kSampleTimeoutThreshold).value_or(0);
    } catch (const std::exception& e) {
        ReportUnexpected(filePath, e.what());
    } catch (...) {
        ReportUnexpected(filePath, "unknown");
    }
}

SnapshotConfig OrxConfigParser::GetSnapshotConfig() const {
    return snapshot_;
}

std::shared_ptr<ParseJsonToGetConfig> ParseJsonToGetConfig::GetInstance() {
    static const std::shared_ptr<ParseJsonToGetConfig> instance =
        std::make_shared<ParseJsonToGetConfig>(ConfigFilePath());
    return instance;
}

ParseJsonToGetConfig::ParseJsonToGetConfig(const std::string& filePath)
    : filePath_(filePath), document_(nlohmann::json::object()), network_("", false) {
    ConfigReader reader(document_, filePath_);
    try {
        document_ = LoadConfigDocument(filePath_, &reader.Problems(), true);
        WarnWhenNamedFileMissing(filePath_);
        if (const nlohmann::json* id = reader.Find(keys::kInstanceId)) {
            // Instance ids are decimal texts; a plain non-negative number is accepted as its
            // digits. Anything else would make the process look for the daemon elsewhere.
            uint64_t number = 0;
            std::string text;
            if (AsUnsigned(*id, number)) {
                text = std::to_string(number);
            } else if (id->is_string()) {
                text = id->get<std::string>();
            }
            if (IsInstanceId(text)) {
                instanceId_ = text;
            } else {
                reader.ReportInvalid(keys::kInstanceId, id, kInstanceIdRange);
            }
        }
        const std::string address = reader.GetString(keys::kNetworkAddress).value_or("");
        const bool flag = reader.GetBool(keys::kNetworkFlag).value_or(false);
        if (!address.empty()) {
            network_ = {address, flag};
        }
        resourceAttr_ = reader.GetStringMap(keys::kResourceAttributes)
                            .value_or(std::map<std::string, std::string>{});
    } catch (const std::exception& e) {
        ReportUnexpected(filePath_, e.what());
    } catch (...) {
        ReportUnexpected(filePath_, "unknown");
    }
    problems_ = reader.Problems().Problems();
}

std::string ParseJsonToGetConfig::GetInstanceId() const {
    return instanceId_;
}

std::pair<std::string, bool> ParseJsonToGetConfig::GetNetworkIp() const {
    return network_;
}

std::map<std::string, std::string> ParseJsonToGetConfig::GetResourceAttr() const {
    return resourceAttr_;
}

const nlohmann::json& ParseJsonToGetConfig::Document() const {
    return document_;
}

const std::string& ParseJsonToGetConfig::FilePath() const {
    return filePath_;
}

const std::vector<SettingProblem>& ParseJsonToGetConfig::Problems() const {
    return problems_;
}

}  // namespace ara::kelda::common::orxConfigParser
