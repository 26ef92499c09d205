#include "vorx/vcc/method_server.h"

#include "com_log.h"

namespace vorx::vcc {

ReplyChannel::ReplyChannel(std::shared_ptr<Driver> driver, ProviderId provider,
                           const MethodCall& call)
    : driver_(std::move(driver)),
      provider_(provider),
      client_(call.clientId),
      entityId_(call.entityId),
      sessionId_(call.sessionId) {}

bool ReplyChannel::Send(MethodReply reply) {
    if (replied_.exchange(true)) {
        return false;
    }
    reply.clientId = client_;
    reply.entityId = entityId_;
    reply.sessionId = sessionId_;
    if (!driver_->SendReply(provider_, std::move(reply))) {
        ComLog().LogWarn(Limit("Skeleton_SendReply_Failed"))
            << "[Skeleton][Method reply failed][methodEntityId=" << entityId_
            << ", sessionId=" << sessionId_ << "]";
        return false;
    }
    return true;
}

bool ReplyChannel::SendsObjects() const {
    return driver_->GetPayloadMode() == PayloadMode::kObjects;
}

void ReplyChannel::LogEncodeFailure() const {
    ComLog().LogWarn(Limit("Skeleton_ReplySerialize"))
        << "[Skeleton][Method reply serialize failed][methodEntityId=" << entityId_
        << ", sessionId=" << sessionId_ << "]";
}

}  // namespace vorx::vcc
