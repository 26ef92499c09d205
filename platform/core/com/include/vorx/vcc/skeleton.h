#ifndef VORX_VCC_SKELETON_H
#define VORX_VCC_SKELETON_H

#include <cstdint>
#include <functional>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "vorx/vcc/codec.h"
#include "vorx/vcc/driver/driver.h"
#include "vorx/vcc/export.h"
#include "vorx/vcc/handle_type.h"
#include "vorx/vcc/method_server.h"

namespace vorx::vcc {

// The handler type of a method with return type R and arguments Args. Spelled through this
// template so that RegisterMethod<R, Args...> takes any callable (lambdas included) without
// trying to deduce its argument list from it.
template <class R, class... Args>
struct MethodHandlerOf {
    using type = std::function<void(const Args&..., Responder<R>)>;
};

// The offering side of one service instance over the driver that the DriverRegistry chooses for
// the description's binding: methods served by handlers, events published to subscribers.
//
// Threads: every member may be called from any thread. Method handlers run on the driver's
// server thread, one at a time; a handler that must wait should keep its Responder and return.
class VCC_EXPORT Skeleton {
  public:
    explicit Skeleton(const ServiceDescription& desc);
    // Stops offering; waits for a running method handler unless called from inside one.
    ~Skeleton();
    Skeleton(const Skeleton&) = delete;
    Skeleton& operator=(const Skeleton&) = delete;

    // Announces the service. True when it is offered (also when it was offered already); false
    // when the driver refused it.
    bool OfferService();
    // Withdraws the offer; no-op when not offered. Replies sent later are not delivered.
    void StopOfferService();
    bool IsOffered() const;
    const ServiceDescription& GetDescription() const;

    // Serves method `entityId`: `handler` gets the decoded arguments and a Responder. Replaces an
    // earlier handler of the same entity. Requests whose arguments cannot be read are dropped
    // with a warning. Use as RegisterMethod<ReturnType, ArgType...>(id, handler).
    template <class R, class... Args>
    void RegisterMethod(uint32_t entityId, typename MethodHandlerOf<R, Args...>::type handler) {
        AddMethod(entityId, [handler = std::move(handler)](
                                const MethodCall& call,
                                const std::shared_ptr<ReplyChannel>& channel) {
            std::tuple<std::decay_t<Args>...> args;
            if (!codec::ReadArgs(call.payload, args)) {
                return false;
            }
            std::apply([&](const auto&... values) { handler(values..., Responder<R>(channel)); },
                       args);
            return true;
        });
    }

    // Publishes one sample of event `entityId`. False when the service is not offered or the
    // sample could not be encoded or sent.
    template <class T>
    bool Send(uint32_t entityId, const T& sample) {
        Payload payload;
        if (PublishesObjects()) {
            payload = Payload::FromObject(std::make_shared<const T>(sample));
        } else {
            std::vector<uint8_t> bytes;
            if (!codec::EncodeValue(sample, bytes)) {
                LogEncodeFailure(entityId);
                return false;
            }
            payload = Payload::FromBytes(std::move(bytes));
        }
        return Publish(entityId, std::move(payload));
    }

  private:
    using MethodHandler =
        std::function<bool(const MethodCall&, const std::shared_ptr<ReplyChannel>&)>;

    void AddMethod(uint32_t entityId, MethodHandler handler);
    bool PublishesObjects() const;
    bool Publish(uint32_t entityId, Payload payload);
    void LogEncodeFailure(uint32_t entityId) const;

    class Core;
    std::shared_ptr<Core> core_;
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_SKELETON_H
