#ifndef VORX_VCC_DRIVER_DRIVER_H
#define VORX_VCC_DRIVER_DRIVER_H

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "vorx/vcc/export.h"
#include "vorx/vcc/handle_type.h"
#include "vorx/vcc/payload.h"
#include "vorx/vcc/process_identity.h"

namespace vorx::vcc {

// Ids a driver hands out. 0 never names anything and is what the calls return on failure.
using ProviderId = uint64_t;  // one offer of a service
using ClientId = uint64_t;    // one proxy's connection to a service
using FindId = uint64_t;      // one running search

// Names one running process among the peers of a driver (on DDS: its participant's GUID). It
// changes when the process starts again. All zero means "not known".
using PeerKey = std::array<uint8_t, 16>;

// A peer as the driver knows it: its key and who the process is.
struct PeerInfo {
    PeerKey key{};
    ProcessIdentity process;
};

// What a driver calls while it follows its peers.
struct PeerCallbacks {
    // A peer became reachable: on the start of the watch for each one known then, when a new one
    // appears, and when one that was lost comes back (a network cut healed; same key).
    std::function<void(const PeerInfo&)> onAlive;
    // A peer is gone: it left, or nothing was heard of it for its lease (crash, network cut).
    std::function<void(const PeerKey&)> onLost;
};
using PeerWatchId = uint64_t;

// A method request on its way from a proxy to the offering service.
struct MethodCall {
    ClientId clientId{0};  // filled by the driver on SendRequest: where the reply goes
    uint32_t entityId{0};  // the method
    uint16_t sessionId{0};
    Payload payload;  // the arguments (see codec.h)
    // The process that sent the request, filled by the driver: on the receiving side it names
    // the sender among the driver's peers (FindPeer, WatchPeers). A sender set before
    // SendRequest is kept (tests stand in for other processes this way).
    PeerKey sender{};
};

// What a reply carries besides its value.
enum class ReplyKind : uint8_t {
    kValue = 0,    // payload holds the return value
    kError = 1,    // errorDomainId / errorCode name an error
    kInvalid = 2,  // neither: a malformed reply
};

// A method reply on its way back to the one client that sent the request.
struct MethodReply {
    ClientId clientId{0};
    uint32_t entityId{0};
    uint16_t sessionId{0};
    ReplyKind kind{ReplyKind::kValue};
    Payload payload;                 // kValue: the return value
    uint64_t errorDomainId{0};       // kError: ara::core::ErrorDomain id
    std::vector<uint8_t> errorCode;  // kError: the code value as CDR int32
    std::string errorMessage;        // kError: optional text of the server
    bool tlsFailure{false};          // the secured connection to the server failed
    uint8_t e2eResult{0};            // E2E check of the reply, 0 = passed
};

// One event sample as published.
struct EventSample {
    uint32_t entityId{0};
    uint64_t sequence{0};  // per offer and event, from 1; set by the driver on Publish
    long sendTimeNs{0};    // monotonic send time (GetCurMonoTime); set by the driver on Publish
    Payload payload;
};

// What a driver calls on the offering side.
struct ServerCallbacks {
    std::function<void(ProviderId, const MethodCall&)> onRequest;
};

// What a driver calls on the using side.
struct ClientCallbacks {
    std::function<void(const MethodReply&)> onReply;
    std::function<void(const EventSample&)> onEvent;
    // The offer this client talks to went away; replies to requests sent so far will not come.
    std::function<void()> onServiceLost;
};

// Gets the current list of matching offers.
using FindCallback = std::function<void(const ServiceHandleContainer&)>;

// The core's seam to the wire. A driver carries offers and searches, method requests and replies
// and event samples for one or more bindings.
//
// Threads: every call may come from any thread. Callbacks run on the driver's own threads, never
// on the caller's thread and never while the driver holds a lock, so a callback may call back into
// the driver. The callbacks of one search, one offer or one client run one at a time.
//
// Stopping (StopFind, StopOffer, Disconnect): once the call returns, the callbacks it stops never
// run again; a callback running at that moment is waited for, unless the stop comes from inside
// that very callback.
class VCC_EXPORT Driver {
  public:
    virtual ~Driver();

    // Short name for logs, e.g. "inprocess".
    virtual std::string Name() const = 0;
    // The payload form senders should hand over (receivers read either form).
    virtual PayloadMode GetPayloadMode() const = 0;

    // Announces an offer. Returns its id, or 0 when the offer is refused.
    virtual ProviderId Offer(const ServiceDescription& offer, ServerCallbacks callbacks) = 0;
    virtual void StopOffer(ProviderId provider) = 0;

    // Searches offers matching `search` (ServiceDescription::Matches). `callback` gets the whole
    // current list on every change, an empty list when the last match went away, and once soon
    // after the start when matches are known already. Returns 0 when refused.
    virtual FindId StartFind(const ServiceDescription& search, FindCallback callback) = 0;
    virtual void StopFind(FindId find) = 0;

    // Opens a client connection to the service that `handle` names. Requests go to the offer the
    // handle names while it exists, else to any current offer of the same service (so a client
    // survives the service being withdrawn and offered again). Returns 0 when refused.
    virtual ClientId Connect(const HandleType& handle, ClientCallbacks callbacks) = 0;
    virtual void Disconnect(ClientId client) = 0;

    // Hands a request to the transport. True when it was handed over (not that it arrived);
    // false when it could not be sent (no such client, no current offer, transport failure).
    virtual bool SendRequest(ClientId client, MethodCall call) = 0;
    // Sends a reply to the one client named in `reply.clientId`. False when it could not be sent.
    virtual bool SendReply(ProviderId provider, MethodReply reply) = 0;

    // Publishes a sample of event `sample.entityId` to the subscribed clients of the offer's
    // service; sets its sequence number and send time. False when the offer is unknown.
    virtual bool Publish(ProviderId provider, EventSample sample) = 0;
    // Starts / stops delivering samples of one event to a client. Subscriptions belong to the
    // service, not to one offer: they outlive a withdrawal and a new offer.
    virtual bool Subscribe(ClientId client, uint32_t entityId) = 0;
    virtual void Unsubscribe(ClientId client, uint32_t entityId) = 0;

    // ---- Peers: the processes this driver reaches ----
    // This process as its peers see it. The default: the process's identity under a key made
    // from it (a driver with no wire of its own has only this one peer).
    virtual PeerInfo LocalPeer() const;
    // The peer named `key`, when the driver knows it right now. The default knows LocalPeer.
    virtual std::optional<PeerInfo> FindPeer(const PeerKey& key) const;
    // Follows the peers (see PeerCallbacks); callbacks run on the driver's threads, one at a
    // time. Returns 0 when refused. The default never calls back: its one peer, this process,
    // is always there.
    virtual PeerWatchId WatchPeers(PeerCallbacks callbacks);
    // After it returns the watch's callbacks never run again.
    virtual void StopWatchPeers(PeerWatchId watch);
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_DRIVER_DRIVER_H
