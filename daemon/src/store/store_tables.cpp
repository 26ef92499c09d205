#include "store/store_tables.h"

#include "vorx/serialize/cdr.h"

namespace orx::maintaind::daemon {

namespace {

// The readable columns of a row.
struct RowLabel {
    std::string app;
    int64_t pid{};
    std::string name;
};

RowLabel LabelOf(const NodeKey& key, const NodeState&) {
    return {key.appName, key.pid, ""};
}

RowLabel LabelOf(const EntityKey& key, const tools::EventEntry&) {
    return {key.appName, key.pid, key.name};
}

RowLabel LabelOf(const EntityKey& key, const tools::MethodEntry&) {
    return {key.appName, key.pid, key.name};
}

RowLabel LabelOf(const EntityKey& key, const tools::FieldEntry&) {
    return {key.appName, key.pid, key.name};
}

RowLabel LabelOf(const NodeKey& key, const E2EState&) {
    return {key.appName, key.pid, ""};
}

RowLabel LabelOf(const LatencyKey&, const tools::LatencyStatusEntry& status) {
    return {"", 0, status.eventName};
}

RowLabel LabelOf(const LatencyHistoryKey& key, const LatencyHistory& history) {
    return {key.appName, 0, history.results.empty() ? "" : history.results.front().eventName};
}

RowLabel LabelOf(const ListenerKey& key, const tools::SampleTimeoutEntry& entry) {
    return {entry.appName, 0, key.listenerName};
}

template <class Map, class Keys>
StoreStatus SaveTable(const char* kind, const Map& map, const Keys& keys, RowWriter& writer) {
    for (const auto& key : keys) {
        auto it = map.find(key);
        StoreStatus status;
        if (it == map.end()) {
            status = writer.Erase(kind, vorx::serialize::Encode(key));
        } else {
            const RowLabel label = LabelOf(it->first, it->second);
            status = writer.Upsert(kind, vorx::serialize::Encode(key), label.app, label.pid,
                                   label.name, vorx::serialize::Encode(it->second));
        }
        if (!status.ok) {
            return status;
        }
    }
    return {};
}

template <class Map>
bool DecodeInto(const std::vector<uint8_t>& keyBytes, const std::vector<uint8_t>& valueBytes,
                Map& map) {
    typename Map::key_type key;
    typename Map::mapped_type value;
    if (!vorx::serialize::Decode(keyBytes, key).ok() ||
        !vorx::serialize::Decode(valueBytes, value).ok()) {
        return false;
    }
    map[std::move(key)] = std::move(value);
    return true;
}

constexpr const char* kNode = "node";
constexpr const char* kEvent = "event";
constexpr const char* kMethod = "method";
constexpr const char* kField = "field";
constexpr const char* kE2E = "e2e";
constexpr const char* kLatencyStatus = "latency_status";
constexpr const char* kLatencyResults = "latency_results";
constexpr const char* kSampleTimeout = "sample_timeout";

}  // namespace

StoreStatus RowWriter::Upsert(const char* kind, const std::vector<uint8_t>& key,
                              const std::string& app, int64_t pid, const std::string& name,
                              const std::vector<uint8_t>& value) {
    upsert.Reset();
    upsert.BindText(1, kind);
    upsert.BindBlob(2, key);
    upsert.BindText(3, app);
    upsert.BindInt64(4, pid);
    upsert.BindText(5, name);
    upsert.BindBlob(6, value);
    if (upsert.Next() != Statement::Step::kDone) {
        return StoreStatus::Error(db.Failure(std::string("cannot write ") + kind + " row"));
    }
    return {};
}

StoreStatus RowWriter::Erase(const char* kind, const std::vector<uint8_t>& key) {
    erase.Reset();
    erase.BindText(1, kind);
    erase.BindBlob(2, key);
    if (erase.Next() != Statement::Step::kDone) {
        return StoreStatus::Error(db.Failure(std::string("cannot delete ") + kind + " row"));
    }
    return {};
}

StoreStatus SaveChanges(const RegistryState& state, const ChangeSet& changes, RowWriter& writer) {
    StoreStatus status = SaveTable(kNode, state.nodes, changes.nodes, writer);
    if (status.ok) {
        status = SaveTable(kEvent, state.events, changes.events, writer);
    }
    if (status.ok) {
        status = SaveTable(kMethod, state.methods, changes.methods, writer);
    }
    if (status.ok) {
        status = SaveTable(kField, state.fields, changes.fields, writer);
    }
    if (status.ok) {
        status = SaveTable(kE2E, state.e2e, changes.e2e, writer);
    }
    if (status.ok) {
        status = SaveTable(kLatencyStatus, state.latencyStatuses, changes.latencyStatuses, writer);
    }
    if (status.ok) {
        status = SaveTable(kLatencyResults, state.latencyResults, changes.latencyResults, writer);
    }
    if (status.ok) {
        status = SaveTable(kSampleTimeout, state.sampleTimeouts, changes.sampleTimeouts, writer);
    }
    return status;
}

bool LoadRow(const std::string& kind, const std::vector<uint8_t>& key,
             const std::vector<uint8_t>& value, RegistryState& state) {
    if (kind == kNode) {
        return DecodeInto(key, value, state.nodes);
    }
    if (kind == kEvent) {
        return DecodeInto(key, value, state.events);
    }
    if (kind == kMethod) {
        return DecodeInto(key, value, state.methods);
    }
    if (kind == kField) {
        return DecodeInto(key, value, state.fields);
    }
    if (kind == kE2E) {
        return DecodeInto(key, value, state.e2e);
    }
    if (kind == kLatencyStatus) {
        return DecodeInto(key, value, state.latencyStatuses);
    }
    if (kind == kLatencyResults) {
        return DecodeInto(key, value, state.latencyResults);
    }
    if (kind == kSampleTimeout) {
        return DecodeInto(key, value, state.sampleTimeouts);
    }
    return false;
}

}  // namespace orx::maintaind::daemon
