// What loading the plug-in leaves behind: one registered configuration provider and one client,
// the maintenance service description, and the cache key's order.
#include <gtest/gtest.h>

#include <set>

#include "orxmaintaind/orx_maintaind_bind_index.h"
#include "orxmaintaind/orx_maintaind_client.h"
#include "orxmaintaind/orx_maintaind_constants.h"
#include "orxmaintaind/orx_maintaind_type.h"
#include "vorx/vcc/dds_dfx_config_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace {

using orx::orxcm::orxmaintaind::OrxMaintaindBindIndex;
using orx::orxcm::orxmaintaind::OrxMaintaindClient;
using orx::orxcm::orxmaintaind::type::OrxMaintaindType;
using vorx::vcc::RegisterDfxInterface;
using vorx::vcc::api::types::DriverType;

TEST(LibraryEntryTest, LoadingRegistersOneProviderAndTheClientSingleton) {
    EXPECT_EQ(RegisterDfxInterface::DfxConfigRegistrationCount(), 1U);
    EXPECT_EQ(RegisterDfxInterface::OrxMaintaindRegistrationCount(), 1U);
    EXPECT_NE(RegisterDfxInterface::GetDfxConfigInterface(), nullptr);
    EXPECT_EQ(RegisterDfxInterface::GetOrxMaintaindInterface(), OrxMaintaindClient::GetInstance());
    // Nothing is found or sent before the core initialises the client.
    EXPECT_EQ(OrxMaintaindClient::GetInstance()->GetMaintaindProxy(), nullptr);
    EXPECT_EQ(OrxMaintaindClient::GetInstance()->GetProcessPid(), -1);
}

TEST(LibraryEntryTest, DriverTypeNamesFollowTheCoreNumbering) {
    using orx::orxcm::orxmaintaind::kDriverTypeNames;
    EXPECT_EQ(kDriverTypeNames.at(DriverType::PROLOC), "PROLOC");
    EXPECT_EQ(kDriverTypeNames.at(DriverType::DDS), "DDS");
    EXPECT_EQ(kDriverTypeNames.at(DriverType::SOMEIP), "SOMEIP");
}

TEST(MaintaindTypeTest, DescribesTheThirteenMethodsAndTheLatencyEvent) {
    const auto type = OrxMaintaindType::GetInstance();
    EXPECT_EQ(type, OrxMaintaindType::GetInstance());
    EXPECT_EQ(type->GetServiceShortName(), "MAINTAIND");
    const auto& methods = type->GetMethodTable();
    ASSERT_EQ(methods.size(), 13U);
    for (const auto& method : methods) {
        EXPECT_EQ(method.second.size(), 2U) << method.first;
    }
    // The registration method answers on its request topic.
    EXPECT_EQ(methods.at(60621).at("Request"), "RegisterAppRequestTopic");
    EXPECT_EQ(methods.at(60621).at("Reply"), "RegisterAppRequestTopic");
    EXPECT_EQ(methods.at(0x0DEA).at("Reply"), "QueryLatencyStatusReplyTopic");
    EXPECT_EQ(methods.at(0x8009).at("Request"), "QueryDataTypeRequestTopic");
    ASSERT_EQ(type->GetEventTable().size(), 1U);
    EXPECT_EQ(type->GetEventTable().at(30161), "SwitchApplicationLatency");
}

TEST(BindIndexTest, OrdersByServiceInstanceBindingsThenEntityIgnoringTheFlags) {
    const OrxMaintaindBindIndex base(7, "2", 100, {DriverType::DDS}, true, true);
    // The flags take no part: a withdrawal finds the registration's slot.
    const OrxMaintaindBindIndex withdrawal(7, "2", 100, {DriverType::DDS}, false, false);
    EXPECT_FALSE(base < withdrawal);
    EXPECT_FALSE(withdrawal < base);

    // Service id first, even against a smaller entity id.
    EXPECT_TRUE(OrxMaintaindBindIndex(6, "9", 900, {DriverType::SOMEIP}, true, true) < base);
    // Instance ids compare as text: "10" sorts before "2".
    EXPECT_TRUE(OrxMaintaindBindIndex(7, "10", 100, {DriverType::DDS}, true, true) < base);
    // Binding sets element by element, a shorter prefix first, before the entity id.
    const OrxMaintaindBindIndex both(7, "2", 1, {DriverType::DDS, DriverType::SOMEIP}, true, true);
    EXPECT_TRUE(base < both);
    EXPECT_TRUE(OrxMaintaindBindIndex(7, "2", 999, {DriverType::PROLOC}, true, true) < base);
    EXPECT_TRUE(base < OrxMaintaindBindIndex(7, "2", 101, {DriverType::DDS}, true, true));

    std::set<OrxMaintaindBindIndex> cache{base, withdrawal, both};
    EXPECT_EQ(cache.size(), 2U);
}

}  // namespace
