#ifndef ARA_KELDA_COMMON_ORXCONFIGPARSER_CONFIG_READER_H
#define ARA_KELDA_COMMON_ORXCONFIGPARSER_CONFIG_READER_H

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

#include <nlohmann/json.hpp>

#include "ara/kelda/common/orxConfigParser/export.h"

namespace ara::kelda::common::orxConfigParser {

// Loads a configuration file. Returns the parsed JSON object; returns {} when the file is
// missing (one debug line) or cannot be read, is not valid JSON, or does not hold an object
// (one error line on the "CM" logger naming the file, with line and column for a syntax error).
// Never throws.
ORX_CONFIG_EXPORT nlohmann::json LoadConfigDocument(const std::string& filePath);

// Typed reads from a loaded orx.json by dotted key ("maintenance.network.address"), with the
// file's error rules: an absent key or JSON null gives std::nullopt silently; a value of the
// wrong type or out of range, or an enclosing section that is not an object, gives one error line
// on the "CM" logger naming the file and the key, and std::nullopt. Each bad key is reported
// once per reader. For sections added later ("services", "dds") as much as for the built-in
// keys.
//
// The document must outlive the reader. One reader belongs to one thread.
class ORX_CONFIG_EXPORT ConfigReader {
  public:
    ConfigReader(const nlohmann::json& document, std::string filePath);

    // The value at `key`, or null when absent, JSON null or under a section that is not an
    // object.
    const nlohmann::json* Find(const std::string& key);
    std::optional<std::string> GetString(const std::string& key);
    std::optional<bool> GetBool(const std::string& key);
    // An integer from 0 to 4294967295.
    std::optional<uint32_t> GetUint32(const std::string& key);
    // An object whose members are all texts; members of another type are reported (as
    // "key.member") and left out.
    std::optional<std::map<std::string, std::string>> GetStringMap(const std::string& key);

    // Writes the error line for a bad value at `key`, unless this reader reported that key
    // already. `value` may be null.
    void ReportInvalid(const std::string& key, const nlohmann::json* value,
                       const std::string& reason);
    const std::string& FilePath() const;

  private:
    const nlohmann::json& document_;
    std::string filePath_;
    std::set<std::string> reported_;
};

}  // namespace ara::kelda::common::orxConfigParser

#endif  // ARA_KELDA_COMMON_ORXCONFIGPARSER_CONFIG_READER_H
