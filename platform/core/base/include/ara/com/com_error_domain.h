#ifndef ARA_COM_COM_ERROR_DOMAIN_H
#define ARA_COM_COM_ERROR_DOMAIN_H

#include <cstdint>

#include "ara/core/error_code.h"
#include "ara/core/error_domain.h"
#include "vorx/vcc/export.h"

namespace ara::com {

// Errors of the communication core, as method calls and subscriptions report them.
enum class ComErrc : std::int32_t {
    kServiceNotAvailable = 1,
    kMaxSamplesExceeded = 2,
    kNetworkBindingFailure = 3,  // the request could not be handed to the binding
    kPeerIsUnreachable = 5,      // TLS handshake with the peer failed
    kServiceNotOffered = 11,
    kCommunicationStackError = 14,
    kWrongMethodCallProcessingMode = 17,
};

// The communication error domain, named "Com". Message() gives the enumerator's name for the
// codes above (5 excepted), "ok" for 0 and "unknown ComErrc" for anything else.
class VCC_EXPORT ComErrorDomain final : public ara::core::ErrorDomain {
  public:
    static constexpr IdType kId = 0x8000000000001267ULL;
    constexpr ComErrorDomain() noexcept : ErrorDomain(kId) {}
    const char* Name() const override;
    const char* Message(CodeType code) const override;
};

// The single instance of the domain; valid for the whole life of the process.
VCC_EXPORT const ara::core::ErrorDomain& GetComErrorDomain() noexcept;

VCC_EXPORT ara::core::ErrorCode MakeErrorCode(ComErrc code, std::uint64_t supportData = 0) noexcept;

}  // namespace ara::com

#endif  // ARA_COM_COM_ERROR_DOMAIN_H
