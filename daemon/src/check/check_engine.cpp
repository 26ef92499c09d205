#include "check/check_engine.h"

#include <algorithm>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "check/entity_compare.h"
#include "check/finding_sink.h"
#include "orx/maintaind/tools/method_ids.h"

namespace orx::maintaind::daemon::check {

namespace {

// A consumer that asks for any instance finds every instance's provider.
constexpr uint16_t kAnyInstance = 0xFFFFU;

enum class Kind : uint8_t { kEvent, kMethod, kField };

const char* KindName(Kind kind) {
    switch (kind) {
        case Kind::kEvent:
            return tools::kKindEvent;
        case Kind::kMethod:
            return tools::kKindMethod;
        case Kind::kField:
            return tools::kKindField;
    }
    return tools::kKindEvent;
}

// One online registration, pointing into the registry state.
struct Side {
    const tools::EventEntry* event = nullptr;
    const tools::MethodEntry* method = nullptr;
    const tools::FieldEntry* field = nullptr;
    const NodeState* node = nullptr;
    const std::vector<tools::E2EEntry>* e2e = nullptr;
    const String* appName = nullptr;
    int32_t pid = 0;
    uint16_t instanceId = 0;
    const String* serviceName = nullptr;
};

struct Group {
    std::vector<Side> providers;
    std::vector<Side> consumers;
};

using GroupKey = std::tuple<Kind, uint16_t, std::string>;  // kind, service id, entity name

class Collector {
  public:
    explicit Collector(const RegistryState& state) : state_(state) {}

    template <class Entry>
    void Add(Kind kind, const std::map<EntityKey, Entry>& map, const String Entry::*name) {
        for (const auto& [key, entry] : map) {
            if (!entry.online) {
                continue;
            }
            const auto node = state_.nodes.find(NodeKey{key.appName, key.pid, key.host});
            if (node == state_.nodes.end() || !node->second.entry.online) {
                continue;
            }
            Side side;
            Set(side, entry);
            side.node = &node->second;
            const auto e2e = state_.e2e.find(node->first);
            side.e2e = e2e == state_.e2e.end() ? nullptr : &e2e->second.configs;
            side.appName = &entry.appName;
            side.pid = entry.pid;
            side.instanceId = entry.instanceId;
            side.serviceName = &entry.serviceName;
            Group& group = groups[GroupKey{kind, entry.serviceId, entry.*name}];
            (entry.isPub ? group.providers : group.consumers).push_back(side);
            ++entities;
        }
    }

    std::map<GroupKey, Group> groups;
    uint32_t entities = 0;

  private:
    static void Set(Side& side, const tools::EventEntry& entry) { side.event = &entry; }
    static void Set(Side& side, const tools::MethodEntry& entry) { side.method = &entry; }
    static void Set(Side& side, const tools::FieldEntry& entry) { side.field = &entry; }

