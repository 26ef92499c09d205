#include <gtest/gtest.h>

#include <set>

#include "orx/maintaind/config/orx_maintaind_config.h"
#include "orx/test/record_filler.h"

namespace {

using orx::maintaind::E2EConfigInfo;
using orx::maintaind::E2EDataIDMode;
using orx::maintaind::E2EProfile;
using orx::maintaind::config::OrxMaintaindConfig;
using vorx::vcc::api::types::E2EXf_DataIDMode;
using vorx::vcc::api::types::E2EXf_Profile;
using vorx::vcc::api::types::E2EXfConfig;

TEST(E2EConversionTest, NullConfigGivesDefaultRecord) {
    EXPECT_EQ(OrxMaintaindConfig().ChangeE2EInfoToTransportStruct(nullptr), E2EConfigInfo{});
}

TEST(E2EConversionTest, EveryMemberIsCopied) {
    for (const uint64_t seed : {0U, 1U}) {  // every flag once each way
        // Distinct values; the two enumerations take values that both tables carry.
        E2EConfigInfo expected = orx::test::FilledRecord<E2EConfigInfo>({seed, 3, 3});
        expected.profile = E2EProfile::PROFILE_22;
        expected.dataIdMode = E2EDataIDMode::NIBBLE;
        auto config = std::make_shared<E2EXfConfig>();
        config->profile = E2EXf_Profile::PROFILE_22;
        config->dataIdList = expected.dataIdList;
        config->isE2EEnabled = expected.isE2EEnabled;
        config->isDisableE2ECheck = expected.isDisableE2ECheck;
        config->dataLength = expected.dataLength;
        config->maxDataLength = expected.maxDataLength;
        config->counterOffset = expected.counterOffset;
        config->crcOffset = expected.crcOffset;
        config->dataIdMode = E2EXf_DataIDMode::E2E_DATAID_NIBBLE;
        config->maxDeltaCounter = expected.maxDeltaCounter;
        config->maxErrorStateInit = expected.maxErrorStateInit;
        config->minOkStateInit = expected.minOkStateInit;
        config->windowSizeInit = expected.windowSizeInit;
        config->maxErrorStateValid = expected.maxErrorStateValid;
        config->minOkStateValid = expected.minOkStateValid;
        config->windowSizeValid = expected.windowSizeValid;
        config->maxErrorStateInvalid = expected.maxErrorStateInvalid;
        config->minOkStateInvalid = expected.minOkStateInvalid;
        config->isCheckEnabled = expected.isCheckEnabled;
        config->windowSizeInvalid = expected.windowSizeInvalid;
        EXPECT_EQ(OrxMaintaindConfig().ChangeE2EInfoToTransportStruct(config), expected);
    }
}

TEST(E2EConversionTest, OnlyTabledProfilesAndDataIdModesAreCarried) {
    const std::set<unsigned> profiles{4U, 5U, 6U, 7U, 11U, 22U, 41U, 44U};
    const std::set<unsigned> dataIdModes{0U, 3U};
    auto config = std::make_shared<E2EXfConfig>();
    for (unsigned value = 0U; value < 256U; ++value) {
        SCOPED_TRACE(value);
        config->profile = static_cast<E2EXf_Profile>(value);
        config->dataIdMode = static_cast<E2EXf_DataIDMode>(value);
        const E2EConfigInfo out = OrxMaintaindConfig().ChangeE2EInfoToTransportStruct(config);
        const unsigned expectedProfile = profiles.count(value) != 0U ? value : 0U;
        const unsigned expectedMode = dataIdModes.count(value) != 0U ? value : 0U;
        EXPECT_EQ(static_cast<unsigned>(out.profile), expectedProfile);
        EXPECT_EQ(static_cast<unsigned>(out.dataIdMode), expectedMode);
    }
    // The named edges: 4M maps, the core-only profiles and the data-id mode ALT do not.
    config->profile = E2EXf_Profile::PROFILE_4M;
    config->dataIdMode = E2EXf_DataIDMode::E2E_DATAID_ALT;
    E2EConfigInfo out = OrxMaintaindConfig().ChangeE2EInfoToTransportStruct(config);
    EXPECT_EQ(out.profile, E2EProfile::PROFILE_4M);
    EXPECT_EQ(out.dataIdMode, E2EDataIDMode::BOTH);
    config->profile = E2EXf_Profile::PROFILE_01;
    out = OrxMaintaindConfig().ChangeE2EInfoToTransportStruct(config);
    EXPECT_EQ(out.profile, E2EProfile::NONE);
}

}  // namespace
