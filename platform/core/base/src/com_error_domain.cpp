#include "ara/com/com_error_domain.h"

namespace ara::com {

const char* ComErrorDomain::Name() const {
    return "Com";
}

const char* ComErrorDomain::Message(CodeType code) const {
    switch (code) {
        case 0:
            return "ok";
        case static_cast<CodeType>(ComErrc::kServiceNotAvailable):
            return "kServiceNotAvailable";
        case static_cast<CodeType>(ComErrc::kMaxSamplesExceeded):
            return "kMaxSamplesExceeded";
        case static_cast<CodeType>(ComErrc::kNetworkBindingFailure):
            return "kNetworkBindingFailure";
        case static_cast<CodeType>(ComErrc::kServiceNotOffered):
            return "kServiceNotOffered";
        case static_cast<CodeType>(ComErrc::kCommunicationStackError):
            return "kCommunicationStackError";
        case static_cast<CodeType>(ComErrc::kWrongMethodCallProcessingMode):
            return "kWrongMethodCallProcessingMode";
        default:
            // kPeerIsUnreachable (5) has no text of its own either.
            return "unknown ComErrc";
    }
}

const ara::core::ErrorDomain& GetComErrorDomain() noexcept {
    static const ComErrorDomain domain;  // trivially destructible: lives until the end
    return domain;
}

ara::core::ErrorCode MakeErrorCode(ComErrc code, std::uint64_t supportData) noexcept {
    return ara::core::ErrorCode(static_cast<ara::core::ErrorDomain::CodeType>(code),
                                GetComErrorDomain(), supportData);
}

}  // namespace ara::com
