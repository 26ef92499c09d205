#ifndef VORX_VCC_DRIVER_FAULT_INJECTING_DRIVER_H
#define VORX_VCC_DRIVER_FAULT_INJECTING_DRIVER_H

#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "orx/sync/mutex.h"
#include "vorx/vcc/driver/driver.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc {

class TaskThread;
class CallbackGate;

// The three kinds of sends a fault can hit.
enum class FaultChannel : uint8_t {
    kRequest = 0,  // SendRequest
    kReply = 1,    // SendReply
    kEvent = 2,    // Publish
};

// What happens to one send.
struct Fault {
    enum class Kind : uint8_t {
        kPass = 0,   // forwarded as it is
        kDrop = 1,   // reported as sent, never delivered
        kFail = 2,   // reported as not sent (the send returns false), never delivered
        kDelay = 3,  // reported as sent, forwarded after `delay`
    };
    Kind kind{Kind::kPass};
    std::chrono::milliseconds delay{0};

    static Fault Pass() { return Fault{Kind::kPass, {}}; }
    static Fault Drop() { return Fault{Kind::kDrop, {}}; }
    static Fault Fail() { return Fault{Kind::kFail, {}}; }
    static Fault Delay(std::chrono::milliseconds delay) { return Fault{Kind::kDelay, delay}; }
};

// A driver that wraps another one and spoils chosen sends: tests script, per channel, what the
// next sends suffer (drop, fail, delay) and may rewrite requests and replies on their way (to
// forge malformed or error replies). Everything else is forwarded unchanged to the wrapped driver,
// whose threads still deliver every message; delayed messages wait on a thread of this wrapper.
//
// Thread-safe; scripting calls may come from any thread while traffic flows.
class VCC_EXPORT FaultInjectingDriver final : public Driver {
  public:
    explicit FaultInjectingDriver(std::shared_ptr<Driver> inner);
    ~FaultInjectingDriver() override;
    FaultInjectingDriver(const FaultInjectingDriver&) = delete;
    FaultInjectingDriver& operator=(const FaultInjectingDriver&) = delete;

    const std::shared_ptr<Driver>& Inner() const { return inner_; }

    // Appends `fault` for the next `count` sends of `channel`, after the faults queued before.
    // Sends beyond the queued faults pass.
    void Inject(FaultChannel channel, Fault fault, uint32_t count = 1);
    void FailNext(FaultChannel channel, uint32_t count = 1) {
        Inject(channel, Fault::Fail(), count);
    }
    void DropNext(FaultChannel channel, uint32_t count = 1) {
        Inject(channel, Fault::Drop(), count);
    }
    void DelayNext(FaultChannel channel, std::chrono::milliseconds delay, uint32_t count = 1) {
        Inject(channel, Fault::Delay(delay), count);
    }
    // Forgets the queued faults of every channel, both rewriters and the request decider.
    void Clear();
    // Faults still queued for `channel`.
    size_t PendingFaults(FaultChannel channel) const;
    // Sends seen on `channel`, spoiled or not.
    uint64_t SendCount(FaultChannel channel) const;

    // Called with every request / reply before its fault is applied; may change anything in it.
    // An empty function removes the rewriter. Runs on the sender's thread.
    void SetRequestRewriter(std::function<void(MethodCall&)> rewriter);
    void SetReplyRewriter(std::function<void(MethodReply&)> rewriter);
    // Decides the fault of each request for which no fault is queued (after the rewriter); lets a
    // test double fail chosen requests by their content. An empty function removes it. Runs on
    // the sender's thread and must not call back into this driver.
    void SetRequestDecider(std::function<Fault(const MethodCall&)> decider);

    // Stand-ins for processes of other hosts, for tests of what follows peers. AddPeer makes
    // `peer` known (FindPeer) and reports it alive to every watch (again after LosePeer: a
    // network cut that healed); LosePeer reports it lost and forgets it. Requests name such a
    // peer as their sender through the request rewriter (MethodCall::sender).
    void AddPeer(const PeerInfo& peer);
    void LosePeer(const PeerKey& key);

    std::string Name() const override;
    PayloadMode GetPayloadMode() const override;
    ProviderId Offer(const ServiceDescription& offer, ServerCallbacks callbacks) override;
    void StopOffer(ProviderId provider) override;
    FindId StartFind(const ServiceDescription& search, FindCallback callback) override;
    void StopFind(FindId find) override;
    ClientId Connect(const HandleType& handle, ClientCallbacks callbacks) override;
    void Disconnect(ClientId client) override;
    bool SendRequest(ClientId client, MethodCall call) override;
    bool SendReply(ProviderId provider, MethodReply reply) override;
    bool Publish(ProviderId provider, EventSample sample) override;
    bool Subscribe(ClientId client, uint32_t entityId) override;
    void Unsubscribe(ClientId client, uint32_t entityId) override;
    // The wrapped driver's peers and the stand-ins; the stand-ins' callbacks run on a thread of
    // this wrapper.
    PeerInfo LocalPeer() const override;
    std::optional<PeerInfo> FindPeer(const PeerKey& key) const override;
    PeerWatchId WatchPeers(PeerCallbacks callbacks) override;
    void StopWatchPeers(PeerWatchId watch) override;

  private:
    struct PeerWatch {
        PeerCallbacks callbacks;
        PeerWatchId inner{0};
        std::shared_ptr<CallbackGate> gate;
    };
    // Runs `call` with each watch's callbacks on the delayer thread.
    void TellWatches(std::function<void(const PeerCallbacks&)> call);

    // Takes the fault queued for the next send of `channel`, if any, and counts the send.
    bool NextFault(FaultChannel channel, Fault& fault);
    // Applies `fault` to a send that `forward` performs.
    bool Apply(const Fault& fault, std::function<bool()> forward);

    const std::shared_ptr<Driver> inner_;
    mutable orx::sync::Mutex mutex_;
    std::array<std::deque<Fault>, 3> faults_ GUARDED_BY(mutex_);
    std::array<uint64_t, 3> sends_ GUARDED_BY(mutex_){};
    std::function<void(MethodCall&)> requestRewriter_ GUARDED_BY(mutex_);
    std::function<void(MethodReply&)> replyRewriter_ GUARDED_BY(mutex_);
    std::function<Fault(const MethodCall&)> requestDecider_ GUARDED_BY(mutex_);
    std::map<PeerKey, PeerInfo> standIns_ GUARDED_BY(mutex_);
    std::map<PeerWatchId, PeerWatch> watches_ GUARDED_BY(mutex_);
    PeerWatchId nextWatch_ GUARDED_BY(mutex_){1};
    std::unique_ptr<TaskThread> delayer_;  // runs delayed sends and the stand-ins' callbacks
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_DRIVER_FAULT_INJECTING_DRIVER_H