    const RegistryState& state_;
};

tools::CheckParty PartyOf(const Side& side) {
    tools::CheckParty party;
    party.appName = *side.appName;
    party.pid = side.pid;
    party.host = side.node->entry.host;
    return party;
}

bool SameInstance(uint16_t provider, uint16_t consumer) {
    return provider == consumer || provider == kAnyInstance || consumer == kAnyInstance;
}

void Compare(const Side& provider, const Side& consumer, FindingSink& sink) {
    if (provider.event != nullptr) {
        CompareEventRecords({provider.event->record, true, provider.e2e},
                            {consumer.event->record, false, consumer.e2e}, sink);
    } else if (provider.method != nullptr) {
        CompareMethodRecords(provider.method->record, consumer.method->record, sink);
    } else {
        CompareFieldRecords(provider.field->record, consumer.field->record, sink);
    }
}

bool Selected(const tools::QueryFilter& filter, const tools::CheckFinding& finding) {
    const auto party = [&](const tools::CheckParty& side) {
        return side.appName == filter.appName && (filter.pid == 0 || side.pid == filter.pid);
    };
    if (!filter.appName.empty() && !party(finding.provider) && !party(finding.consumer)) {
        return false;
    }
    if (filter.appName.empty() && filter.pid != 0 && finding.provider.pid != filter.pid &&
        finding.consumer.pid != filter.pid) {
        return false;
    }
    return (!filter.hasServiceId || finding.serviceId == filter.serviceId) &&
           (!filter.hasInstanceId || finding.instanceId == filter.instanceId) &&
           (filter.serviceName.empty() || finding.serviceName == filter.serviceName);
}

int SeverityRank(const String& severity) {
    if (severity == tools::kSeverityError) {
        return 0;
    }
    return severity == tools::kSeverityWarning ? 1 : 2;
}

bool Before(const tools::CheckFinding& a, const tools::CheckFinding& b) {
    return std::forward_as_tuple(a.serviceId, a.instanceId, a.entityName, a.kind,
                                 SeverityRank(a.severity), a.check, a.provider.appName,
                                 a.provider.pid, a.consumer.appName, a.consumer.pid, a.member) <
           std::forward_as_tuple(b.serviceId, b.instanceId, b.entityName, b.kind,
                                 SeverityRank(b.severity), b.check, b.provider.appName,
                                 b.provider.pid, b.consumer.appName, b.consumer.pid, b.member);
}

}  // namespace

tools::CheckReply CheckEngine::Check(const RegistryState& state,
                                     const tools::CheckRequest& request) const {
    Collector collector(state);
    collector.Add(Kind::kEvent, state.events, &tools::EventEntry::eventName);
    collector.Add(Kind::kMethod, state.methods, &tools::MethodEntry::methodName);
    collector.Add(Kind::kField, state.fields, &tools::FieldEntry::fieldName);

    tools::CheckReply reply;
    reply.code = static_cast<uint8_t>(tools::ToolsCode::OK);
    reply.entities = collector.entities;
    std::vector<tools::CheckFinding> found;
    for (const auto& [key, group] : collector.groups) {
        tools::CheckFinding base;
        base.serviceId = std::get<1>(key);
        base.entityName = std::get<2>(key);
        base.kind = KindName(std::get<0>(key));
        std::vector<bool> providerUsed(group.providers.size(), false);
        for (const Side& consumer : group.consumers) {
            bool served = false;
            for (size_t i = 0; i < group.providers.size(); ++i) {
                const Side& provider = group.providers[i];
                if (!SameInstance(provider.instanceId, consumer.instanceId)) {
                    continue;
                }
                served = true;
                providerUsed[i] = true;
                ++reply.pairs;
                base.instanceId = provider.instanceId;
                base.serviceName = *provider.serviceName;
                base.provider = PartyOf(provider);
                base.consumer = PartyOf(consumer);
                FindingSink sink(base, found);
                Compare(provider, consumer, sink);
            }
            if (!served) {
                base.instanceId = consumer.instanceId;
                base.serviceName = *consumer.serviceName;
                base.provider = tools::CheckParty{};
                base.consumer = PartyOf(consumer);
                FindingSink sink(base, found);
                sink.Add(Severity::kError, "orphan.consumer", "provider", "none",
                         "instance " + std::to_string(consumer.instanceId),
                         "no running application offers it: the consumer receives nothing and "
                         "its calls fail");
            }
        }
        for (size_t i = 0; i < group.providers.size(); ++i) {
            if (providerUsed[i]) {
                continue;
            }
            const Side& provider = group.providers[i];
            base.instanceId = provider.instanceId;
            base.serviceName = *provider.serviceName;
            base.provider = PartyOf(provider);
            base.consumer = tools::CheckParty{};
            FindingSink sink(base, found);
            sink.Add(Severity::kInfo, "orphan.provider", "consumer",
                     "instance " + std::to_string(provider.instanceId), "none",
                     "no running application uses it: what it sends goes nowhere");
        }
    }

    const uint32_t cap =
        request.filter.maxEntries == 0 ? entryCap_ : std::min(entryCap_, request.filter.maxEntries);
    for (tools::CheckFinding& finding : found) {
        if (!Selected(request.filter, finding)) {
            continue;
        }
        ++reply.total;
        const int rank = SeverityRank(finding.severity);
        reply.errors += rank == 0 ? 1U : 0U;
        reply.warnings += rank == 1 ? 1U : 0U;
        reply.infos += rank == 2 ? 1U : 0U;
        reply.findings.push_back(std::move(finding));
    }
    std::sort(reply.findings.begin(), reply.findings.end(), Before);
    if (reply.findings.size() > cap) {
        reply.findings.resize(cap);
        reply.truncated = true;
    }
    return reply;
}

}  // namespace orx::maintaind::daemon::check
