#include "frame_endpoint.h"

#include <algorithm>
#include <cstring>
#include <thread>

#include "wire_convert.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {

// How long a reliable write may block on a full history before it fails.
constexpr int64_t kMaxBlockingMs = 500;
constexpr uint32_t kTakeBatch = 64;
constexpr uint32_t kMinEventDepth = 256;

void SetTag(dds_qos_t* qos, const std::string& tag) {
    if (!tag.empty()) {
        dds_qset_userdata(qos, tag.data(), tag.size());
    }
}

dds_qos_t* ReaderQos(const EndpointQos& qos, const std::string& tag) {
    dds_qos_t* q = dds_create_qos();
    dds_qset_reliability(
        q, qos.reliableReader ? DDS_RELIABILITY_RELIABLE : DDS_RELIABILITY_BEST_EFFORT,
        DDS_MSECS(kMaxBlockingMs));
    dds_qset_durability(q, DDS_DURABILITY_VOLATILE);
    dds_qset_history(q, qos.keepAll ? DDS_HISTORY_KEEP_ALL : DDS_HISTORY_KEEP_LAST,
                     static_cast<int32_t>(qos.depth));
    SetTag(q, tag);
    return q;
}

dds_qos_t* WriterQos(const EndpointQos& qos, const std::string& tag) {
    dds_qos_t* q = dds_create_qos();
    dds_qset_reliability(q, DDS_RELIABILITY_RELIABLE, DDS_MSECS(kMaxBlockingMs));
    dds_qset_durability(q, DDS_DURABILITY_VOLATILE);
    dds_qset_history(q, qos.keepAll ? DDS_HISTORY_KEEP_ALL : DDS_HISTORY_KEEP_LAST,
                     static_cast<int32_t>(qos.depth));
    SetTag(q, tag);
    return q;
}

// True when `entity` (a writer, or a reader with writerSide false) has matched
// an endpoint of participant `peer`.
bool MatchedWith(dds_entity_t entity, bool writerSide, const ParticipantGuid& peer) {
    std::vector<dds_instance_handle_t> handles(16);
    auto list = [&] {
        return writerSide ? dds_get_matched_subscriptions(entity, handles.data(), handles.size())
                          : dds_get_matched_publications(entity, handles.data(), handles.size());
    };
    dds_return_t count = list();
    if (count > static_cast<dds_return_t>(handles.size())) {
        handles.resize(static_cast<size_t>(count));
        count = list();
    }
    for (dds_return_t i = 0; i < count && i < static_cast<dds_return_t>(handles.size()); ++i) {
        const dds_instance_handle_t handle = handles[static_cast<size_t>(i)];
        dds_builtintopic_endpoint_t* endpoint =
            writerSide ? dds_get_matched_subscription_data(entity, handle)
                       : dds_get_matched_publication_data(entity, handle);
        if (endpoint == nullptr) {
            continue;
        }
        const bool same = std::memcmp(endpoint->participant_key.v, peer.data(), peer.size()) == 0;
        dds_builtintopic_free_endpoint(endpoint);
        if (same) {
            return true;
        }
    }
    return false;
}

// Checks `done` with growing pauses until it holds or `wait` has passed.
template <class Check>
bool PollUntil(std::chrono::milliseconds wait, Check&& done) {
    const auto deadline = std::chrono::steady_clock::now() + wait;
    auto pause = std::chrono::microseconds(200);
    for (;;) {
        if (done()) {
            return true;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, std::chrono::microseconds(5000));
    }
}

size_t KindIndex(FrameKind kind) {
    const auto index = static_cast<size_t>(kind);
    return index < 3 ? index : 2;
}

}  // namespace

EndpointQos MethodEndpointQos() {
    EndpointQos qos;
    qos.keepAll = true;
    return qos;
}

EndpointQos EventEndpointQos(const EventTopic& topic) {
    EndpointQos qos;
    qos.keepAll = false;
    // Deep enough that samples written before a new subscriber knew the writer
    // are still there to be sent again when it asks.
    qos.depth = std::max<uint32_t>(topic.historyDepth, kMinEventDepth);
    qos.reliableReader = topic.reliable;
    return qos;
}

FrameEndpoint::FrameEndpoint(std::shared_ptr<Participant> participant, std::string topicName,
                             const EndpointQos& qos)
    : participant_(std::move(participant)), topicName_(std::move(topicName)), qos_(qos) {}

FrameEndpoint::~FrameEndpoint() {
    std::lock_guard<std::mutex> lock(mutex_);
    for (const dds_entity_t reader : readers_) {
        if (reader > 0) {
            dds_delete(reader);
        }
    }
    for (const dds_entity_t writer : writers_) {
        if (writer > 0) {
            dds_delete(writer);
        }
    }
}

