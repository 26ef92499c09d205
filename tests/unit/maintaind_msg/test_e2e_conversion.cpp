#include <gtest/gtest.h>

#include <set>

#include "orx/maintaind/config/orx_maintaind_config.h"

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
    auto config = std::make_shared<E2EXfConfig>();
    config->profile = E2EXf_Profile::PROFILE_22;
    config->dataIdList = {7U, 0xFFFFFFFFU, 9U};
    config->isE2EEnabled = true;
    config->isDisableE2ECheck = true;
    config->dataLength = 1001U;
    config->maxDataLength = 1002U;
    config->counterOffset = 1003U;
    config->crcOffset = 1004U;
    config->dataIdMode = E2EXf_DataIDMode::E2E_DATAID_NIBBLE;
    config->maxDeltaCounter = 11U;
    config->maxErrorStateInit = 12U;
    config->minOkStateInit = 13U;
    config->windowSizeInit = 14U;
    config->maxErrorStateValid = 15U;
    config->minOkStateValid = 16U;
    config->windowSizeValid = 17U;
    config->maxErrorStateInvalid = 18U;
    config->minOkStateInvalid = 19U;
    config->isCheckEnabled = true;
    config->windowSizeInvalid = 100000U;

    const E2EConfigInfo out = OrxMaintaindConfig().ChangeE2EInfoToTransportStruct(config);

    EXPECT_EQ(out.profile, E2EProfile::PROFILE_22);
    EXPECT_EQ(out.dataIdList, (std::vector<uint32_t>{7U, 0xFFFFFFFFU, 9U}));
    EXPECT_TRUE(out.isE2EEnabled);
    EXPECT_TRUE(out.isDisableE2ECheck);
    EXPECT_EQ(out.dataLength, 1001U);
    EXPECT_EQ(out.maxDataLength, 1002U);
    EXPECT_EQ(out.counterOffset, 1003U);
    EXPECT_EQ(out.crcOffset, 1004U);
    EXPECT_EQ(out.dataIdMode, E2EDataIDMode::NIBBLE);
    EXPECT_EQ(out.maxDeltaCounter, 11U);
    EXPECT_EQ(out.maxErrorStateInit, 12U);
    EXPECT_EQ(out.minOkStateInit, 13U);
    EXPECT_EQ(out.windowSizeInit, 14U);
    EXPECT_EQ(out.maxErrorStateValid, 15U);
    EXPECT_EQ(out.minOkStateValid, 16U);
    EXPECT_EQ(out.windowSizeValid, 17U);
    EXPECT_EQ(out.maxErrorStateInvalid, 18U);
    EXPECT_EQ(out.minOkStateInvalid, 19U);
    EXPECT_TRUE(out.isCheckEnabled);
    EXPECT_EQ(out.windowSizeInvalid, 100000U);
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
