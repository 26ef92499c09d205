#include <gtest/gtest.h>

#include <string>

#include "ara/com/com_error_domain.h"
#include "ara/core/error_code.h"
#include "ara/core/exception.h"
#include "ara/core/future_error_domain.h"
#include "ara/core/result.h"

namespace ara::core {
namespace {

using ara::com::ComErrc;
using ara::com::GetComErrorDomain;

TEST(ErrorDomainTest, ComDomainMessagesByCode) {
    const ErrorDomain& com = GetComErrorDomain();
    EXPECT_STREQ(com.Name(), "Com");
    EXPECT_EQ(&com, &GetComErrorDomain()) << "one instance per process";
    const std::pair<int, const char*> expected[] = {
        {0, "ok"},
        {1, "kServiceNotAvailable"},
        {2, "kMaxSamplesExceeded"},
        {3, "kNetworkBindingFailure"},
        {11, "kServiceNotOffered"},
        {14, "kCommunicationStackError"},
        {17, "kWrongMethodCallProcessingMode"},
    };
    for (const auto& [code, text] : expected) {
        EXPECT_STREQ(com.Message(code), text) << "code " << code;
    }
    const std::string unknown = com.Message(99);
    EXPECT_EQ(com.Message(5), unknown) << "kPeerIsUnreachable has no text of its own";
    EXPECT_EQ(com.Message(-1), unknown);
    EXPECT_NE(unknown, "ok");
}

TEST(ErrorDomainTest, ErrorCodesCompareByDomainAndValue) {
    const ErrorCode a = ara::com::MakeErrorCode(ComErrc::kNetworkBindingFailure, 7);
    const ErrorCode b = ComErrc::kNetworkBindingFailure;
    EXPECT_EQ(a, b) << "support data takes no part in the comparison";
    EXPECT_EQ(a.SupportData(), 7U);
    EXPECT_EQ(a.Value(), 3);
    EXPECT_EQ(a.Domain(), GetComErrorDomain());
    EXPECT_EQ(a.Message(), "kNetworkBindingFailure");
    EXPECT_NE(a, ErrorCode(ComErrc::kServiceNotAvailable));
    // Same number, other domain.
    EXPECT_NE(ErrorCode(101, GetComErrorDomain()), ErrorCode(future_errc::broken_promise));
    EXPECT_STREQ(GetFutureErrorDomain().Name(), "Future");
    EXPECT_THROW(a.ThrowAsException(), Exception);
}

}  // namespace
}  // namespace ara::core
