#ifndef VORX_VCC_PROXY_H
#define VORX_VCC_PROXY_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <typeinfo>
#include <vector>

#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/api/types/entity_info.h"
#include "vorx/vcc/codec.h"
#include "vorx/vcc/driver/driver.h"
#include "vorx/vcc/export.h"
#include "vorx/vcc/handle_type.h"
#include "vorx/vcc/method_proxy.h"

namespace vorx::vcc {

// The using side of one service instance: its method proxies and event subscriptions, over the
// driver that the DriverRegistry chooses for the handle's binding.
//
// Threads: every member may be called from any thread. Replies complete futures on the driver's
// client thread; receive handlers run on this proxy's event thread (started on first use).
// When the driver reports that the offer went away, every waiting request of every method proxy
// fails with kServiceNotAvailable; the proxy itself stays usable and talks to the service again
// once it is offered anew.
class VCC_EXPORT Proxy {
  public:
    // Starts searching for a service described for DDS (service id, instance id text, service
    // name = service path, network). The handler gets the current list of matching offers on
    // every change (an empty list when the last one goes away), on the driver's discovery thread,
    // also once soon after the start if offers are known already. Several searches may run at
    // once. Returns a handle with id 0 when the search cannot start (logged).
    static FindServiceHandle StartFindService(
        const FindServiceHandler& handler,
        const std::shared_ptr<driver::dds::DDSServiceDiscoveryInfo>& info);
    // The same for any binding, from a plain description.
    static FindServiceHandle StartFindService(const FindServiceHandler& handler,
                                              const ServiceDescription& desc);
    // After it returns the handler is never called again: a running call is waited for, unless
    // StopFindService is called from inside the handler. Unknown handles are ignored.
    static void StopFindService(const FindServiceHandle& handle);

    explicit Proxy(const HandleType& handle);
    // Tears down the method proxies (their waiting requests fail with kServiceNotAvailable and
    // later requests fail at once) and the subscriptions; waits for a running reply or receive
    // handler unless called from inside one.
    ~Proxy();
    Proxy(const Proxy&) = delete;
    Proxy& operator=(const Proxy&) = delete;

    const HandleType& GetHandle() const;

    // Creates the method proxy for the method that `info` describes (entity id =
    // info->GetEntityId()), keeps it and returns it; returns the existing one when it was created
    // before. nullptr (error logged) when `info` is null, the entity id is bound to another
    // return type, or the binding refuses the method.
    template <class R>
    std::shared_ptr<MethodProxyImpl<R>> InitializeMethodProxy(
        const std::shared_ptr<api::types::MethodInfo>& info) {
        if (!info) {
            LogNullMethodInfo();
            return nullptr;
        }
        auto existing = LookupMethod(info->GetEntityId(), typeid(R), true);
        if (existing || HasMethod(info->GetEntityId())) {
            return std::static_pointer_cast<MethodProxyImpl<R>>(existing);
        }
        MethodBinding binding;
        if (!PrepareMethod(*info, binding)) {
            return nullptr;
        }
        auto created = std::make_shared<MethodProxyImpl<R>>(
            std::move(binding.settings), std::move(binding.driver), binding.client);
        return std::static_pointer_cast<MethodProxyImpl<R>>(
            AddMethod(info->GetEntityId(), typeid(R), created));
    }

    // The method proxy of `entityId`, nullptr when none was created for return type R.
    template <class R>
    std::shared_ptr<MethodProxyImpl<R>> GetMethodProxy(uint32_t entityId) const {
        return std::static_pointer_cast<MethodProxyImpl<R>>(
            LookupMethod(entityId, typeid(R), false));
    }

    // Settings of the event thread that runs receive handlers. The priority is recorded only
    // (the thread runs at normal priority); `queueSize` bounds the notices waiting for it.
    void SetEventThreadNumber(uint16_t priority, uint16_t queueSize);
    // `handler` is called on the event thread when new samples of `entityId` wait (once for
    // several samples that arrive together). Replaces an earlier handler; kept across
    // Unsubscribe.
    void SetReceiveHandler(const std::function<void()>& handler, const uint32_t& entityId);

    // Subscribes event `entityId`, keeping at most `cacheSize` unread samples (the oldest are
    // dropped first; 0 counts as 1). Returns false when the entity is subscribed already (warning
    // "Event subscription alreay initialized " + entity id) or the binding refuses it.
    template <class T>
    bool Subscribe(const uint32_t& entityId, const std::shared_ptr<api::types::EventInfo>& info,
                   size_t cacheSize) {
        return SubscribeEntity(entityId, info.get(), cacheSize);
    }
    // Hands the waiting samples of `entityId` (at most maxCount) to `callback` in arrival order
    // and returns how many it handed over. Samples that cannot be read as T are dropped
    // (warning). Runs the callback on the calling thread.
    template <class T>
    size_t GetNewSamples(const std::function<void(SamplePtr<const T>)>& callback,
                         const uint32_t& entityId, size_t maxCount) {
        size_t delivered = 0;
        for (const EventSample& sample : TakeSamples(entityId, maxCount)) {
            auto value = std::make_unique<T>();
            if (!codec::ReadValue(sample.payload, *value)) {
                LogUnreadableSample(entityId, sample.sequence);
                continue;
            }
            ++delivered;
            if (callback) {
                callback(SamplePtr<const T>(std::move(value)));
            }
        }
        return delivered;
    }
    // Stops the subscription of `entityId` and drops its unread samples. No-op when not
    // subscribed.
    void Unsubscribe(const uint32_t& entityId);

  private:
    struct MethodBinding {
        MethodProxyBase::Settings settings;
        std::shared_ptr<Driver> driver;
        ClientId client{0};
    };

    // The method proxy of `entityId` when it was made for `type`; nullptr otherwise (logged when
    // `logMismatch` and it exists with another type).
    std::shared_ptr<MethodProxyBase> LookupMethod(uint32_t entityId, const std::type_info& type,
                                                  bool logMismatch) const;
    bool HasMethod(uint32_t entityId) const;
    bool PrepareMethod(const api::types::MethodInfo& info, MethodBinding& binding);
    // Keeps `created` unless another thread was first; returns the one kept (or nullptr if the
    // one kept has another type).
    std::shared_ptr<MethodProxyBase> AddMethod(uint32_t entityId, const std::type_info& type,
                                               std::shared_ptr<MethodProxyBase> created);
    bool SubscribeEntity(uint32_t entityId, const api::types::EventInfo* info, size_t cacheSize);
    std::vector<EventSample> TakeSamples(uint32_t entityId, size_t maxCount);
    void LogUnreadableSample(uint32_t entityId, uint64_t sequence) const;
    void LogNullMethodInfo() const;

    class Core;
    std::shared_ptr<Core> core_;
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_PROXY_H
