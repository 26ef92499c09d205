#include "peer_topics.h"

#include <cstring>
#include <vector>

#include "OrxDdsWire.h"
#include "orx/sync/mutex.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {

constexpr uint32_t kTakeBatch = 32;
constexpr const char* kRequestPrefix = "vorx-request:";
constexpr const char* kEventPrefix = "vorx-event:";

// Parses "<a>" or "<a>:<b>" of unsigned decimals; false for anything else.
bool ParseNumbers(const std::string& text, uint64_t* first, uint64_t* second, bool wantSecond) {
    size_t pos = 0;
    auto number = [&](uint64_t* out) {
        if (pos >= text.size() || text[pos] < '0' || text[pos] > '9') {
            return false;
        }
        uint64_t value = 0;
        while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') {
            value = value * 10 + static_cast<uint64_t>(text[pos] - '0');
            if (value > 0xFFFFFFFFull) {
                return false;
            }
            ++pos;
        }
        *out = value;
        return true;
    };
    if (!number(first)) {
        return false;
    }
    if (wantSecond) {
        if (pos >= text.size() || text[pos] != ':') {
            return false;
        }
        ++pos;
        if (!number(second)) {
            return false;
        }
    }
    return pos == text.size();
}

}  // namespace

std::string PeerTopics::RequestTag(uint16_t serviceId) {
    return kRequestPrefix + std::to_string(serviceId);
}

std::string PeerTopics::EventTag(uint16_t serviceId, uint32_t entityId) {
    return kEventPrefix + std::to_string(serviceId) + ":" + std::to_string(entityId);
}

PeerTopics::PeerTopics(std::shared_ptr<Participant> participant, DispatchThread* thread,
                       TopicHandler onRequestTopic, TopicHandler onEventTopic)
    : participant_(std::move(participant)),
      thread_(thread),
      onRequestTopic_(std::move(onRequestTopic)),
      onEventTopic_(std::move(onEventTopic)) {}

PeerTopics::~PeerTopics() {
    Stop();
}

DdsStatus PeerTopics::Start() {
    const dds_entity_t publications = dds_create_reader(
        participant_->Handle(), DDS_BUILTIN_TOPIC_DCPSPUBLICATION, nullptr, nullptr);
    if (publications < 0) {
        return TranslateReturnCode(publications, "create the built-in publication reader");
    }
    const dds_entity_t subscriptions = dds_create_reader(
        participant_->Handle(), DDS_BUILTIN_TOPIC_DCPSSUBSCRIPTION, nullptr, nullptr);
    if (subscriptions < 0) {
        dds_delete(publications);
        return TranslateReturnCode(subscriptions, "create the built-in subscription reader");
    }
    {
        orx::sync::MutexLock lock(mutex_);
        publications_ = publications;
        subscriptions_ = subscriptions;
    }
    DdsStatus status;
    const uint64_t first = thread_->Watch(
        publications, [this] { OnPublications(); }, &status);
    if (first == 0) {
        return status;
    }
    const uint64_t second = thread_->Watch(
        subscriptions, [this] { OnSubscriptions(); }, &status);
    orx::sync::MutexLock lock(mutex_);
    tokens_.push_back(first);
    if (second == 0) {
        return status;
    }
    tokens_.push_back(second);
    return DdsStatus::Ok();
}

void PeerTopics::Stop() {
    std::vector<uint64_t> tokens;
    {
        orx::sync::MutexLock lock(mutex_);
        tokens.swap(tokens_);
    }
    for (const uint64_t token : tokens) {
        thread_->Unwatch(token);
    }
}

std::set<std::string> PeerTopics::RequestTopics(uint16_t serviceId) const {
    orx::sync::MutexLock lock(mutex_);
    auto found = requestTopics_.find(serviceId);
    return found == requestTopics_.end() ? std::set<std::string>() : found->second;
}

std::set<std::string> PeerTopics::EventTopics(uint16_t serviceId, uint32_t entityId) const {
    orx::sync::MutexLock lock(mutex_);
    auto found = eventTopics_.find({serviceId, entityId});
    return found == eventTopics_.end() ? std::set<std::string>() : found->second;
}

