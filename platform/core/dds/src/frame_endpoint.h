// The reader and writers of one frame topic, shared by every method and event
// of this transport that uses the topic.
#ifndef VORX_DRIVER_DDS_SRC_FRAME_ENDPOINT_H
#define VORX_DRIVER_DDS_SRC_FRAME_ENDPOINT_H

#include <dds/dds.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "orx/sync/mutex.h"
#include "participant.h"
#include "vorx/driver/dds/dds_status.h"
#include "vorx/driver/dds/frame.h"

namespace vorx {
namespace driver {
namespace dds {

// QoS of a frame topic. Writers are reliable and keep the last `writerDepth`
// samples for readers that have not acknowledged them yet, also for a reader
// that learns of the writer only after the first samples went out. They never
// block on a slow reader: a handler may write from Cyclone's receive thread,
// which is the thread that would have to take the acknowledgements in. Method
// readers keep every sample until it is taken; event readers the last
// `readerDepth`, reliable unless the event asks otherwise. Everything is
// volatile: with a transient-local writer, Cyclone treats what was written
// before a reader discovered the writer as history that a volatile reader
// never gets.
struct EndpointQos {
    uint32_t writerDepth{64};
    bool readerKeepAll{true};
    uint32_t readerDepth{256};
    bool reliableReader{true};
};

EndpointQos MethodEndpointQos();
EndpointQos EventEndpointQos(const EventTopic& topic);

// Which side of a method or event a reader serves. A process that both serves
// and calls a method whose requests and replies share one topic reads it twice,
// once per side, so that servers and clients run on their own threads.
enum class ReaderRole : uint8_t {
    kServer = 0,  // takes requests
    kClient = 1,  // takes replies and event samples
};

// True while this thread is inside one of our own DDS writes. Cyclone hands a
// sample to readers of the same process in the writer's thread, so a listener
// that sees this flag runs on a caller's thread, not on Cyclone's.
bool InOwnWrite();

// Marks this thread, for the scope's lifetime, as running the listener of
// `reader` (its handlers run there).
class ListenerScope {
  public:
    explicit ListenerScope(dds_entity_t reader);
    ~ListenerScope();
    ListenerScope(const ListenerScope&) = delete;
    ListenerScope& operator=(const ListenerScope&) = delete;

  private:
    dds_entity_t previous_;
};

// True while this thread runs a reader's listener (see ListenerScope). Cyclone
// lets a listener neither make entities that match its own reader nor write to
// its own reader without waiting for itself, and a listener on Cyclone's
// receive thread must not wait for discovery; such work goes to another
// thread.
bool InListener();

class FrameEndpoint {
  public:
    FrameEndpoint(std::shared_ptr<Participant> participant, std::string topicName,
                  const EndpointQos& qos);
    ~FrameEndpoint();  // deletes the reader and the writers

    FrameEndpoint(const FrameEndpoint&) = delete;
    FrameEndpoint& operator=(const FrameEndpoint&) = delete;

    const std::string& TopicName() const { return topicName_; }

    // The reader of `role`, made on first call with `tag` as its user data
    // (peers read it from DDS discovery). Cyclone calls `onData` whenever the
    // reader holds new samples, on whatever thread delivered them (see
    // InOwnWrite); it must take them all. A negative handle with *status on
    // failure.
    dds_entity_t Reader(ReaderRole role, const std::string& tag,
                        std::function<void(dds_entity_t reader)> onData, DdsStatus* status);

    // True when a frame of `kind` can be written on this thread right now
    // without making an entity, waiting for discovery of `peer` (may be null)
    // or writing to the reader whose listener runs on this thread.
    bool CanWriteInline(FrameKind kind, const ParticipantGuid* peer);
    bool HasReader(ReaderRole role);

    // Makes the writer of `kind` now (with `tag` as its user data) rather than
    // on the first write.
    DdsStatus PrepareWriter(FrameKind kind, const std::string& tag);

    // Writes one frame with the writer of frame.kind, made on first use (a
    // request writer tagged as PeerTopics::RequestTag(frame.serviceId)). With
    // `peer` set, first waits up to `matchWait` until a reader of that
    // participant has matched the writer, because a sample written before would
    // not reach it; kNoPeer when it does not show up in time.
    DdsStatus Write(const Frame& frame, const ParticipantGuid* peer,
                    std::chrono::milliseconds matchWait);

    // Waits up to `matchWait` until the client reader has matched a writer of
    // `peer`. True when it has.
    bool WaitForWriterOf(const ParticipantGuid& peer, std::chrono::milliseconds matchWait);

    // Takes every frame waiting in `reader` (one of ours, as handed to onData)
    // and appends it to `out`. Samples that only carry an instance state change
    // are skipped. Takes no lock.
    static void TakeAll(dds_entity_t reader, std::vector<Frame>* out);

  private:
    // Listener argument of one reader: stays put while the endpoint lives, and
    // the readers are deleted (their listeners done) before it goes.
    struct Hook {
        FrameEndpoint* self{nullptr};
        ReaderRole role{ReaderRole::kServer};
        // Published after the hook and its handler are set: what the making
        // thread did before is then visible to the listener (Cyclone's own
        // ordering is invisible to ThreadSanitizer).
        std::atomic<bool> ready{false};
    };
    static void OnDataAvailable(dds_entity_t reader, void* arg);

    DdsStatus EnsureWriter(FrameKind kind, const std::string& tag, dds_entity_t* writer);
    DdsStatus WaitForPeer(FrameKind kind, dds_entity_t writer, const ParticipantGuid& peer,
                          std::chrono::milliseconds matchWait);

    const std::shared_ptr<Participant> participant_;
    const std::string topicName_;
    const EndpointQos qos_;

    // Serialises making readers and writers. Held across Cyclone calls that
    // may wait for listeners, so listeners never take it.
    orx::sync::Mutex createMutex_;
    // Guards the handles and reached_; never held across a Cyclone call that
    // may wait.
    orx::sync::Mutex mutex_;
    std::array<dds_entity_t, 2> readers_ GUARDED_BY(mutex_){};  // one per ReaderRole
    // Listener calls in progress, and whether the endpoint is going away: the
    // destructor waits for running calls, with an ordering that
    // ThreadSanitizer sees too (Cyclone's own, inside dds_delete, it cannot).
    orx::sync::Mutex listenMutex_;
    orx::sync::CondVar listenDone_;
    int activeListeners_ GUARDED_BY(listenMutex_){0};
    bool closing_ GUARDED_BY(listenMutex_){false};
    // Set before the reader of its role is made, never changed after.
    std::array<Hook, 2> hooks_{};
    std::array<std::function<void(dds_entity_t)>, 2> onData_;
    std::array<dds_entity_t, 3> writers_ GUARDED_BY(mutex_){};  // one per FrameKind
    // Peers whose reader matched the writer of a kind.
    std::set<std::pair<FrameKind, ParticipantGuid>> reached_ GUARDED_BY(mutex_);
};

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
