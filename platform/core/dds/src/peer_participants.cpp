#include "peer_participants.h"

#include <cstring>
#include <sstream>
#include <utility>
#include <vector>

namespace vorx {
namespace driver {
namespace dds {

namespace {

constexpr const char* kMagic = "vorx-peer";
constexpr uint32_t kTakeBatch = 32;

ParticipantGuid GuidOf(const dds_guid_t& guid) {
    ParticipantGuid out{};
    std::memcpy(out.data(), guid.v, out.size());
    return out;
}

bool ParseUnsigned(const std::string& text, uint64_t& out) {
    if (text.empty() || text.size() > 20) {
        return false;
    }
    uint64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') {
            return false;
        }
        value = value * 10 + static_cast<uint64_t>(c - '0');
    }
    out = value;
    return true;
}

}  // namespace

std::string EncodePeerUserData(const vcc::ProcessIdentity& process) {
    std::ostringstream text;
    text << kMagic << "\nhost=" << process.hostName << "\nhostid=" << process.hostId
         << "\npid=" << process.pid << "\nstart=" << process.startTicks;
    return text.str();
}

std::optional<vcc::ProcessIdentity> DecodePeerUserData(const void* data, size_t size) {
    if (data == nullptr || size == 0 || size > 4096) {
        return std::nullopt;
    }
    std::istringstream text(std::string(static_cast<const char*>(data), size));
    std::string line;
    if (!std::getline(text, line) || line != kMagic) {
        return std::nullopt;
    }
    vcc::ProcessIdentity process;
    bool hasPid = false;
    while (std::getline(text, line)) {
        const auto equals = line.find('=');
        if (equals == std::string::npos) {
            continue;
        }
        const std::string name = line.substr(0, equals);
        const std::string value = line.substr(equals + 1);
        uint64_t number = 0;
        if (name == "host") {
            process.hostName = value;
        } else if (name == "hostid") {
            process.hostId = value;
        } else if (name == "pid" && ParseUnsigned(value, number) && number <= 0x7FFFFFFF) {
            process.pid = static_cast<int32_t>(number);
            hasPid = true;
        } else if (name == "start" && ParseUnsigned(value, number)) {
            process.startTicks = number;
        }
    }
    if (!hasPid) {
        return std::nullopt;
    }
    return process;
}

PeerParticipants::PeerParticipants(std::shared_ptr<Participant> participant, DispatchThread* thread)
    : participant_(std::move(participant)), thread_(thread) {}

PeerParticipants::~PeerParticipants() {
    Stop();
}

DdsStatus PeerParticipants::Start() {
    const dds_entity_t reader = dds_create_reader(
        participant_->Handle(), DDS_BUILTIN_TOPIC_DCPSPARTICIPANT, nullptr, nullptr);
    if (reader < 0) {
        return TranslateReturnCode(reader, "create the built-in participant reader");
    }
    {
        orx::sync::MutexLock lock(mutex_);
        reader_ = reader;
    }
    DdsStatus status;
    const uint64_t token = thread_->Watch(
        reader, [this] { OnParticipants(); }, &status);
    if (token == 0) {
        return status;
    }
    orx::sync::MutexLock lock(mutex_);
    token_ = token;
    return DdsStatus::Ok();
}

void PeerParticipants::Stop() {
    uint64_t token = 0;
    std::map<uint64_t, Watcher> watchers;
    {
        orx::sync::MutexLock lock(mutex_);
        std::swap(token, token_);
        watchers.swap(watchers_);
    }
    if (token != 0) {
        thread_->Unwatch(token);
    }
    for (auto& [id, watcher] : watchers) {
        watcher.alive->Close();
        watcher.lost->Close();
    }
}

uint64_t PeerParticipants::Watch(AliveHandler onAlive, LostHandler onLost) {
    Watcher watcher{std::make_shared<CallbackSlot<AliveHandler>>(std::move(onAlive)),
                    std::make_shared<CallbackSlot<LostHandler>>(std::move(onLost))};
    uint64_t id = 0;
    {
        orx::sync::MutexLock lock(mutex_);
        id = nextWatch_++;
        watchers_.emplace(id, watcher);
    }
    // The peers known now are reported on the discovery thread, in order with later changes.
    thread_->Post([this, alive = watcher.alive] {
        std::vector<std::pair<ParticipantGuid, vcc::ProcessIdentity>> known;
        {
            orx::sync::MutexLock lock(mutex_);
            known.assign(alive_.begin(), alive_.end());
        }
        for (const auto& [guid, process] : known) {
            alive->Invoke(guid, process);
        }
    });
    return id;
}

void PeerParticipants::Unwatch(uint64_t watch) {
    Watcher watcher;
    {
        orx::sync::MutexLock lock(mutex_);
        const auto found = watchers_.find(watch);
        if (found == watchers_.end()) {
            return;
        }
        watcher = found->second;
        watchers_.erase(found);
    }
    watcher.alive->Close();
    watcher.lost->Close();
}

std::optional<vcc::ProcessIdentity> PeerParticipants::Find(const ParticipantGuid& guid) const {
    dds_entity_t reader = 0;
    {
        orx::sync::MutexLock lock(mutex_);
        const auto found = alive_.find(guid);
        if (found != alive_.end()) {
            return found->second;
        }
        reader = reader_;
    }
    if (reader <= 0) {
        return std::nullopt;
    }
    dds_builtintopic_participant_t key{};
    std::memcpy(key.key.v, guid.data(), guid.size());
    const dds_instance_handle_t instance = dds_lookup_instance(reader, &key);
    if (instance == DDS_HANDLE_NIL) {
        return std::nullopt;
    }
    void* samples[1] = {nullptr};
    dds_sample_info_t infos[1];
    const dds_return_t count = dds_read_instance(reader, samples, infos, 1, 1, instance);
    std::optional<vcc::ProcessIdentity> process;
    if (count > 0) {
        const auto* sample = static_cast<const dds_builtintopic_participant_t*>(samples[0]);
        void* data = nullptr;
        size_t size = 0;
        if (infos[0].valid_data && infos[0].instance_state == DDS_IST_ALIVE &&
            sample->qos != nullptr && dds_qget_userdata(sample->qos, &data, &size)) {
            process = DecodePeerUserData(data, size);
            dds_free(data);
        }
        dds_return_loan(reader, samples, count);
    }
    return process;
}

void PeerParticipants::OnParticipants() {
    dds_entity_t reader = 0;
    {
        orx::sync::MutexLock lock(mutex_);
        reader = reader_;
    }
    const ParticipantGuid& self = participant_->Guid();
    void* samples[kTakeBatch];
    dds_sample_info_t infos[kTakeBatch];
    for (;;) {
        std::memset(samples, 0, sizeof(samples));
        const dds_return_t count = dds_take(reader, samples, infos, kTakeBatch, kTakeBatch);
        if (count <= 0) {
            break;
        }
        for (dds_return_t i = 0; i < count; ++i) {
            const auto* sample = static_cast<const dds_builtintopic_participant_t*>(samples[i]);
            const dds_instance_handle_t instance = infos[i].instance_handle;
            std::optional<std::pair<ParticipantGuid, vcc::ProcessIdentity>> appeared;
            std::optional<ParticipantGuid> gone;
            if (infos[i].valid_data && infos[i].instance_state == DDS_IST_ALIVE) {
                const ParticipantGuid guid = GuidOf(sample->key);
                void* data = nullptr;
                size_t size = 0;
                std::optional<vcc::ProcessIdentity> process;
                if (guid != self && sample->qos != nullptr &&
                    dds_qget_userdata(sample->qos, &data, &size)) {
                    process = DecodePeerUserData(data, size);
                    dds_free(data);
                }
                if (!process) {
                    continue;
                }
                orx::sync::MutexLock lock(mutex_);
                handles_[instance] = guid;
                auto [entry, added] = alive_.emplace(guid, *process);
                if (added || entry->second != *process) {
                    entry->second = *process;
                    appeared.emplace(guid, *process);
                }
            } else if (infos[i].instance_state != DDS_IST_ALIVE) {
                orx::sync::MutexLock lock(mutex_);
                const auto handle = handles_.find(instance);
                if (handle != handles_.end() && alive_.erase(handle->second) > 0) {
                    gone = handle->second;
                }
            }
            if (!appeared && !gone) {
                continue;
            }
            std::vector<Watcher> watchers;
            {
                orx::sync::MutexLock lock(mutex_);
                for (const auto& [id, watcher] : watchers_) {
                    watchers.push_back(watcher);
                }
            }
            for (const Watcher& watcher : watchers) {
                if (appeared) {
                    watcher.alive->Invoke(appeared->first, appeared->second);
                } else {
                    watcher.lost->Invoke(*gone);
                }
            }
        }
        dds_return_loan(reader, samples, count);
        if (count < static_cast<dds_return_t>(kTakeBatch)) {
            break;
        }
    }
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