std::set<std::string> PeerTopics::EventTopics(uint16_t serviceId) const {
    orx::sync::MutexLock lock(mutex_);
    std::set<std::string> topics;
    for (const auto& entry : eventTopics_) {
        if (entry.first.first == serviceId) {
            topics.insert(entry.second.begin(), entry.second.end());
        }
    }
    return topics;
}

std::vector<std::pair<std::string, std::string>> PeerTopics::TakeTagged(dds_entity_t reader) {
    std::vector<std::pair<std::string, std::string>> tagged;
    const char* frameType = vorx_driver_dds_wire_Frame_desc.m_typename;
    void* samples[kTakeBatch];
    dds_sample_info_t infos[kTakeBatch];
    for (;;) {
        std::memset(samples, 0, sizeof(samples));
        const dds_return_t count = dds_take(reader, samples, infos, kTakeBatch, kTakeBatch);
        if (count <= 0) {
            break;
        }
        for (dds_return_t i = 0; i < count; ++i) {
            if (!infos[i].valid_data || infos[i].instance_state != DDS_IST_ALIVE) {
                continue;
            }
            const auto* endpoint = static_cast<const dds_builtintopic_endpoint_t*>(samples[i]);
            if (endpoint->type_name == nullptr || endpoint->topic_name == nullptr ||
                std::strcmp(endpoint->type_name, frameType) != 0 || endpoint->qos == nullptr) {
                continue;
            }
            void* data = nullptr;
            size_t size = 0;
            if (!dds_qget_userdata(endpoint->qos, &data, &size) || data == nullptr) {
                continue;
            }
            tagged.emplace_back(endpoint->topic_name,
                                std::string(static_cast<const char*>(data), size));
            dds_free(data);
        }
        dds_return_loan(reader, samples, count);
        if (count < static_cast<dds_return_t>(kTakeBatch)) {
            break;
        }
    }
    return tagged;
}

void PeerTopics::OnPublications() {
    dds_entity_t reader = 0;
    {
        orx::sync::MutexLock lock(mutex_);
        reader = publications_;
    }
    const size_t prefixLength = std::strlen(kRequestPrefix);
    for (const auto& [topic, tag] : TakeTagged(reader)) {
        if (tag.compare(0, prefixLength, kRequestPrefix) != 0) {
            continue;
        }
        uint64_t serviceId = 0;
        if (!ParseNumbers(tag.substr(prefixLength), &serviceId, nullptr, false) ||
            serviceId > 0xFFFF) {
            continue;
        }
        bool added = false;
        {
            orx::sync::MutexLock lock(mutex_);
            added = requestTopics_[static_cast<uint16_t>(serviceId)].insert(topic).second;
        }
        if (added && onRequestTopic_) {
            onRequestTopic_(static_cast<uint16_t>(serviceId), topic);
        }
    }
}

void PeerTopics::OnSubscriptions() {
    dds_entity_t reader = 0;
    {
        orx::sync::MutexLock lock(mutex_);
        reader = subscriptions_;
    }
    const size_t prefixLength = std::strlen(kEventPrefix);
    for (const auto& [topic, tag] : TakeTagged(reader)) {
        if (tag.compare(0, prefixLength, kEventPrefix) != 0) {
            continue;
        }
        uint64_t serviceId = 0;
        uint64_t entityId = 0;
        if (!ParseNumbers(tag.substr(prefixLength), &serviceId, &entityId, true) ||
            serviceId > 0xFFFF) {
            continue;
        }
        bool added = false;
        {
            orx::sync::MutexLock lock(mutex_);
            added =
                eventTopics_[{static_cast<uint16_t>(serviceId), static_cast<uint32_t>(entityId)}]
                    .insert(topic)
                    .second;
        }
        if (added && onEventTopic_) {
            onEventTopic_(static_cast<uint16_t>(serviceId), topic);
        }
    }
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
