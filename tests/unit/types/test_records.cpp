// The record machinery: member lists complete and named, defaults zero, JSON view.
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

TYPED_TEST(RecordTest, JsonHasEveryMemberByName) {
    const nlohmann::json json = ToJson(Filled<TypeParam>(1));
    ASSERT_TRUE(json.is_object());
    EXPECT_EQ(json.size(), TypeParam::kMemberNames.size());
    for (std::string_view name : TypeParam::kMemberNames) {
        EXPECT_TRUE(json.contains(std::string(name))) << name;
    }
}

TEST(RecordEnums, NumericValuesMatchTheDaemonDefinition) {
    EXPECT_EQ(sizeof(DriverType), 2u);
    EXPECT_EQ(static_cast<int>(DriverType::DDS), 0);
    EXPECT_EQ(static_cast<int>(DriverType::SOMEIP), 1);
    EXPECT_EQ(static_cast<int>(DriverType::PROLOC), 2);
    EXPECT_EQ(static_cast<int>(E2EProfile::PROFILE_4M), 41);
    EXPECT_EQ(static_cast<int>(E2EProfile::PROFILE_44), 44);
    EXPECT_EQ(static_cast<int>(LatencyMode::DISABLE), 1);
    EXPECT_EQ(static_cast<int>(ReportKind::E2E_AND_NODE), 3);
}

}  // namespace
}  // namespace orx::maintaind::test
