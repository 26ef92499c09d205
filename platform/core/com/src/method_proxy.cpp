#include "vorx/vcc/method_proxy.h"

#include <utility>

#include "application_error_domain.h"
#include "com_log.h"
#include "orx/sync/mutex.h"

namespace vorx::vcc {
namespace {

using api::types::SerializeType;
using ara::com::ComErrc;
using ara::com::MakeErrorCode;

// A promise replaced by a newer request of the same session is kept (never completed) so its
// caller times out instead of seeing a broken promise; this many at most.
constexpr size_t kMaxParkedPromises = 256;

bool IsUsableSerializeType(SerializeType type) {
    // The core has one encoder (CDR); SOME/IP and DDS settings both use it.
    return type == SerializeType::SOMEIP || type == SerializeType::CDR;
}

}  // namespace

PendingReply::~PendingReply() = default;

MethodProxyBase::MethodProxyBase(Settings settings, std::shared_ptr<Driver> driver, ClientId client)
    : settings_(std::move(settings)), driver_(std::move(driver)), client_(client) {}

MethodProxyBase::~MethodProxyBase() = default;

uint16_t MethodProxyBase::GetNextSessionId() const {
    orx::sync::MutexLock lock(mutex_);
    return sessionId_;
}

void MethodProxyBase::SetNextSessionId(uint16_t sessionId) {
    orx::sync::MutexLock lock(mutex_);
    sessionId_ = sessionId;
}

size_t MethodProxyBase::WaitingCount() const {
    orx::sync::MutexLock lock(mutex_);
    return promises_.size();
}

void MethodProxyBase::Detach() {
    orx::sync::MutexLock lock(mutex_);
    driver_.reset();
    client_ = 0;
}

void MethodProxyBase::LogRequestStart() const {
    ComLog().LogVerbose() << "Proxy start to send method request[methodEntityId="
                          << settings_.entityId << "]";
}

bool MethodProxyBase::SendsObjects() const {
    orx::sync::MutexLock lock(mutex_);
    return driver_ && driver_->GetPayloadMode() == PayloadMode::kObjects;
}

bool MethodProxyBase::CheckSerializeConfig(PendingReply& pending) const {
    const auto configured = static_cast<SerializeType>(settings_.requestSerializeConfig);
    if (!IsUsableSerializeType(configured)) {
        ComLog().LogError() << "Wrong method serialize config, serialize error!";
        pending.Fail(MakeErrorCode(ComErrc::kNetworkBindingFailure));
        return false;
    }
    if (!IsUsableSerializeType(settings_.requestSerializeType)) {
        ComLog().LogError() << "Wrong serialize type, serialize error!";
        pending.Fail(MakeErrorCode(ComErrc::kNetworkBindingFailure));
        return false;
    }
    return true;
}

void MethodProxyBase::FailSerialize(PendingReply& pending) const {
    ComLog().LogWarn(Limit("MethodProxy_RequestSerialize"))
        << "[MethodProxyImpl]"
        << "[Method request serialize failed, maybe length filed is less than actual "
           "size][methodEntityId="
        << settings_.entityId << "]";
    pending.Fail(MakeErrorCode(ComErrc::kNetworkBindingFailure));
}

void MethodProxyBase::SaveAndSend(Payload payload, const std::shared_ptr<PendingReply>& pending) {
    std::shared_ptr<Driver> driver;
    ClientId client = 0;
    uint16_t sessionId = 0;
    bool replaced = false;
    {
        orx::sync::MutexLock lock(mutex_);
        driver = driver_;
        client = client_;
        if (driver) {
            sessionId = sessionId_++;  // wraps from 65535 to 0
            auto [it, inserted] = promises_.emplace(sessionId, pending);
            if (!inserted) {
                lost_.push_back(std::move(it->second));
                if (lost_.size() > kMaxParkedPromises) {
                    lost_.pop_front();
                }
                it->second = pending;
                replaced = true;
            }
        }
    }
    if (!driver) {
        ComLog().LogWarn(Limit("MethodProxy_Driver_Nullptr"))
            << "[MethodProxyImpl]"
            << "[Method driver is nullptr, request failed][id=" << settings_.entityId << "]";
        pending->Fail(MakeErrorCode(ComErrc::kNetworkBindingFailure));
        return;
    }
    if (replaced) {
        ComLog().LogWarn(Limit("MethodProxy_SavePromise"))
            << "[MethodProxyImpl]"
            << "[Method has been lost, and the new request will replace the old one][entityId="
            << settings_.entityId << ", sessionId=" << sessionId << "]";
    }
    const size_t dataSize = payload.ByteSize();
    MethodCall call;
    call.entityId = settings_.entityId;
    call.sessionId = sessionId;
    call.payload = std::move(payload);
    if (driver->SendRequest(client, std::move(call))) {
        ComLog().LogDebug() << "Method proxy send request end[methodUUID=" << settings_.methodUuid
                            << ", sessionId=" << sessionId << ", dataSize=" << dataSize << "]";
        return;
    }
    ComLog().LogWarn(Limit("MethodProxy_Request_Failed"))
        << "[MethodProxyImpl]"
        << "[Method request failed][id=" << settings_.entityId << "]";
    {
        orx::sync::MutexLock lock(mutex_);
        auto it = promises_.find(sessionId);
        if (it != promises_.end() && it->second == pending) {
            promises_.erase(it);
        }
    }
    pending->Fail(MakeErrorCode(ComErrc::kNetworkBindingFailure));
}

std::shared_ptr<PendingReply> MethodProxyBase::TakePending(uint16_t sessionId) {
    orx::sync::MutexLock lock(mutex_);
    auto it = promises_.find(sessionId);
    if (it == promises_.end()) {
        return nullptr;
    }
    std::shared_ptr<PendingReply> pending = std::move(it->second);
    promises_.erase(it);
    return pending;
}

void MethodProxyBase::OnDataAvailable(const MethodReply& reply) {
    const uint32_t entityId = settings_.entityId;
    const uint16_t sessionId = reply.sessionId;
    ComLog().LogVerbose() << "Method Proxy data available enter......";
    ComLog().LogDebug() << "Get method reply[methodEntityId=" << entityId
                        << ", sessionId=" << sessionId << ", dataSize=" << reply.payload.ByteSize()
                        << "]";
    if (reply.tlsFailure) {
        ComLog().LogWarn(Limit("MethodProxyImpl_TlsShakeHandsCallback_2"))
            << "[MethodProxyImpl]"
            << "[TLS error code kPeerIsUnreachable is set][methodEntityId=" << entityId
            << ", sessionId=" << sessionId << "]";
        if (auto pending = TakePending(sessionId)) {
            pending->Fail(MakeErrorCode(ComErrc::kPeerIsUnreachable));
        }
        return;
    }
    std::shared_ptr<PendingReply> pending = TakePending(sessionId);
    if (!pending) {
        ComLog().LogWarn() << "[MethodProxyImpl]"
                           << "[Unexpected session id][sessionId=" << sessionId
                           << ", methodEntityId=" << entityId << "]";
        return;
    }
    if (reply.e2eResult != 0) {
        ComLog().LogWarn() << "Setting Response with E2E Error Code for [entityId = " << entityId
                           << "]";
        pending->Fail(MakeErrorCode(ComErrc::kCommunicationStackError, reply.e2eResult));
        return;
    }
    switch (reply.kind) {
        case ReplyKind::kError:
            HandleErrorReply(reply, pending);
            return;
        case ReplyKind::kValue:
            if (!pending->Complete(reply.payload)) {
                ComLog().LogWarn(Limit("MethodProxy_Deseriaize_Fail"))
                    << "[MethodProxyImpl]"
                    << "[Invalid return value for method. Please check the consistency of the "
                       "return data type][methodEntityId="
                    << entityId << ", sessionId=" << sessionId << "]";
                pending->Fail(MakeErrorCode(ComErrc::kCommunicationStackError));
            }
            return;
        case ReplyKind::kInvalid:
        default:
            ComLog().LogWarn(Limit("MethodProxy_Invalid_Reply"))
                << "[MethodProxyImpl]"
                << "[Invalid method reply for method][methodEntityId=" << entityId
                << ", sessionId=" << sessionId << "]";
            pending->Fail(MakeErrorCode(ComErrc::kCommunicationStackError));
            return;
    }
}

void MethodProxyBase::HandleErrorReply(const MethodReply& reply,
                                       const std::shared_ptr<PendingReply>& pending) {
    int32_t code = 0;
    if (!codec::DecodeValue(reply.errorCode.data(), reply.errorCode.size(), code)) {
        ComLog().LogWarn(Limit("MethodProxy_Invalid_Errorcode"))
            << "[MethodProxyImpl][Invalid return error code value][methodEntityId="
            << settings_.entityId << ", sessionId=" << reply.sessionId << "]";
        pending->Fail(MakeErrorCode(ComErrc::kCommunicationStackError));
        return;
    }
    const uint64_t domainId = reply.errorDomainId;
    if (domainId == ara::com::GetComErrorDomain().Id() ||
        domainId == ara::core::GetFutureErrorDomain().Id()) {
        const ara::core::ErrorDomain& domain = domainId == ara::com::GetComErrorDomain().Id()
                                                   ? ara::com::GetComErrorDomain()
                                                   : ara::core::GetFutureErrorDomain();
        ComLog().LogDebug() << "Receive dynamic error errorcode " << code << " for method "
                            << settings_.methodUuid;
        pending->Fail(ara::core::ErrorCode(code, domain));
        return;
    }
    for (const auto& declared : settings_.errorDomains) {
        if (declared.id == domainId) {
            ComLog().LogDebug() << "Receive application error errorcode " << code << " for method "
                                << settings_.methodUuid;
            pending->Fail(
                ara::core::ErrorCode(code, GetApplicationErrorDomain(domainId, declared.name)));
            return;
        }
    }
    ComLog().LogWarn(Limit("MethodProxy_Unregister_Errorcode"))
        << "[MethodProxyImpl][Receive unregistered error][errorDomain=" << domainId
        << ", errorCode=" << code << ", methodMessage=" << reply.errorMessage << "]";
    pending->Fail(MakeErrorCode(ComErrc::kCommunicationStackError, static_cast<uint32_t>(code)));
}

void MethodProxyBase::DestroyWaitingPromise(const ara::core::ErrorCode& error) {
    std::map<uint16_t, std::shared_ptr<PendingReply>> waiting;
    {
        orx::sync::MutexLock lock(mutex_);
        waiting.swap(promises_);
    }
    for (auto& [sessionId, pending] : waiting) {
        ComLog().LogInfo() << "Server is disappeared, promise for session " << sessionId;
        pending->Fail(error);
    }
}

}  // namespace vorx::vcc
