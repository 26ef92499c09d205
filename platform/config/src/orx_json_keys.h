#ifndef ORX_CONFIG_SRC_ORX_JSON_KEYS_H
#define ORX_CONFIG_SRC_ORX_JSON_KEYS_H

// The keys of orx.json read here, as dotted paths; docs/orx-json.md describes each.
namespace ara::kelda::common::orxConfigParser::keys {

inline constexpr const char* kSampleTimeoutThreshold = "dfx.sampleTimeoutThresholdMs";
inline constexpr const char* kInstanceId = "maintenance.instanceId";
inline constexpr const char* kNetworkAddress = "maintenance.network.address";
inline constexpr const char* kNetworkFlag = "maintenance.network.flag";
inline constexpr const char* kResourceAttributes = "maintenance.resourceAttributes";

}  // namespace ara::kelda::common::orxConfigParser::keys

#endif  // ORX_CONFIG_SRC_ORX_JSON_KEYS_H
