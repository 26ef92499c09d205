#include "ara/kelda/common/orxConfigParser/orx_config_parser.h"

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

}  // namespace

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
        document_ = LoadConfigDocument(filePath_, &reader.Problems());
        if (const nlohmann::json* id = reader.Find(keys::kInstanceId)) {
            // Instance ids are texts; a plain non-negative number is accepted as its digits.
            if (id->is_string()) {
                instanceId_ = id->get<std::string>();
            } else if (id->is_number_unsigned()) {
                instanceId_ = std::to_string(id->get<uint64_t>());
            } else {
                reader.ReportInvalid(keys::kInstanceId, id, "must be a text");
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
