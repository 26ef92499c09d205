#ifndef VORX_VCC_METHOD_PROXY_H
#define VORX_VCC_METHOD_PROXY_H

#include <cstdint>
#include <deque>
#include <future>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ara/com/com_error_domain.h"
#include "ara/core/error_code.h"
#include "ara/core/future.h"
#include "ara/core/promise.h"
#include "orx/sync/mutex.h"
#include "vorx/vcc/api/types/entity_info.h"
#include "vorx/vcc/codec.h"
#include "vorx/vcc/driver/driver.h"
#include "vorx/vcc/export.h"

namespace vorx::vcc {

// One request that waits for its reply: the promise of its caller's future, without its type.
class VCC_EXPORT PendingReply {
  public:
    virtual ~PendingReply();
    // Completes the caller's future with `error`. Called at most once per request.
    virtual void Fail(const ara::core::ErrorCode& error) = 0;
    // Completes the caller's future with the value read from `value`. Returns false, completing
    // nothing, when the payload cannot be read as the method's return type.
    virtual bool Complete(const Payload& value) = 0;
};

// The request channel of one method on one proxy, without the return type: session numbers, the
// table of waiting requests, reply matching, error mapping and the log lines.
//
// Sessions: each request takes the current session id, which then advances by one and wraps from
// 65535 to 0 (the first request of a new proxy uses 1). Replies are matched by session id within
// this method of this proxy. A request whose session id is still waiting replaces the waiting one
// ("Method has been lost" warning); the replaced caller's future then never becomes ready (its
// promise is parked until the method proxy dies, the last 256 at most), so that caller ends by its
// own timeout.
//
// Threads: Request may be called from any thread; replies arrive on the driver's client thread
// and complete the futures there, so `then` continuations run on that thread and must not wait
// for another reply of the same driver. The table is guarded by an internal mutex that is never
// held while a future is completed.
class VCC_EXPORT MethodProxyBase {
  public:
    // What a method proxy needs to know about its method.
    struct Settings {
        uint32_t entityId{0};
        std::string methodUuid;  // text naming the method in debug lines
        std::vector<api::types::ErrorDomainDescription> errorDomains;  // application domains
        api::types::SerializeType requestSerializeType{api::types::SerializeType::SOMEIP};
        uint8_t requestSerializeConfig{0};  // SerializeSetting::serializeType of the request
    };

    MethodProxyBase(Settings settings, std::shared_ptr<Driver> driver, ClientId client);
    virtual ~MethodProxyBase();
    MethodProxyBase(const MethodProxyBase&) = delete;
    MethodProxyBase& operator=(const MethodProxyBase&) = delete;

    uint32_t GetEntityId() const { return settings_.entityId; }
    const std::string& GetMethodUuid() const { return settings_.methodUuid; }

    // Handles one reply of this method (called by the proxy on the driver's client thread).
    void OnDataAvailable(const MethodReply& reply);
    // Completes every waiting request with `error` and empties the table (service lost, proxy
    // gone). Requests sent later are not affected.
    void DestroyWaitingPromise(const ara::core::ErrorCode& error);

    // The session id the next request takes.
    uint16_t GetNextSessionId() const;
    // Lets the next request take `sessionId`; numbering continues from there.
    void SetNextSessionId(uint16_t sessionId);
    // Requests that wait for their reply.
    size_t WaitingCount() const;

    // Cuts the method off its driver: later requests fail at once (the proxy is gone).
    void Detach();

  protected:
    // Logs the start of a request.
    void LogRequestStart() const;
    // True when requests should carry objects rather than bytes.
    bool SendsObjects() const;
    // Checks that the request's serialization settings are usable; on failure logs the reason and
    // fails `pending`.
    bool CheckSerializeConfig(PendingReply& pending) const;
    // Logs that encoding the request failed and fails `pending`.
    void FailSerialize(PendingReply& pending) const;
    // Registers `pending` under the next session id and sends the request.
    void SaveAndSend(Payload payload, const std::shared_ptr<PendingReply>& pending);

  private:
    std::shared_ptr<PendingReply> TakePending(uint16_t sessionId);
    void HandleErrorReply(const MethodReply& reply, const std::shared_ptr<PendingReply>& pending);

    const Settings settings_;
    mutable orx::sync::Mutex mutex_;
    std::shared_ptr<Driver> driver_ GUARDED_BY(mutex_);
    ClientId client_ GUARDED_BY(mutex_){0};
    uint16_t sessionId_ GUARDED_BY(mutex_){1};
    std::map<uint16_t, std::shared_ptr<PendingReply>> promises_ GUARDED_BY(mutex_);
    std::deque<std::shared_ptr<PendingReply>> lost_ GUARDED_BY(mutex_);
};

// The typed promise of one waiting request.
template <class R>
class PendingReplyImpl final : public PendingReply {
  public:
    ara::core::Future<R, ara::core::ErrorCode> GetFuture() { return promise_.get_future(); }

    void Fail(const ara::core::ErrorCode& error) override {
        try {
            promise_.SetError(error);
        } catch (const std::future_error&) {
            // Completed already; the first outcome stands.
        }
    }

    bool Complete(const Payload& value) override {
        R result{};
        if (!codec::ReadValue(value, result)) {
            return false;
        }
        try {
            promise_.set_value(std::move(result));
        } catch (const std::future_error&) {
            // Completed already; the first outcome stands.
        }
        return true;
    }

  private:
    ara::core::Promise<R, ara::core::ErrorCode> promise_;
};

// The method proxy of one method with return type R (ReturnCode for the maintenance service).
// Made by Proxy::InitializeMethodProxy; see MethodProxyBase for sessions and threads.
template <class R>
class MethodProxyImpl final : public MethodProxyBase {
  public:
    using MethodProxyBase::MethodProxyBase;

    // Sends a request with `args` and returns the future of its reply. Never blocks on the
    // reply. The future holds: the decoded R; or an error of ComErrorDomain: 3
    // (kNetworkBindingFailure) at once when the request could not be sent or encoded, 1
    // (kServiceNotAvailable) when the service went away first, 5 on a TLS failure, 14
    // (kCommunicationStackError) for a reply that cannot be read or failed its E2E check; or the
    // error the server replied with.
    template <class... Args>
    ara::core::Future<R, ara::core::ErrorCode> Request(const Args&... args) {
        LogRequestStart();
        auto pending = std::make_shared<PendingReplyImpl<R>>();
        auto future = pending->GetFuture();
        if (!CheckSerializeConfig(*pending)) {
            return future;
        }
        Payload payload;
        if (SendsObjects()) {
            payload = codec::MakeArgsObject(args...);
        } else {
            std::vector<uint8_t> bytes;
            if (!codec::EncodeArgs(bytes, args...)) {
                FailSerialize(*pending);
                return future;
            }
            payload = Payload::FromBytes(std::move(bytes));
        }
        SaveAndSend(std::move(payload), pending);
        return future;
    }
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_METHOD_PROXY_H
