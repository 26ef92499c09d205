#ifndef VORX_VCC_METHOD_SERVER_H
#define VORX_VCC_METHOD_SERVER_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ara/core/error_code.h"
#include "vorx/vcc/codec.h"
#include "vorx/vcc/driver/driver.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc {

// The way back to the one client that sent a request. Sends at most one reply. Thread-safe.
class VCC_EXPORT ReplyChannel {
  public:
    ReplyChannel(std::shared_ptr<Driver> driver, ProviderId provider, const MethodCall& call);

    // Addresses `reply` to the caller and sends it, unless a reply went out already. Returns true
    // when the driver took it.
    bool Send(MethodReply reply);
    bool Replied() const { return replied_.load(); }
    bool SendsObjects() const;
    uint32_t GetEntityId() const { return entityId_; }
    uint16_t GetSessionId() const { return sessionId_; }
    // Logs that a reply value could not be encoded.
    void LogEncodeFailure() const;

  private:
    const std::shared_ptr<Driver> driver_;
    const ProviderId provider_;
    const ClientId client_;
    const uint32_t entityId_;
    const uint16_t sessionId_;
    std::atomic<bool> replied_{false};
};

// Answers one request with a value of type R or an error. The method's handler gets it and may
// reply at once or later, from any thread, or drop it without replying (the caller then times
// out). Copies share the request: only the first reply of any copy is sent.
template <class R>
class Responder {
  public:
    explicit Responder(std::shared_ptr<ReplyChannel> channel) : channel_(std::move(channel)) {}

    // Replies with `value`. False when a reply went out already or it could not be sent.
    bool Reply(const R& value) const {
        MethodReply reply;
        reply.kind = ReplyKind::kValue;
        if (channel_->SendsObjects()) {
            reply.payload = Payload::FromObject(std::make_shared<const R>(value));
        } else {
            std::vector<uint8_t> bytes;
            if (!codec::EncodeValue(value, bytes)) {
                channel_->LogEncodeFailure();
                return false;
            }
            reply.payload = Payload::FromBytes(std::move(bytes));
        }
        return channel_->Send(std::move(reply));
    }

    // Replies with `error` (its domain id and value travel; `message` is an optional text).
    bool ReplyError(const ara::core::ErrorCode& error, const std::string& message = "") const {
        MethodReply reply;
        reply.kind = ReplyKind::kError;
        reply.errorDomainId = error.Domain().Id();
        if (!codec::EncodeValue(static_cast<int32_t>(error.Value()), reply.errorCode)) {
            channel_->LogEncodeFailure();
            return false;
        }
        reply.errorMessage = message;
        return channel_->Send(std::move(reply));
    }

    // Sends a reply assembled by the caller (kind, payload, error fields, E2E and TLS flags), for
    // servers that need full control; addressing is filled in.
    bool ReplyRaw(MethodReply reply) const { return channel_->Send(std::move(reply)); }

    uint16_t GetSessionId() const { return channel_->GetSessionId(); }
    bool Replied() const { return channel_->Replied(); }

  private:
    std::shared_ptr<ReplyChannel> channel_;
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_METHOD_SERVER_H
