#ifndef ORX_CONFIG_SRC_KEY_CHECK_H
#define ORX_CONFIG_SRC_KEY_CHECK_H

#include <string>

#include <nlohmann/json.hpp>

// Warnings about keys of orx.json that nobody reads: a misspelt key is otherwise silently
// "not configured", and a duplicated key silently takes its last value.
namespace ara::kelda::common::orxConfigParser::detail {

// One warning on the "CM" logger per key written twice in the same object of `content` (valid
// JSON): "[OrxConfigParser][Duplicated key, the last value is used][file=F, key=K]".
void WarnDuplicateKeys(const std::string& content, const std::string& filePath);

// One warning per key of `document` that no reader knows (the deployments under "services" and
// the free-form maps are not checked): "[OrxConfigParser][Unknown key, ignored][file=F, key=K]",
// with ", didYouMean=K2" when a known key is close.
void WarnUnknownKeys(const nlohmann::json& document, const std::string& filePath);

}  // namespace ara::kelda::common::orxConfigParser::detail

#endif  // ORX_CONFIG_SRC_KEY_CHECK_H
