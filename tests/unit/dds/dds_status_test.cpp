// Cyclone's return codes become our error values, with a message naming what failed.
#include <gtest/gtest.h>

#include <dds/dds.h>

#include "vorx/driver/dds/dds_status.h"
#include "vorx/driver/dds/dds_transport.h"

namespace {

using vorx::driver::dds::DdsErrc;
using vorx::driver::dds::DdsStatus;
using vorx::driver::dds::DdsTransport;
using vorx::driver::dds::ParticipantSettings;
using vorx::driver::dds::TranslateReturnCode;
using vorx::driver::dds::TranslateReturnCodeValue;

TEST(DdsStatus, ReturnCodesTranslateToCodesAndMessages) {
    EXPECT_TRUE(TranslateReturnCode(0, "anything").ok());
    EXPECT_TRUE(TranslateReturnCode(12345, "an entity handle").ok());
    EXPECT_TRUE(TranslateReturnCode(0, "x").message().empty());

    const struct {
        int32_t rc;
        DdsErrc code;
        const char* name;
    } cases[] = {
        {DDS_RETCODE_BAD_PARAMETER, DdsErrc::kBadParameter, "DDS_RETCODE_BAD_PARAMETER"},
        {DDS_RETCODE_TIMEOUT, DdsErrc::kTimeout, "DDS_RETCODE_TIMEOUT"},
    };
    for (const auto& c : cases) {
        const DdsStatus status = TranslateReturnCode(c.rc, "write on topic \"T\"");
        EXPECT_FALSE(status.ok());
        EXPECT_EQ(status.code(), c.code) << c.name;
        EXPECT_EQ(TranslateReturnCodeValue(c.rc), c.code);
        EXPECT_EQ(status.message(), std::string("write on topic \"T\": ") + c.name + " (" +
                                        dds_strretcode(c.rc) + ")");
    }
    const DdsStatus unknown = TranslateReturnCode(-77, "take");
    EXPECT_EQ(unknown.code(), DdsErrc::kUnknown);
    EXPECT_NE(unknown.message().find("-77"), std::string::npos);
}

TEST(DdsStatus, FailuresOfRealCallsNameWhatFailed) {
    ParticipantSettings outOfRange;
    outOfRange.domainId = 233;
    DdsStatus status;
    EXPECT_EQ(DdsTransport::Create(outOfRange, &status), nullptr);
    EXPECT_EQ(status.code(), DdsErrc::kBadParameter);
    EXPECT_NE(status.message().find("domain id 233"), std::string::npos) << status.message();

    // An interface this machine does not have: Cyclone refuses the domain
    // before anything is sent. 192.0.2.0/24 is reserved for documentation.
    ParticipantSettings missingInterface;
    missingInterface.domainId = 229;
    missingInterface.networkInterface = "192.0.2.77";
    missingInterface.peers.clear();
    EXPECT_EQ(DdsTransport::Create(missingInterface, &status), nullptr);
    EXPECT_FALSE(status.ok());
    EXPECT_EQ(status.message().rfind("create DDS domain 229: DDS_RETCODE_", 0), 0u)
        << status.message();
}

}  // namespace
