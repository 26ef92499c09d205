#ifndef VORX_DRIVER_DDS_DDS_DRIVER_H
#define VORX_DRIVER_DDS_DDS_DRIVER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "vorx/driver/dds/dds_status.h"
#include "vorx/driver/dds/dds_transport.h"
#include "vorx/driver/dds/frame.h"
#include "vorx/driver/dds/participant_settings.h"
#include "vorx/vcc/driver/driver.h"
#include "vorx/vcc/export.h"

namespace vorx {
namespace driver {
namespace dds {

// The core's driver over Eclipse Cyclone DDS: offers, searches, method calls
// and events between processes and hosts. Same behaviour as the in-process
// driver, with these DDS specifics:
//   - Discovery: every offer is an instance of a keyed, transient-local
//     announcement topic. A withdrawn offer, and every offer of a process that
//     exits or crashes, leaves the lists within the participant lease
//     (ParticipantSettings::leaseDurationMs, 3 s by default).
//   - Topics: a method's request and reply topics and an event's topic come
//     from the deployment (SetMethodTopics / SetEventTopic), for the
//     maintenance daemon's services from the registered DFX configuration
//     provider, else from default names (see docs/dds.md). Request and reply
//     may share one topic: frames say whether they are a request or a reply, and
//     a client takes only the replies addressed to its client id.
//   - The offering side reads the request topics its clients announce, so it
//     needs no list of its methods.
//   - Payloads always travel as bytes (GetPayloadMode is kBytes); a request,
//     reply or sample that holds only an object is refused.
//   - Event samples carry a sequence number per offer and event, and both the
//     sender's CLOCK_MONOTONIC and CLOCK_REALTIME send times; the receiver's
//     EventSample::sendTimeNs is on its own monotonic clock (see
//     LocalMonotonicSendTime).
//   - The first message to a new peer waits (at most the transport's match
//     wait, 1 s by default) until the peer's reader is matched; later messages
//     do not wait.
//
// Threads: callbacks run on Cyclone's receive thread (messages from other
// processes) or on the transport's own threads (messages of this process,
// discovery), never on the caller's thread and never while the driver holds a
// lock; see DdsTransport. Request handlers run one at a time, and so do the
// callbacks of clients (replies, events, service loss). Keep them short: a
// callback on the receive thread holds up what arrives after it.
//
// Lifetime: the process's driver (GetShared) is never destroyed, so it keeps
// working during static destruction at process exit. A driver from Create stops
// in its destructor, which must not run on one of its own threads.
class VCC_EXPORT DdsDriver final : public vcc::Driver {
  public:
    // The process's DDS driver on ProcessParticipantSettings(), made on first
    // call. nullptr when DDS could not be started (logged once as an error;
    // later calls return nullptr again without retrying).
    static std::shared_ptr<DdsDriver> GetShared();
    // A driver with a participant of its own on `settings`. On failure returns
    // nullptr and sets *status.
    static std::shared_ptr<DdsDriver> Create(const ParticipantSettings& settings,
                                             DdsStatus* status);
    ~DdsDriver() override;

    DdsDriver(const DdsDriver&) = delete;
    DdsDriver& operator=(const DdsDriver&) = delete;

    std::string Name() const override;                 // "dds"
    vcc::PayloadMode GetPayloadMode() const override;  // kBytes

    vcc::ProviderId Offer(const vcc::ServiceDescription& offer,
                          vcc::ServerCallbacks callbacks) override;
    void StopOffer(vcc::ProviderId provider) override;
    vcc::FindId StartFind(const vcc::ServiceDescription& search,
                          vcc::FindCallback callback) override;
    void StopFind(vcc::FindId find) override;
    vcc::ClientId Connect(const vcc::HandleType& handle, vcc::ClientCallbacks callbacks) override;
    void Disconnect(vcc::ClientId client) override;
    bool SendRequest(vcc::ClientId client, vcc::MethodCall call) override;
    // Peers are the participants of the domain that carry a process identity; a peer's key is
    // its participant's GUID, a request's sender the GUID of the participant that wrote it. A
    // peer is lost when it deletes its participant or when its lease runs out.
    vcc::PeerInfo LocalPeer() const override;
    std::optional<vcc::PeerInfo> FindPeer(const vcc::PeerKey& key) const override;
    vcc::PeerWatchId WatchPeers(vcc::PeerCallbacks callbacks) override;
    void StopWatchPeers(vcc::PeerWatchId watch) override;
    bool SendReply(vcc::ProviderId provider, vcc::MethodReply reply) override;
    bool Publish(vcc::ProviderId provider, vcc::EventSample sample) override;
    bool Subscribe(vcc::ClientId client, uint32_t entityId) override;
    void Unsubscribe(vcc::ClientId client, uint32_t entityId) override;

    // Deployment of a method's or an event's topics for every instance of
    // `serviceId`; takes precedence over the DFX configuration and the default
    // names for methods and subscriptions set up afterwards.
    void SetMethodTopics(uint16_t serviceId, uint32_t entityId, const MethodTopics& topics);
    void SetEventTopic(uint16_t serviceId, uint32_t entityId, const EventTopic& topic);

    DdsTransport& Transport();

  private:
    class Impl;
    explicit DdsDriver(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

// Makes the DDS driver known to vcc::DriverRegistry under the name "dds", so
// that ORX_DDS_DRIVER=dds or {"drivers": {"dds": "dds"}} in orx.json selects it
// (the factory hands out DdsDriver::GetShared()). Loading libvcc_dds does this
// already; calling it again is harmless.
VCC_EXPORT void RegisterDdsDriver();

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif  // VORX_DRIVER_DDS_DDS_DRIVER_H
