#ifndef VORX_DRIVER_DDS_DDS_TRANSPORT_H
#define VORX_DRIVER_DDS_DDS_TRANSPORT_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "vorx/driver/dds/dds_status.h"
#include "vorx/driver/dds/frame.h"
#include "vorx/driver/dds/participant_settings.h"
#include "vorx/vcc/export.h"
#include "vorx/vcc/process_identity.h"

namespace vorx {
namespace driver {
namespace dds {

// The DDS transport beneath the DDS driver: one participant, service
// announcements, and frames on method and event topics. It knows nothing of the
// core's records; payloads are bytes.
//
// Threads. Frames from other processes are handled where Cyclone receives
// them, in the reader's listener on Cyclone's receive thread: no thread switch
// on the way of a request, reply or event sample. Frames written in this
// process reach the readers in the writer's thread; they are handed to the
// transport's own threads instead, so that a handler never runs on a caller's
// thread. Its threads:
//   - discovery thread: find handlers and the offer-lost handler;
//   - server thread: requests written in this process, deferred sends of
//     servers;
//   - client thread: replies and samples written in this process, the tasks
//     of PostToClientThread, deferred sends of clients.
// The request handlers run one at a time, and so do all reply, event and
// client-thread handlers, whatever thread they run on. A handler that runs in
// a listener holds up the reception of this participant while it runs: keep it
// short (a server can keep its request and answer later). A send from a
// handler in a listener that would have to make an entity or wait for
// discovery of a peer is done on the server or client thread instead, and
// reported as sent.
// No lock of the transport is held while a handler runs: handlers may call any
// operation, including stopping their own registration.
//
// Lifetime: shared. It must not be destroyed on one of its own threads (do not
// let a handler hold the last reference). Destruction stops the threads, then
// deletes the participant, which withdraws every offer.
class VCC_EXPORT DdsTransport {
  public:
    using OfferListHandler = std::function<void(const std::vector<ServiceOffer>&)>;
    using OfferLostHandler = std::function<void(const ServiceOffer&)>;
    using FrameHandler = std::function<void(Frame)>;

    // Joins DDS with `settings` (a participant of its own, even when the domain
    // is shared with other transports of this process). On failure returns
    // nullptr and sets *status.
    static std::shared_ptr<DdsTransport> Create(const ParticipantSettings& settings,
                                                DdsStatus* status);
    ~DdsTransport();

    DdsTransport(const DdsTransport&) = delete;
    DdsTransport& operator=(const DdsTransport&) = delete;

    uint32_t DomainId() const;
    const ParticipantGuid& Guid() const;
    // A new id for an offer or a client: never 0, unique across processes in
    // practice (random base, then counting).
    uint64_t NewId();
    // Identifies this running kernel (the monotonic clock); see Frame::bootId.
    static uint64_t BootId();

    // How long the first message to a peer may wait for the peer's reader to
    // match (default 1000 ms): a message written before the match would be lost.
    void SetMatchWait(std::chrono::milliseconds wait);

    // ---- Discovery ----
    // Announces `offer` under offer.providerId (from NewId). Offering the same id
    // again updates the announcement.
    DdsStatus Offer(const ServiceOffer& offer);
    // Withdraws an offer; Ok when it was not offered.
    DdsStatus StopOffer(uint64_t providerId);
    // Follows the offers that match `filter`: `handler` gets the current list on
    // the discovery thread on every change (empty when the last one goes away),
    // and once soon after the start when offers are known already.
    uint64_t StartFind(const FindFilter& filter, OfferListHandler handler);
    // After it returns the handler is never called again (a running call is
    // waited for unless StopFind comes from inside the handler).
    void StopFind(uint64_t findId);
    // The matching offers known right now, ordered.
    std::vector<ServiceOffer> CurrentOffers(const FindFilter& filter) const;
    // The known offer with this provider id.
    std::optional<ServiceOffer> KnownOffer(uint64_t providerId) const;
    // Called on the discovery thread for every offer that goes away (withdrawn,
    // or its provider's lease ran out), before the finds hear of it. Replaces
    // the previous handler.
    void SetOfferLostHandler(OfferLostHandler handler);

