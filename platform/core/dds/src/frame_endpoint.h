// The reader and writers of one frame topic, shared by every method and event
// of this transport that uses the topic.
#ifndef VORX_DRIVER_DDS_SRC_FRAME_ENDPOINT_H
#define VORX_DRIVER_DDS_SRC_FRAME_ENDPOINT_H

#include <dds/dds.h>

#include <array>
#include <chrono>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "participant.h"
#include "vorx/driver/dds/dds_status.h"
#include "vorx/driver/dds/frame.h"

namespace vorx {
namespace driver {
namespace dds {

// QoS of a frame topic. Method topics keep every sample until it is taken and
// acknowledged (flow control instead of loss); event topics keep the last
// `depth` samples. Writers are always reliable, readers reliable unless asked
// otherwise. Everything is volatile: with a transient-local writer, Cyclone
// treats what was written before a reader discovered the writer as history
// and a volatile reader never gets it, so the first samples of a new writer
// would be lost.
struct EndpointQos {
    bool keepAll{true};
    uint32_t depth{16};
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

class FrameEndpoint {
  public:
    FrameEndpoint(std::shared_ptr<Participant> participant, std::string topicName,
                  const EndpointQos& qos);
    ~FrameEndpoint();  // deletes the reader and the writers

    FrameEndpoint(const FrameEndpoint&) = delete;
    FrameEndpoint& operator=(const FrameEndpoint&) = delete;

    const std::string& TopicName() const { return topicName_; }

    // The reader of `role`, made on first call with `tag` as its user data
    // (peers read it from DDS discovery). A negative handle with *status on
    // failure.
    dds_entity_t Reader(ReaderRole role, const std::string& tag, DdsStatus* status);

    // Makes the writer of `kind` now (with `tag` as its user data) rather than
    // on the first write.
    DdsStatus PrepareWriter(FrameKind kind, const std::string& tag);

    // Writes one frame with the writer of frame.kind (made on first use with
    // `tag`). With `peer` set, first waits up to `matchWait` until a reader of
    // that participant has matched the writer, because a sample written before
    // would not reach it; kNoPeer when it does not show up in time.
    DdsStatus Write(const Frame& frame, const std::string& tag, const ParticipantGuid* peer,
                    std::chrono::milliseconds matchWait);

    // Waits up to `matchWait` until the client reader has matched a writer of
    // `peer`. True when it has.
    bool WaitForWriterOf(const ParticipantGuid& peer, std::chrono::milliseconds matchWait);

    // Takes every frame waiting in the reader of `role` and appends it to
    // `out`. Samples that only carry an instance state change are skipped.
    void TakeAll(ReaderRole role, std::vector<Frame>* out);

  private:
    DdsStatus EnsureWriter(FrameKind kind, const std::string& tag, dds_entity_t* writer);
    DdsStatus WaitForPeer(FrameKind kind, dds_entity_t writer, const ParticipantGuid& peer,
                          std::chrono::milliseconds matchWait);

    const std::shared_ptr<Participant> participant_;
    const std::string topicName_;
    const EndpointQos qos_;

    std::mutex mutex_;
    std::array<dds_entity_t, 2> readers_{};  // guarded by mutex_: one per ReaderRole
    std::array<dds_entity_t, 3> writers_{};  // guarded by mutex_: one per FrameKind
    // Peers whose reader matched the writer of a kind; guarded by mutex_.
    std::set<std::pair<FrameKind, ParticipantGuid>> reached_;
};

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
