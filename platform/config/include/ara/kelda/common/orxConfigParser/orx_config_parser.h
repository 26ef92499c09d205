#ifndef ARA_KELDA_COMMON_ORXCONFIGPARSER_ORX_CONFIG_PARSER_H
#define ARA_KELDA_COMMON_ORXCONFIGPARSER_ORX_CONFIG_PARSER_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "ara/kelda/common/orxConfigParser/export.h"
#include "ara/kelda/common/orxConfigParser/setting.h"

// Readers of the application's configuration file orx.json (schema: docs/orx-json.md).
//
// Common rules of every reader here:
//   - A missing file means "not configured" everywhere: 0, empty texts, empty maps. When
//     ORX_CONFIG names the missing file, one warning line says so.
//   - A file that cannot be read, is not valid JSON or does not hold a JSON object gives one
//     error line on the "CM" logger (naming the file, and line and column for a syntax error)
//     and the whole file counts as not configured.
//   - A value of the wrong type or out of range gives one error line naming the file and the
//     key; that value alone counts as not configured. JSON null counts as absent.
//   - Nothing here throws or crashes on any file content.
namespace ara::kelda::common::orxConfigParser {

// The file every reader uses unless told another: $ORX_CONFIG when set and non-empty, else
// "./orx.json".
ORX_CONFIG_EXPORT std::string ConfigFilePath();

// True for an instance id of the maintenance services: a decimal number from 0 to 65535.
ORX_CONFIG_EXPORT bool IsInstanceId(const std::string& text);
inline constexpr const char* kInstanceIdRange = "must be a decimal number from 0 to 65535";

struct SnapshotConfig {
    uint32_t timeoutThreshold = 0;  // sample-timeout threshold in ms, 0 = not configured
};

// Reads the sample-timeout settings. A fresh parser reads the file each time one is made, so
// the current file content counts. Construction does file I/O; the getter is const and cheap.
class ORX_CONFIG_EXPORT OrxConfigParser {
  public:
    OrxConfigParser();  // reads ConfigFilePath()
    explicit OrxConfigParser(const std::string& filePath);

    SnapshotConfig GetSnapshotConfig() const;

  private:
    SnapshotConfig snapshot_;
};

// The process-wide view of orx.json: the file is read once, by the first GetInstance, and never
// again. It reads the maintenance service's keys itself ("maintenance.*"); the rest of the file
// is read from Document() by those it belongs to (the core's start-up settings, the service
// deployments), each key by one reader, so each problem is reported once. Every getter is const
// and safe from any thread.
class ORX_CONFIG_EXPORT ParseJsonToGetConfig {
  public:
    // The shared instance, reading ConfigFilePath() on first use. Lives until process exit
    // (and longer for those that keep a copy of the pointer).
    static std::shared_ptr<ParseJsonToGetConfig> GetInstance();

    // Reads `filePath` now. For tools and tests that need a specific file; the system uses
    // GetInstance.
    explicit ParseJsonToGetConfig(const std::string& filePath);

    // Instance id of the maintenance service, "" when absent.
    std::string GetInstanceId() const;
    // Network address of this node for the maintenance service and its flag; {"", false} when
    // no address is configured.
    std::pair<std::string, bool> GetNetworkIp() const;
    // Resource attributes of the maintenance service's entities; empty when absent.
    std::map<std::string, std::string> GetResourceAttr() const;
    // The whole parsed file, including the sections this class does not read ("application",
    // "dfx", "drivers", "services", "dds");
    // {} when the file is missing or unusable. Lives as long as this object.
    const nlohmann::json& Document() const;
    const std::string& FilePath() const;
    // The problems found in the file as a whole and in the keys read here, in the order found.
    const std::vector<SettingProblem>& Problems() const;

  private:
    std::string filePath_;
    nlohmann::json document_;
    std::string instanceId_;
    std::pair<std::string, bool> network_;
    std::map<std::string, std::string> resourceAttr_;
    std::vector<SettingProblem> problems_;
};

}  // namespace ara::kelda::common::orxConfigParser

#endif  // ARA_KELDA_COMMON_ORXCONFIGPARSER_ORX_CONFIG_PARSER_H
