// The record machinery: member lists complete and named, defaults zero, equality, JSON view.
#include <cctype>
#include <cstddef>
#include <new>
#include <set>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "all_records.h"
#include "orx/maintaind/json.h"
#include "orx/maintaind/types.h"
#include "record_filler.h"

namespace orx::maintaind::test {
namespace {

// Counts the data members of an aggregate: the largest N for which T{x1, ..., xN} compiles with
// xi convertible to anything. Compared with the member list, it catches a member that was
// declared but left out of ORX_MAINTAIND_RECORD (and would silently never reach the daemon).
struct AnyMember {
    template <class T>
    operator T() const;  // NOLINT: declared only, used in unevaluated context
};

template <std::size_t>
using Any = AnyMember;

// Brace-initialising fewer members than declared is the point here, not a slip.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
template <class T, class... A>
auto TryBraceInit(int) -> decltype(T{std::declval<A>()...}, std::true_type{});
#pragma GCC diagnostic pop
template <class T, class... A>
std::false_type TryBraceInit(...);

template <class T, std::size_t... I>
constexpr bool BraceInitializableWith(std::index_sequence<I...>) {
    return decltype(TryBraceInit<T, Any<I>...>(0))::value;
}

template <class T, std::size_t N = 0>
constexpr std::size_t CountDataMembers() {
    if constexpr (BraceInitializableWith<T>(std::make_index_sequence<N + 1>{})) {
        return CountDataMembers<T, N + 1>();
    } else {
        return N;
    }
}

// Checks that every scalar member, recursively, is zero and every container empty.
struct ExpectAllDefault {
    std::string path;