    // ---- Peers ----
    using PeerAliveHandler =
        std::function<void(const ParticipantGuid&, const vcc::ProcessIdentity&)>;
    using PeerLostHandler = std::function<void(const ParticipantGuid&)>;
    // Follows the other participants of the domain that carry a process identity (those of
    // this driver): `onAlive` for each one known now and each that appears or comes back after
    // its lease ran out, `onLost` when one leaves or its lease runs out; on the discovery
    // thread. Returns the watch's id (never 0).
    uint64_t WatchPeers(PeerAliveHandler onAlive, PeerLostHandler onLost);
    // After it returns the watch's handlers never run again.
    void UnwatchPeers(uint64_t watch);
    // The process behind participant `guid` while it is alive; also right after a frame of it
    // arrived, before the discovery thread has handled its announcement.
    std::optional<vcc::ProcessIdentity> FindPeer(const ParticipantGuid& guid) const;

    // ---- Methods, server side ----
    // Hands every request frame addressed to `providerId` to `onRequest` (see
    // Threads above). Requests can come on any topic that clients of `serviceId`
    // announced (see ListenForRequests). Serving an id again replaces the handler.
    DdsStatus Serve(uint64_t providerId, uint16_t serviceId, FrameHandler onRequest);
    // After it returns the handler of `providerId` is not called again.
    void StopServing(uint64_t providerId);
    // Request topics that clients of `serviceId` announced so far (seen from DDS
    // discovery; includes this process's own clients).
    std::set<std::string> AnnouncedRequestTopics(uint16_t serviceId) const;
    // Also reads requests of `serviceId` from `topic` before any client shows up.
    DdsStatus ListenForRequests(uint16_t serviceId, const std::string& topic);
    // Sends `reply` on `replyTopic` (the request's replyTopic), first waiting for
    // a reader of `client` (the request's senderGuid) to match. Sets kind,
    // sender and send times. Any thread.
    DdsStatus SendReply(const std::string& replyTopic, Frame reply, const ParticipantGuid& client);

    // ---- Methods, client side ----
    // Hands every reply frame addressed to `clientId` to `onReply` (see Threads
    // above). Opening an id again replaces the handler.
    DdsStatus OpenClient(uint64_t clientId, FrameHandler onReply);
    // After it returns the reply handler of `clientId` is not called again.
    void CloseClient(uint64_t clientId);
    // Sends `request` on topics.requestTopic to the offer's participant
    // `provider`, first making sure our reader of topics.replyTopic exists and
    // that a reader of `provider` matched. Sets kind, sender, send times and
    // the reply topic. Any thread.
    DdsStatus SendRequest(const MethodTopics& topics, Frame request,
                          const ParticipantGuid& provider);

    // ---- Events ----
    // Makes the writer of the event topic now (so subscribers can match before
    // the first sample).
    DdsStatus PrepareEvent(const EventTopic& topic);
    // Publishes one sample on `topic` and on every other topic that subscribers
    // of (sample.serviceId, sample.entityId) announced. Sets kind, sender and
    // send times; the sequence number is the caller's. Any thread.
    DdsStatus Publish(const EventTopic& topic, Frame sample);
    // Hands every sample of event `entityId` of serviceId/instanceId read from
    // `topic` to `onSample` (see Threads above) (an instance matching any
    // takes every instance). With `provider` set (the offer's participant),
    // first waits up to the match wait until our reader has matched its writer
    // (an offering transport makes that writer as soon as it sees the
    // subscriber), so that samples published after the return arrive; on the
    // transport's own threads it does not wait. Returns the subscription id, or
    // 0 with *status.
    uint64_t Subscribe(const EventTopic& topic, uint16_t serviceId, const std::string& instanceId,
                       uint32_t entityId, FrameHandler onSample, const ParticipantGuid* provider,
                       DdsStatus* status);
    // After it returns the handler of this subscription is not called again.
    void Unsubscribe(uint64_t subscriptionId);

    // Runs `task` on the client thread after what is queued there.
    void PostToClientThread(std::function<void()> task);

  private:
    class Impl;
    explicit DdsTransport(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

// Current CLOCK_MONOTONIC and CLOCK_REALTIME in nanoseconds.
VCC_EXPORT int64_t MonotonicNowNs();
VCC_EXPORT int64_t RealtimeNowNs();

// The send time of `frame` on this process's CLOCK_MONOTONIC: the sender's
// monotonic time when both run under the same kernel (bootId), else its
// CLOCK_REALTIME time moved onto our monotonic clock (good as far as the two
// hosts' clocks agree).
VCC_EXPORT int64_t LocalMonotonicSendTime(const Frame& frame);

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif  // VORX_DRIVER_DDS_DDS_TRANSPORT_H
