#ifndef VORX_VCC_APP_SERVICE_PROVIDER_H
#define VORX_VCC_APP_SERVICE_PROVIDER_H

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "vorx/vcc/app/deployment.h"
#include "vorx/vcc/app/field_value.h"
#include "vorx/vcc/export.h"
#include "vorx/vcc/method_server.h"
#include "vorx/vcc/skeleton.h"

namespace vorx::vcc::app {

// The handler type of ServeMethodSync, spelled through a template for the same reason as
// MethodHandlerOf: any callable is taken without deducing its argument list.
template <class R, class... Args>
struct SyncMethodHandlerOf {
    using type = std::function<R(const Args&...)>;
};

// The offering side of one deployed service instance: events to publish, methods to serve,
// fields to keep. Made by Runtime::Provide (or directly from a deployment).
//
// Traffic goes over the deployment's traffic binding (DDS, else process-local). A service
// deployed on SOME/IP as well is described and reported on SOME/IP too, but its traffic never
// travels there; a service deployed on SOME/IP only is reported and carries no traffic at all.
//
// Maintenance: Offer reports the process (RegisterNodePid), the events with their E2E settings,
// the methods and the fields to the DFX plug-in as the offering side, and registers the events'
// latency switch; StopOffer withdraws the events, methods and fields.
//
// Payload types are records of the core's encoders (declared with ORX_MAINTAIND_RECORD, or any
// type with a Members() list; integers, bool, texts, vectors, maps, sets). Thread-safe: every
// member may be called from any thread. Method handlers run on the driver's server thread, one at
// a time.
class VCC_EXPORT ServiceProvider {
  public:
    explicit ServiceProvider(ServiceDeployment deployment);
    // StopOffer().
    ~ServiceProvider();
    ServiceProvider(const ServiceProvider&) = delete;
    ServiceProvider& operator=(const ServiceProvider&) = delete;

    const ServiceDeployment& Deployment() const;

    // Offers the service and reports it. True when offered (also when offered already, and for a
    // SOME/IP-only deployment, which is reported only); false when the driver refused.
    bool Offer();
    // Withdraws the offer and reports the withdrawal; no-op when not offered.
    void StopOffer();
    bool IsOffered() const;

    // Publishes one sample of `event`. False when the event is not deployed (logged), the service
    // is not offered or carries no traffic, or the sample could not be sent.
    template <class T>
    bool Publish(const std::string& event, const T& sample) {
        uint32_t entityId = 0;
        const std::shared_ptr<Skeleton> skeleton = EventSkeleton(event, entityId);
        return skeleton != nullptr && skeleton->Send(entityId, sample);
    }

    // Serves `method`: `handler` gets the decoded arguments and a Responder to reply with, now or
    // later, from any thread. Use as ServeMethod<R, Args...>("Name", handler). False (logged) when
    // the method is not deployed. May be called before or after Offer.
    template <class R, class... Args>
    bool ServeMethod(const std::string& method,
                     typename MethodHandlerOf<R, Args...>::type handler) {
        uint32_t entityId = 0;
        const std::shared_ptr<Skeleton> skeleton = MethodSkeleton(method, entityId);
        if (skeleton == nullptr) {
            return false;
        }
        skeleton->RegisterMethod<R, Args...>(entityId, std::move(handler));
        return true;
    }

    // The same with a handler that returns the reply value at once.
    template <class R, class... Args>
    bool ServeMethodSync(const std::string& method,
                         typename SyncMethodHandlerOf<R, Args...>::type handler) {
        return ServeMethod<R, Args...>(
            method, [handler = std::move(handler)](const Args&... args, Responder<R> responder) {
                responder.Reply(handler(args...));
            });
    }

    // Keeps the value of `field`, starting at `initial`: serves its getter (the current value)
    // and setter (`onSet` decides the value taken, by default the one requested; the reply is the
    // value taken), and publishes every change on its notifier. nullptr (logged) when the field is
    // not deployed.
    template <class T>
    std::shared_ptr<FieldValue<T>> ServeField(const std::string& field, const T& initial,
                                              std::function<T(const T&)> onSet = nullptr) {
        const FieldDeployment* deployment = FindField(field);
        if (deployment == nullptr) {
            return nullptr;
        }
        const std::shared_ptr<Skeleton> skeleton = TrafficSkeleton();
        const uint32_t notifierId = deployment->notifier ? deployment->notifier->entityId : 0;
        std::weak_ptr<Skeleton> publisher = skeleton;
        auto value =
            std::make_shared<FieldValue<T>>(initial, [publisher, notifierId](const T& current) {
                const auto live = publisher.lock();
                return live != nullptr && notifierId != 0 && live->Send(notifierId, current);
            });
        if (skeleton == nullptr) {
            return value;
        }
        std::weak_ptr<FieldValue<T>> weak = value;
        if (deployment->getter) {
            skeleton->RegisterMethod<T>(deployment->getter->entityId,
                                        [weak](Responder<T> responder) {
                                            if (auto current = weak.lock()) {
                                                responder.Reply(current->Get());
                                            }
                                        });
        }
        if (deployment->setter) {
            skeleton->RegisterMethod<T, T>(
                deployment->setter->entityId,
                [weak, onSet](const T& requested, Responder<T> responder) {
                    if (auto current = weak.lock()) {
                        responder.Reply(current->Set(onSet ? onSet(requested) : requested));
                    }
                });
        }
        return value;
    }

  private:
    // The skeleton and entity id to publish `event` with; nullptr when it cannot be published.
    std::shared_ptr<Skeleton> EventSkeleton(const std::string& event, uint32_t& entityId) const;
    // The skeleton and entity id to serve `method` with; nullptr when it is not deployed.
    std::shared_ptr<Skeleton> MethodSkeleton(const std::string& method, uint32_t& entityId) const;
    // The deployment of `field`; nullptr (logged) when it is not deployed.
    const FieldDeployment* FindField(const std::string& field) const;
    // nullptr for a deployment without traffic binding.
    std::shared_ptr<Skeleton> TrafficSkeleton() const;

    class Core;
    std::shared_ptr<Core> core_;
};

}  // namespace vorx::vcc::app

#endif  // VORX_VCC_APP_SERVICE_PROVIDER_H