    template <class T>
    void operator()(std::string_view name, const T& member) const {
        std::string where = path + "." + std::string(name);
        if constexpr (IsRecordV<T>) {
            VisitMembers(member, ExpectAllDefault{where});
        } else if constexpr (std::is_enum_v<T>) {
            EXPECT_EQ(static_cast<int>(member), 0) << where;
        } else if constexpr (std::is_arithmetic_v<T>) {
            EXPECT_EQ(member, T{}) << where;
        } else {
            EXPECT_TRUE(member.empty()) << where;
        }
    }
};

template <class T>
class RecordTest : public ::testing::Test {};
TYPED_TEST_SUITE(RecordTest, AllRecords);

TYPED_TEST(RecordTest, MemberListNamesEveryDataMemberOnceInLowerCamelCase) {
    static_assert(IsRecordV<TypeParam> && IsRecordV<const TypeParam>);
    static_assert(std::is_aggregate_v<TypeParam>);
    static_assert(!std::is_polymorphic_v<TypeParam>);
    EXPECT_EQ(CountDataMembers<TypeParam>(), TypeParam::kMemberNames.size());

    std::set<std::string_view> unique(TypeParam::kMemberNames.begin(),
                                      TypeParam::kMemberNames.end());
    EXPECT_EQ(unique.size(), TypeParam::kMemberNames.size());
    for (std::string_view name : TypeParam::kMemberNames) {
        ASSERT_FALSE(name.empty());
        EXPECT_TRUE(std::islower(static_cast<unsigned char>(name.front()))) << name;
        for (char c : name) {
            EXPECT_TRUE(std::isalnum(static_cast<unsigned char>(c))) << name;
        }
    }
}

TYPED_TEST(RecordTest, DefaultInitialisationZeroesEveryScalar) {
    // Default-initialise over garbage: a scalar without its own initialiser would keep it.
    alignas(TypeParam) unsigned char storage[sizeof(TypeParam)];
    volatile unsigned char* bytes = storage;
    for (std::size_t i = 0; i < sizeof(storage); ++i) {
        bytes[i] = 0xAB;
    }
    auto* record = new (storage) TypeParam;
    VisitMembers(*record, ExpectAllDefault{"record"});
    record->~TypeParam();
}

TYPED_TEST(RecordTest, EqualityFollowsEveryMember) {
    const TypeParam original = Filled<TypeParam>(1);
    TypeParam copy = original;
    EXPECT_TRUE(copy == original);
    EXPECT_FALSE(copy != original);

    // Changing any single member breaks equality.
    std::size_t index = 0;
    VisitMembers(copy, [&](std::string_view name, auto& member) {
        auto saved = member;
        if constexpr (std::is_same_v<std::decay_t<decltype(member)>, bool>) {
            member = !member;
        } else {
            RecordFiller(7).Fill(member);
        }
        EXPECT_TRUE(copy != original) << name << " (member " << index << ")";
        member = saved;
        ++index;
    });
    EXPECT_TRUE(copy == original);
}

TYPED_TEST(RecordTest, JsonHasEveryMemberByName) {
    const nlohmann::json json = ToJson(Filled<TypeParam>(1));
    ASSERT_TRUE(json.is_object());
    EXPECT_EQ(json.size(), TypeParam::kMemberNames.size());
    for (std::string_view name : TypeParam::kMemberNames) {
        EXPECT_TRUE(json.contains(std::string(name))) << name;
    }
}

TEST(RecordJson, WritesMapsEnumsAndNestedRecordsAsDocumented) {
    DDSEventInfo dds;
    dds.serviceId = 0x1234;
    dds.durability = DurabilityQos::TRANSIENT_LOCAL;
    dds.transportQos = {TransportQos::UDP, TransportQos::SHM};
    dds.attributes = {{"depth", "4"}, {"mode", "fast"}};
    dds.e2eConfig.profile = E2EProfile::PROFILE_4M;
    EventRegisterInfo event;
    event.eventName = "Speed";
    event.eventInfos[DriverType::SOMEIP] = EventInfo{};
    event.eventInfos[DriverType::DDS] = EventInfo{dds, {}};

    const nlohmann::json json = ToJson(event);

    EXPECT_EQ(json["eventName"], "Speed");
    ASSERT_TRUE(json["eventInfos"].is_array());
    ASSERT_EQ(json["eventInfos"].size(), 2u);
    EXPECT_EQ(json["eventInfos"][0]["key"], 0);
    EXPECT_EQ(json["eventInfos"][1]["key"], 1);
    const nlohmann::json& ddsJson = json["eventInfos"][0]["value"]["ddsEventInfo"];
    EXPECT_EQ(ddsJson["serviceId"], 0x1234);
    EXPECT_EQ(ddsJson["durability"], 1);
    EXPECT_EQ(ddsJson["transportQos"], nlohmann::json::array({1, 3}));
    EXPECT_EQ(ddsJson["attributes"], nlohmann::json({{"depth", "4"}, {"mode", "fast"}}));
    EXPECT_EQ(ddsJson["e2eConfig"]["profile"], 41);
    EXPECT_EQ(ddsJson["isLatencyEnabled"], false);
}

TEST(RecordEnums, NumericValuesAndNamesMatchTheDaemonDefinition) {
    EXPECT_EQ(sizeof(DriverType), 2u);
    EXPECT_EQ(static_cast<int>(DriverType::DDS), 0);
    EXPECT_EQ(static_cast<int>(DriverType::SOMEIP), 1);
    EXPECT_EQ(static_cast<int>(DriverType::PROLOC), 2);
    EXPECT_EQ(static_cast<int>(E2EProfile::PROFILE_4M), 41);
    EXPECT_EQ(static_cast<int>(E2EProfile::PROFILE_44), 44);
    EXPECT_EQ(static_cast<int>(LatencyMode::DISABLE), 1);
    EXPECT_EQ(static_cast<int>(ReportKind::E2E_AND_NODE), 3);

    EXPECT_STREQ(ToString(DriverType::SOMEIP), "SOMEIP");
    EXPECT_STREQ(ToString(E2EProfile::PROFILE_22), "PROFILE_22");
    EXPECT_STREQ(ToString(E2EDataIDMode::LOWER_12), "LOWER_12");
    EXPECT_STREQ(ToString(TransportQos::SHM), "SHM");
    EXPECT_STREQ(ToString(ReportKind::E2E_AND_NODE), "E2E_AND_NODE");
    EXPECT_STREQ(ToString(static_cast<E2EProfile>(3)), "UNKNOWN");
    EXPECT_STREQ(ToString(static_cast<DriverType>(300)), "UNKNOWN");
}

TEST(RecordVisit, VisitsMembersInDeclarationOrderWithNames) {
    LatencySwitch order;
    order.mode = LatencyMode::DISABLE;
    order.latencyIndex.eventName = "topic";
    std::string seen;
    VisitMembers(order, [&](std::string_view name, const auto& member) {
        seen += std::string(name) + ";";
        if constexpr (std::is_same_v<std::decay_t<decltype(member)>, LatencyIndex>) {
            EXPECT_EQ(member.eventName, "topic");
        }
    });
    EXPECT_EQ(seen, "mode;latencyIndex;");

    // Through the non-const overload members can be written.
    VisitMembers(order, [](std::string_view, auto& member) { member = {}; });
    EXPECT_EQ(order, LatencySwitch{});
}

}  // namespace
}  // namespace orx::maintaind::test
