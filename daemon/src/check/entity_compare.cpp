#include "check/entity_compare.h"

#include <string>

#include "check/rules.h"

namespace orx::maintaind::daemon::check {

namespace {

constexpr DriverType kCompared[] = {DriverType::DDS, DriverType::SOMEIP};

template <class Map>
std::string BindingNames(const Map& infos) {
    std::string names;
    for (const DriverType binding : kCompared) {
        if (infos.count(binding) != 0) {
            names += (names.empty() ? "" : ",") + std::string(ToString(binding));
        }
    }
    return names.empty() ? "none" : names;
}

// Calls compare(providerInfo, consumerInfo, binding) for each binding both maps hold; adds the
// mismatch warning when both hold some binding but none in common.
template <class Map, class Compare>
void ForEachCommonBinding(const Map& provider, const Map& consumer, FindingSink& sink,
                          Compare compare) {
    bool common = false;
    bool providerAny = false;
    bool consumerAny = false;
    for (const DriverType binding : kCompared) {
        const auto p = provider.find(binding);
        const auto c = consumer.find(binding);
        providerAny |= p != provider.end();
        consumerAny |= c != consumer.end();
        if (p != provider.end() && c != consumer.end()) {
            common = true;
            sink.Scope(ToString(binding), "");
            compare(p->second, c->second, binding);
        }
    }
    sink.Scope("", "");
    if (!common && providerAny && consumerAny) {
        sink.Add(Severity::kWarning, "binding.mismatch", "bindings", BindingNames(provider),
                 BindingNames(consumer),
                 "the two sides use different bindings: they never communicate");
    }
}

const E2EConfigInfo& EventE2E(const EventSide& side, const EventInfo& info, DriverType binding) {
    const bool dds = binding == DriverType::DDS;
    const E2EConfigInfo& own = dds ? info.ddsEventInfo.e2eConfig : info.someipEventInfo.e2eConfig;
    if (side.reportedE2E == nullptr) {
        return own;
    }
    const uint16_t serviceId = dds ? info.ddsEventInfo.serviceId : info.someipEventInfo.serviceId;
    const uint16_t instanceId =
        dds ? info.ddsEventInfo.instanceId : info.someipEventInfo.instanceId;
    for (const tools::E2EEntry& entry : *side.reportedE2E) {
        const EventE2EConfigInfo& config = entry.config;
        const bool sameEvent = config.eventName == side.record.eventName ||
                               (!dds && config.eventId == info.someipEventInfo.eventId);
        if (config.driverType == binding && config.isPub == side.isPub &&
            config.serviceId == serviceId && config.instanceId == instanceId && sameEvent) {
            return config.e2eConfig;
        }
    }
    return own;
}

void CompareMethodInfos(const MethodInfo& provider, const MethodInfo& consumer, DriverType binding,
                        FindingSink& sink) {
    if (binding == DriverType::DDS) {
        CompareDdsMethods(provider.ddsMethodInfo, consumer.ddsMethodInfo, sink);
        CompareE2E(provider.ddsMethodInfo.e2eConfig, consumer.ddsMethodInfo.e2eConfig, sink);
    } else {
        CompareSomeipMethods(provider.someipMethodInfo, consumer.someipMethodInfo, sink);
        CompareE2E(provider.someipMethodInfo.e2eConfig, consumer.someipMethodInfo.e2eConfig, sink);
    }
}

}  // namespace

void CompareEventRecords(const EventSide& provider, const EventSide& consumer, FindingSink& sink) {
    CompareSerializeConfigs("serializeConfig", provider.record.serializeConfig,
                            consumer.record.serializeConfig, sink);
    ForEachCommonBinding(provider.record.eventInfos, consumer.record.eventInfos, sink,
                         [&](const EventInfo& p, const EventInfo& c, DriverType binding) {
                             if (binding == DriverType::DDS) {
                                 CompareDdsEvents(p.ddsEventInfo, c.ddsEventInfo, sink);
                             } else {
                                 CompareSomeipEvents(p.someipEventInfo, c.someipEventInfo, sink);
                             }
                             CompareE2E(EventE2E(provider, p, binding),
                                        EventE2E(consumer, c, binding), sink);
                         });
}

void CompareMethodRecords(const MethodRegisterInfo& provider, const MethodRegisterInfo& consumer,
                          FindingSink& sink) {
    CompareSerializeConfigs("requestSerializeConfig", provider.requestSerializeConfig,
                            consumer.requestSerializeConfig, sink);
    CompareSerializeConfigs("replySerializeConfig", provider.replySerializeConfig,
                            consumer.replySerializeConfig, sink);
    ForEachCommonBinding(provider.methodInfos, consumer.methodInfos, sink,
                         [&](const MethodInfo& p, const MethodInfo& c, DriverType binding) {
                             CompareMethodInfos(p, c, binding, sink);
                         });
}

void CompareFieldRecords(const FieldRegisterInfo& provider, const FieldRegisterInfo& consumer,
                         FindingSink& sink) {
    ForEachCommonBinding(
        provider.fieldInfos, consumer.fieldInfos, sink,
        [&](const FieldInfo& p, const FieldInfo& c, DriverType binding) {
            const char* name = ToString(binding);
            if (provider.hasNotifier && consumer.hasNotifier) {
                sink.Scope(name, "notifier.");
                const EventInfo& pn = p.notifierInfo;
                const EventInfo& cn = c.notifierInfo;
                if (binding == DriverType::DDS) {
                    CompareDdsEvents(pn.ddsEventInfo, cn.ddsEventInfo, sink);
                    CompareE2E(pn.ddsEventInfo.e2eConfig, cn.ddsEventInfo.e2eConfig, sink);
                } else {
                    CompareSomeipEvents(pn.someipEventInfo, cn.someipEventInfo, sink);
                    CompareE2E(pn.someipEventInfo.e2eConfig, cn.someipEventInfo.e2eConfig, sink);
                }
            }
            if (provider.hasGetter && consumer.hasGetter) {
                sink.Scope(name, "getter.");
                CompareMethodInfos(p.getterInfo, c.getterInfo, binding, sink);
            }
            if (provider.hasSetter && consumer.hasSetter) {
                sink.Scope(name, "setter.");
                CompareMethodInfos(p.setterInfo, c.setterInfo, binding, sink);
            }
        });
}

}  // namespace orx::maintaind::daemon::check
