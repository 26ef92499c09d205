// The offering side of one maintenance service straight on the core's driver. Unlike the core's
// Skeleton it hands each handler the raw request, so the daemon decides what an unreadable
// request gets (an answer with an error code) instead of the request being dropped.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ingest/report_check.h"
#include "orx/sync/mutex.h"
#include "vorx/serialize/cdr.h"
#include "vorx/vcc/codec.h"
#include "vorx/vcc/driver/driver.h"
#include "vorx/vcc/handle_type.h"
#include "vorx/vcc/method_server.h"

namespace orx::maintaind::daemon {

class MethodServer {
  public:
    // Gets the request and the channel its answer goes back on. Runs on the driver's server
    // thread, one request at a time: it must not block; it may keep the channel and answer later
    // from any thread.
    using Handler = std::function<void(const vorx::vcc::MethodCall&,
                                       const std::shared_ptr<vorx::vcc::ReplyChannel>&)>;

    MethodServer(vorx::vcc::ServiceDescription desc, std::shared_ptr<vorx::vcc::Driver> driver);
    // StopOffer().
    ~MethodServer();
    MethodServer(const MethodServer&) = delete;
    MethodServer& operator=(const MethodServer&) = delete;

    // Serves method `entityId`. REQUIRES: called before Offer.
    void Register(uint32_t entityId, Handler handler);

    // True when method `entityId` has a handler.
    bool Serves(uint32_t entityId) const { return handlers_.count(entityId) > 0; }

    // Announces the service. False (logged) when the driver refuses it.
    bool Offer();
    // Withdraws it; once this returns no handler runs (unless called from inside one).
    void StopOffer();
    bool IsOffered() const;
    const vorx::vcc::ServiceDescription& Description() const { return desc_; }

    // Publishes one sample of event `entityId`. False when not offered, not encodable or refused.
    template <class T>
    bool Publish(uint32_t entityId, const T& sample) {
        vorx::vcc::Payload payload;
        if (driver_->GetPayloadMode() == vorx::vcc::PayloadMode::kObjects) {
            payload = vorx::vcc::Payload::FromObject(std::make_shared<const T>(sample));
        } else {
            std::vector<uint8_t> bytes;
            if (!vorx::vcc::codec::EncodeValue(sample, bytes)) {
                return false;
            }
            payload = vorx::vcc::Payload::FromBytes(std::move(bytes));
        }
        return PublishPayload(entityId, std::move(payload));
    }

  private:
    void Dispatch(vorx::vcc::ProviderId provider, const vorx::vcc::MethodCall& call);
    bool PublishPayload(uint32_t entityId, vorx::vcc::Payload payload);

    const vorx::vcc::ServiceDescription desc_;
    const std::shared_ptr<vorx::vcc::Driver> driver_;
    std::map<uint32_t, Handler> handlers_;  // filled before Offer, read-only afterwards
    mutable orx::sync::Mutex mutex_;
    vorx::vcc::ProviderId provider_ GUARDED_BY(mutex_){0};
    orx::sync::Mutex offerMutex_;  // serialises Offer and StopOffer
};

// Reads the single argument of a request into `out`, from either payload form. "" on success,
// else what is wrong with it. Bytes are decoded within `limits`.
template <class T>
std::string ReadRequest(const vorx::vcc::Payload& payload, const RequestLimits& limits, T& out) {
    if (payload.HasObject()) {
        const T* object = payload.GetObject<T>();
        if (object == nullptr) {
            return "request holds an object of another type";
        }
        out = *object;
        return "";
    }
    if (!payload.HasBytes() || payload.ByteSize() == 0) {
        return "empty request";
    }
    if (payload.ByteSize() > limits.maxRequestBytes) {
        return "request of " + std::to_string(payload.ByteSize()) + " bytes is over the limit of " +
               std::to_string(limits.maxRequestBytes);
    }
    const std::vector<uint8_t>& bytes = payload.GetBytes();
    const vorx::serialize::DecodeStatus status =
        vorx::serialize::Decode(bytes.data(), bytes.size(), out, limits.decode);
    return status.ok() ? "" : status.Message();
}

}  // namespace orx::maintaind::daemon
