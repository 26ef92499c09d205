#include "frame_endpoint.h"

#include <algorithm>
#include <cstring>
#include <thread>

#include "orx/sync/mutex.h"
#include "peer_topics.h"
#include "wire_convert.h"

namespace vorx {
namespace driver {
namespace dds {

namespace {

// How long a reliable write may block on a full history before it fails.
constexpr int64_t kMaxBlockingMs = 500;
constexpr uint32_t kMinEventDepth = 256;

void SetTag(dds_qos_t* qos, const std::string& tag) {
    if (!tag.empty()) {
        dds_qset_userdata(qos, tag.data(), tag.size());
    }
}

// Partitions keep the sides of a shared topic apart: servers read only
// requests, clients only replies and event samples. Besides sparing readers the
// samples they would drop, this keeps a handler from writing to the very reader
// it is being called for.
constexpr const char* kRequestPartition = "vorx.request";
constexpr const char* kReplyPartition = "vorx.reply";
constexpr const char* kEventPartition = "vorx.event";

dds_qos_t* ReaderQos(const EndpointQos& qos, ReaderRole role, const std::string& tag) {
    dds_qos_t* q = dds_create_qos();
    if (role == ReaderRole::kServer) {
        dds_qset_partition1(q, kRequestPartition);
    } else {
        const char* partitions[] = {kReplyPartition, kEventPartition};
        dds_qset_partition(q, 2, partitions);
    }
    dds_qset_reliability(
        q, qos.reliableReader ? DDS_RELIABILITY_RELIABLE : DDS_RELIABILITY_BEST_EFFORT,
        DDS_MSECS(kMaxBlockingMs));
    dds_qset_durability(q, DDS_DURABILITY_VOLATILE);
    dds_qset_history(q, qos.readerKeepAll ? DDS_HISTORY_KEEP_ALL : DDS_HISTORY_KEEP_LAST,
                     static_cast<int32_t>(qos.readerDepth));
    SetTag(q, tag);
    return q;
}

dds_qos_t* WriterQos(const EndpointQos& qos, FrameKind kind, const std::string& tag) {
    dds_qos_t* q = dds_create_qos();
    switch (kind) {
        case FrameKind::kRequest:
            dds_qset_partition1(q, kRequestPartition);
            break;
        case FrameKind::kReply:
            dds_qset_partition1(q, kReplyPartition);
            break;
        case FrameKind::kEvent:
            dds_qset_partition1(q, kEventPartition);
            break;
    }
    dds_qset_reliability(q, DDS_RELIABILITY_RELIABLE, DDS_MSECS(kMaxBlockingMs));
    dds_qset_durability(q, DDS_DURABILITY_VOLATILE);
    dds_qset_history(q, DDS_HISTORY_KEEP_LAST, static_cast<int32_t>(qos.writerDepth));
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

thread_local bool tInOwnWrite = false;
thread_local dds_entity_t tListenerReader = 0;

// Marks this thread as inside one of our writes for its lifetime.
struct OwnWrite {
    OwnWrite() : previous(tInOwnWrite) { tInOwnWrite = true; }
    ~OwnWrite() { tInOwnWrite = previous; }
    bool previous;
};

size_t KindIndex(FrameKind kind) {
    const auto index = static_cast<size_t>(kind);
    return index < 3 ? index : 2;
}

}  // namespace

bool InOwnWrite() {
    return tInOwnWrite;
}

bool InListener() {
    return tListenerReader != 0;
}

ListenerScope::ListenerScope(dds_entity_t reader) : previous_(tListenerReader) {
    tListenerReader = reader;
}

ListenerScope::~ListenerScope() {
    tListenerReader = previous_;
}

EndpointQos MethodEndpointQos() {
    EndpointQos qos;
    qos.readerKeepAll = true;
    return qos;
}

EndpointQos EventEndpointQos(const EventTopic& topic) {
    EndpointQos qos;
    qos.readerKeepAll = false;
    qos.readerDepth = std::max<uint32_t>(topic.historyDepth, kMinEventDepth);
    qos.reliableReader = topic.reliable;
    return qos;
}

FrameEndpoint::FrameEndpoint(std::shared_ptr<Participant> participant, std::string topicName,
                             const EndpointQos& qos)
    : participant_(std::move(participant)), topicName_(std::move(topicName)), qos_(qos) {}

FrameEndpoint::~FrameEndpoint() {
    {
        orx::sync::MutexLock lock(listenMutex_);
        closing_ = true;
        listenDone_.Wait(listenMutex_,
                         [this]() REQUIRES(listenMutex_) { return activeListeners_ == 0; });
    }
    // Deleting a reader waits for its listener, which may need mutex_.
    std::array<dds_entity_t, 2> readers{};
    std::array<dds_entity_t, 3> writers{};
    {
        orx::sync::MutexLock lock(mutex_);
        readers = readers_;
        writers = writers_;
    }
    for (const dds_entity_t reader : readers) {
        if (reader > 0) {
            dds_delete(reader);
        }
    }
    for (const dds_entity_t writer : writers) {
        if (writer > 0) {
            dds_delete(writer);
        }
    }
}

void FrameEndpoint::OnDataAvailable(dds_entity_t reader, void* arg) {
    const auto* hook = static_cast<const Hook*>(arg);
    if (!hook->ready.load(std::memory_order_acquire)) {
        return;
    }
    FrameEndpoint* self = hook->self;
    {
        orx::sync::MutexLock lock(self->listenMutex_);
        if (self->closing_) {
            return;
        }
        ++self->activeListeners_;
    }
    self->onData_[static_cast<size_t>(hook->role)](reader);
    // Notified under the lock: once the destructor sees no call running, this
    // thread no longer touches the endpoint.
    orx::sync::MutexLock lock(self->listenMutex_);
    --self->activeListeners_;
    self->listenDone_.NotifyAll();
}

dds_entity_t FrameEndpoint::Reader(ReaderRole role, const std::string& tag,
                                   std::function<void(dds_entity_t)> onData, DdsStatus* status) {
    const auto index = static_cast<size_t>(role);
    orx::sync::MutexLock creating(createMutex_);
    {
        orx::sync::MutexLock lock(mutex_);
        if (readers_[index] > 0) {
            *status = DdsStatus::Ok();
            return readers_[index];
        }
    }
    const dds_entity_t topic = participant_->FrameTopic(topicName_, status);
    if (topic < 0) {
        return topic;
    }
    // Only this thread touches them until the reader exists.
    onData_[index] = std::move(onData);
    hooks_[index].self = this;
    hooks_[index].role = role;
    hooks_[index].ready.store(true, std::memory_order_release);
    dds_qos_t* qos = ReaderQos(qos_, role, tag);
    dds_listener_t* listener = dds_create_listener(&hooks_[index]);
    dds_lset_data_available(listener, &FrameEndpoint::OnDataAvailable);
    const dds_entity_t reader = dds_create_reader(participant_->Handle(), topic, qos, listener);
    dds_delete_listener(listener);
    dds_delete_qos(qos);
    *status = TranslateReturnCode(reader, "create reader on topic \"" + topicName_ + "\"");
    if (reader > 0) {
        orx::sync::MutexLock lock(mutex_);
        readers_[index] = reader;
    }
    return reader;
}

bool FrameEndpoint::CanWriteInline(FrameKind kind, const ParticipantGuid* peer) {
    const ReaderRole receiving =
        kind == FrameKind::kRequest ? ReaderRole::kServer : ReaderRole::kClient;
    orx::sync::MutexLock lock(mutex_);
    // Our own reader of this frame would get it in this very thread, while
    // Cyclone still runs that reader's listener here.
    if (tListenerReader != 0 && readers_[static_cast<size_t>(receiving)] == tListenerReader) {
        return false;
    }
    if (writers_[KindIndex(kind)] <= 0) {
        return false;
    }
    return peer == nullptr || reached_.count({kind, *peer}) != 0;
}

bool FrameEndpoint::HasReader(ReaderRole role) {
    orx::sync::MutexLock lock(mutex_);
    return readers_[static_cast<size_t>(role)] > 0;
}

DdsStatus FrameEndpoint::PrepareWriter(FrameKind kind, const std::string& tag) {
    dds_entity_t writer = 0;
    return EnsureWriter(kind, tag, &writer);
}

DdsStatus FrameEndpoint::EnsureWriter(FrameKind kind, const std::string& tag,
                                      dds_entity_t* writer) {
    const size_t index = KindIndex(kind);
    {
        orx::sync::MutexLock lock(mutex_);
        if (writers_[index] > 0) {
            *writer = writers_[index];
            return DdsStatus::Ok();
        }
    }
    // Making a writer may wait for the listeners of matching readers of this
    // process, which may need mutex_: it is not held meanwhile.
    orx::sync::MutexLock creating(createMutex_);
    {
        orx::sync::MutexLock lock(mutex_);
        if (writers_[index] > 0) {
            *writer = writers_[index];
            return DdsStatus::Ok();
        }
    }
    DdsStatus status;
    const dds_entity_t topic = participant_->FrameTopic(topicName_, &status);
    if (topic < 0) {
        return status;
    }
    dds_qos_t* qos = WriterQos(qos_, kind, tag);
    const dds_entity_t created = dds_create_writer(participant_->Handle(), topic, qos, nullptr);
    dds_delete_qos(qos);
    if (created < 0) {
        return TranslateReturnCode(created, "create writer on topic \"" + topicName_ + "\"");
    }
    orx::sync::MutexLock lock(mutex_);
    writers_[index] = created;
    *writer = created;
    return DdsStatus::Ok();
}

DdsStatus FrameEndpoint::WaitForPeer(FrameKind kind, dds_entity_t writer,
                                     const ParticipantGuid& peer,
                                     std::chrono::milliseconds matchWait) {
    {
        orx::sync::MutexLock lock(mutex_);
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
    orx::sync::MutexLock lock(mutex_);
    reached_.insert({kind, peer});
    return DdsStatus::Ok();
}

DdsStatus FrameEndpoint::Write(const Frame& frame, const ParticipantGuid* peer,
                               std::chrono::milliseconds matchWait) {
    dds_entity_t writer = 0;
    DdsStatus status;
    {
        orx::sync::MutexLock lock(mutex_);
        writer = writers_[KindIndex(frame.kind)];
    }
    if (writer <= 0) {
        status =
            EnsureWriter(frame.kind,
                         frame.kind == FrameKind::kRequest ? PeerTopics::RequestTag(frame.serviceId)
                                                           : std::string(),
                         &writer);
    }
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
    dds_return_t rc = 0;
    {
        OwnWrite marked;
        rc = dds_write(writer, &wire);
    }
    if (rc < 0) {
        return TranslateReturnCode(rc, "write on topic \"" + topicName_ + "\"");
    }
    return DdsStatus::Ok();
}

bool FrameEndpoint::WaitForWriterOf(const ParticipantGuid& peer,
                                    std::chrono::milliseconds matchWait) {
    dds_entity_t reader = 0;
    {
        orx::sync::MutexLock lock(mutex_);
        reader = readers_[static_cast<size_t>(ReaderRole::kClient)];
    }
    return reader > 0 && PollUntil(matchWait, [&] { return MatchedWith(reader, false, peer); });
}

void FrameEndpoint::TakeAll(dds_entity_t reader, std::vector<Frame>* out) {
    // One sample at a time on the reader's own loan: a batch of loaned samples
    // would be allocated and cleared on every call, which costs more than the
    // extra calls when (as usual) one sample waits.
    for (;;) {
        void* sample = nullptr;
        dds_sample_info_t info;
        if (dds_take(reader, &sample, &info, 1, 1) <= 0) {
            return;
        }
        if (info.valid_data) {
            out->push_back(FromWire(*static_cast<const vorx_driver_dds_wire_Frame*>(sample)));
        }
        dds_return_loan(reader, &sample, 1);
    }
}

}  // namespace dds
}  // namespace driver
}  // namespace vorx
