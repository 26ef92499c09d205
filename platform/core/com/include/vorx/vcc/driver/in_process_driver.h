#ifndef VORX_VCC_DRIVER_IN_PROCESS_DRIVER_H
#define VORX_VCC_DRIVER_IN_PROCESS_DRIVER_H

#include <atomic>
#include <memory>
#include <string>

#include "vorx/vcc/driver/driver.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc {

// The process-local binding: offers, searches, method calls and events between objects of one
// process, without any network. It behaves like a transport in its threading: discovery
// callbacks run on its discovery thread, requests reach servers on its server thread, and
// replies and event samples reach clients on its client thread; never on the sender's thread.
//
// Payload form: bytes by default, so every message goes through the encoders and decoders;
// objects when made so or set with SetPayloadMode (the process's instance takes it from
// DriverSettings::inProcessPayload).
//
// Lifetime: the process's shared instance (DriverRegistry) is never destroyed, so it works during
// static destruction at exit. A private instance stops its threads in its destructor, which must
// not run on one of them.
class VCC_EXPORT InProcessDriver final : public Driver {
  public:
    explicit InProcessDriver(PayloadMode mode = PayloadMode::kBytes);
    ~InProcessDriver() override;
    InProcessDriver(const InProcessDriver&) = delete;
    InProcessDriver& operator=(const InProcessDriver&) = delete;

    std::string Name() const override;
    PayloadMode GetPayloadMode() const override;
    // Takes effect for messages sent afterwards.
    void SetPayloadMode(PayloadMode mode);

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

  private:
    class Impl;
    std::unique_ptr<Impl> impl_;
    std::atomic<PayloadMode> mode_;
    const PeerKey localKey_;  // the sender of every request that names none
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_DRIVER_IN_PROCESS_DRIVER_H
