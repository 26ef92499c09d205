#include "check/rules.h"

namespace orx::maintaind::daemon::check {

namespace {

constexpr const char* kMisread =
    "the two sides lay out the payload differently: the receiver cannot decode it or reads "
    "wrong values";

}  // namespace

void CompareSerializeConfigs(const std::string& member, const SerializeConfig& provider,
                             const SerializeConfig& consumer, FindingSink& sink) {
    if (provider.serializeType != consumer.serializeType ||
        provider.serializeConfigText != consumer.serializeConfigText) {
        sink.Add(Severity::kError, "serialization", member, ValueText(provider),
                 ValueText(consumer), kMisread);
    }
}

void CompareSerializeTags(const std::string& member, const std::vector<uint8_t>& provider,
                          const std::vector<uint8_t>& consumer, FindingSink& sink) {
    if (provider != consumer) {
        sink.Add(Severity::kError, "serialization", member, ValueText(provider),
                 ValueText(consumer), kMisread);
    }
}

}  // namespace orx::maintaind::daemon::check
