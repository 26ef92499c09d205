#include "key_check.h"

#include <map>
#include <set>
#include <vector>

#include "ara/kelda/common/orxConfigParser/nearest_word.h"
#include "config_log.h"

namespace ara::kelda::common::orxConfigParser::detail {
namespace {

// The keys read outside "services", by the object that holds them ("" is the top level). An
// object listed with "*" takes any key.
const std::map<std::string, std::vector<std::string>>& KnownKeys() {
    static const std::map<std::string, std::vector<std::string>> keys{
        {"", {"application", "dfx", "maintenance", "drivers", "services", "dds", "log"}},
        {"application", {"name", "logLevel", "logFile"}},
        {"dfx", {"pluginPath", "sampleTimeoutThresholdMs"}},
        {"maintenance", {"instanceId", "network", "resourceAttributes"}},
        {"maintenance.network", {"address", "flag"}},
        {"maintenance.resourceAttributes", {"*"}},
        {"drivers", {"proloc", "dds", "someip"}},
        {"services", {"*"}},
        {"dds",
         {"domainId", "networkInterface", "peers", "allowMulticast", "maxAutoParticipantIndex",
          "leaseDurationMs", "receiveBufferBytes"}},
        {"log", {"dlt", "dltAppId"}},
    };
    return keys;
}

std::string Join(const std::string& path, const std::string& key) {
    return path.empty() ? key : path + "." + key;
}

void CheckObject(const nlohmann::json& object, const std::string& path,
                 const std::string& filePath) {
    const auto known = KnownKeys().find(path);
    if (known == KnownKeys().end() || known->second == std::vector<std::string>{"*"}) {
        return;
    }
    for (const auto& [key, value] : object.items()) {
        const std::string full = Join(path, key);
        const auto& names = known->second;
        if (std::find(names.begin(), names.end(), key) == names.end()) {
            auto line = ConfigLog()->LogWarn();
            line << "[OrxConfigParser][Unknown key, ignored][file=" << filePath << ", key=" << full;
            const std::string hint = NearestWord(key, names);
            if (!hint.empty()) {
                line << ", didYouMean=" << Join(path, hint);
            }
            line << "]";
        } else if (value.is_object()) {
            CheckObject(value, full, filePath);
        }
    }
}

// Walks the document as it is written, before duplicates collapse, remembering the keys of each
// open object.
class DuplicateFinder : public nlohmann::json_sax<nlohmann::json> {
  public:
    explicit DuplicateFinder(const std::string& filePath) : filePath_(filePath) {}

    bool null() override { return Value(); }
    bool boolean(bool) override { return Value(); }
    bool number_integer(number_integer_t) override { return Value(); }
    bool number_unsigned(number_unsigned_t) override { return Value(); }
    bool number_float(number_float_t, const string_t&) override { return Value(); }
    bool string(string_t&) override { return Value(); }
    bool binary(binary_t&) override { return Value(); }
    bool start_object(std::size_t) override {
        open_.push_back({ChildPath(), true, {}, "", 0});
        return true;
    }
    bool key(string_t& name) override {
        Frame& frame = open_.back();
        frame.lastKey = name;
        if (!frame.keys.insert(name).second) {
            ConfigLog()->LogWarn() << "[OrxConfigParser][Duplicated key, the last value is "
                                      "used][file="
                                   << filePath_ << ", key=" << Join(frame.path, name) << "]";
        }
        return true;
    }
    bool end_object() override { return Close(); }
    bool start_array(std::size_t) override {
        open_.push_back({ChildPath(), false, {}, "", 0});
        return true;
    }
    bool end_array() override { return Close(); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
        return false;
    }

  private:
    struct Frame {
        std::string path;
        bool isObject;
        std::set<std::string> keys;
        std::string lastKey;
        size_t index;
    };

    std::string ChildPath() const {
        if (open_.empty()) {
            return "";
        }
        const Frame& frame = open_.back();
        return frame.isObject ? Join(frame.path, frame.lastKey)
                              : frame.path + "[" + std::to_string(frame.index) + "]";
    }
    bool Value() {
        if (!open_.empty() && !open_.back().isObject) {
            ++open_.back().index;
        }
        return true;
    }
    bool Close() {
        open_.pop_back();
        return Value();
    }

    const std::string& filePath_;
    std::vector<Frame> open_;
};

}  // namespace

void WarnDuplicateKeys(const std::string& content, const std::string& filePath) {
    DuplicateFinder finder(filePath);
    nlohmann::json::sax_parse(content, &finder);
}

void WarnUnknownKeys(const nlohmann::json& document, const std::string& filePath) {
    if (document.is_object()) {
        CheckObject(document, "", filePath);
    }
}

}  // namespace ara::kelda::common::orxConfigParser::detail