dds_entity_t FrameEndpoint::Reader(ReaderRole role, const std::string& tag, DdsStatus* status) {
    std::lock_guard<std::mutex> lock(mutex_);
    dds_entity_t& slot = readers_[static_cast<size_t>(role)];
    if (slot > 0) {
        *status = DdsStatus::Ok();
        return slot;
    }
    const dds_entity_t topic = participant_->FrameTopic(topicName_, status);
    if (topic < 0) {
        return topic;
    }
    dds_qos_t* qos = ReaderQos(qos_, tag);
    const dds_entity_t reader = dds_create_reader(participant_->Handle(), topic, qos, nullptr);
    dds_delete_qos(qos);
    *status = TranslateReturnCode(reader, "create reader on topic \"" + topicName_ + "\"");
    if (reader > 0) {
        slot = reader;
    }
    return reader;
}

DdsStatus FrameEndpoint::PrepareWriter(FrameKind kind, const std::string& tag) {
    dds_entity_t writer = 0;
    return EnsureWriter(kind, tag, &writer);
}

DdsStatus FrameEndpoint::EnsureWriter(FrameKind kind, const std::string& tag,
                                      dds_entity_t* writer) {
    std::lock_guard<std::mutex> lock(mutex_);
    dds_entity_t& slot = writers_[KindIndex(kind)];
    if (slot > 0) {
        *writer = slot;
        return DdsStatus::Ok();
    }
    DdsStatus status;
    const dds_entity_t topic = participant_->FrameTopic(topicName_, &status);
    if (topic < 0) {
        return status;
    }
    dds_qos_t* qos = WriterQos(qos_, tag);
    const dds_entity_t created = dds_create_writer(participant_->Handle(), topic, qos, nullptr);
    dds_delete_qos(qos);
    if (created < 0) {
        return TranslateReturnCode(created, "create writer on topic \"" + topicName_ + "\"");
    }
    slot = created;
    *writer = created;
    return DdsStatus::Ok();
}

DdsStatus FrameEndpoint::WaitForPeer(FrameKind kind, dds_entity_t writer,
                                     const ParticipantGuid& peer,
                                     std::chrono::milliseconds matchWait) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (reached_.count({kind, peer}) != 0) {
            return DdsStatus::Ok();
        }
    }
    // Only the first message to a new peer waits here: discovery of the
    // peer's reader usually completes within milliseconds.
    if (!PollUntil(matchWait, [&] { return MatchedWith(writer, true, peer); })) {
        return DdsStatus(DdsErrc::kNoPeer, "write on topic \"" + topicName_ +
                                               "\": no reader of the peer matched within " +
                                               std::to_string(matchWait.count()) + " ms");
    }
    std::lock_guard<std::mutex> lock(mutex_);
    reached_.insert({kind, peer});
    return DdsStatus::Ok();
}

DdsStatus FrameEndpoint::Write(const Frame& frame, const std::string& tag,
                               const ParticipantGuid* peer, std::chrono::milliseconds matchWait) {
    dds_entity_t writer = 0;
    DdsStatus status = EnsureWriter(frame.kind, tag, &writer);
    if (!status.ok()) {
        return status;
    }
    if (peer != nullptr) {
        status = WaitForPeer(frame.kind, writer, *peer, matchWait);
        if (!status.ok()) {
            return status;
        }
    }
    vorx_driver_dds_wire_Frame wire;
    ViewAsWire(frame, &wire);
    const dds_return_t rc = dds_write(writer, &wire);
    if (rc < 0) {
        return TranslateReturnCode(rc, "write on topic \"" + topicName_ + "\"");
    }
    return DdsStatus::Ok();
}

bool FrameEndpoint::WaitForWriterOf(const ParticipantGuid& peer,
                                    std::chrono::milliseconds matchWait) {
    dds_entity_t reader = 0;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        reader = readers_[static_cast<size_t>(ReaderRole::kClient)];
    }
    return reader > 0 && PollUntil(matchWait, [&] { return MatchedWith(reader, false, peer); });
}

void FrameEndpoint::TakeAll(ReaderRole role, std::vector<Frame>* out) {
    dds_entity_t reader = 0;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        reader = readers_[static_cast<size_t>(role)];
    }
    if (reader <= 0) {
        return;
    }
    void* samples[kTakeBatch];
    dds_sample_info_t infos[kTakeBatch];
    for (;;) {
        std::memset(samples, 0, sizeof(samples));
        const dds_return_t count = dds_take(reader, samples, infos, kTakeBatch, kTakeBatch);
        if (count <= 0) {
            return;
        }
        for (dds_return_t i = 0; i < count; ++i) {
            if (infos[i].valid_data) {
                out->push_back(
                    FromWire(*static_cast<const vorx_driver_dds_wire_Frame*>(samples[i])));
            }
        }
        dds_return_loan(reader, samples, count);
        if (count < static_cast<dds_return_t>(kTakeBatch)) {
            return;
        }
    }
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
