// The member-list machinery of the maintenance records.
//
// A record is a plain struct that ends with one ORX_MAINTAIND_RECORD(Type, member, ...) line naming
// all of its data members in declaration order. The macro gives the record:
//   - Members() and Members() const: std::tie of the members, in that order. This is what the
//     encoders, decoders and size counters walk, so the order is the wire order;
//   - kMemberNames: the member names as written, in the same order (used for JSON and tools);
//   - operator== and operator!= comparing member by member.
// Records stay aggregates and plain value types: no constructors of their own, no virtuals.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace orx::maintaind {

// The core's string type.
using String = std::string;

namespace detail {

// Number of comma-separated names in a stringised macro argument list.
constexpr std::size_t CountMemberNames(std::string_view list) {
    std::size_t count = list.empty() ? 0 : 1;
    for (char c : list) {
        if (c == ',') {
            ++count;
        }
    }
    return count;
}

constexpr std::string_view TrimSpaces(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\n' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\n' || text.back() == '\t')) {
        text.remove_suffix(1);
    }
    return text;
}

// Splits "a, b, c" into {"a", "b", "c"} at compile time.
template <std::size_t N>
constexpr std::array<std::string_view, N> SplitMemberNames(std::string_view list) {
    std::array<std::string_view, N> names{};
    std::size_t index = 0;
    std::size_t begin = 0;
    for (std::size_t i = 0; i <= list.size() && index < N; ++i) {
        if (i == list.size() || list[i] == ',') {
            names[index++] = TrimSpaces(list.substr(begin, i - begin));
            begin = i + 1;
        }
    }
    return names;
}

template <class T, class = void>
struct HasMemberList : std::false_type {};

template <class T>
struct HasMemberList<T,
                     std::void_t<decltype(T::kMemberNames), decltype(std::declval<T&>().Members()),
                                 decltype(std::declval<const T&>().Members())>> : std::true_type {};

template <class Members, class Names, class Visitor, std::size_t... I>
void VisitIndexed(Members&& members, const Names& names, Visitor& visitor,
                  std::index_sequence<I...>) {
    (visitor(names[I], std::get<I>(members)), ...);
}

}  // namespace detail

// True for the records declared with ORX_MAINTAIND_RECORD (const or not).
template <class T>
struct IsRecord : detail::HasMemberList<std::remove_cv_t<T>> {};

template <class T>
inline constexpr bool IsRecordV = IsRecord<T>::value;

// Calls visitor(name, member) for every member of the record, in declaration order. `name` is a
// std::string_view; `member` is a reference, const when the record is const.
template <class R, class V>
void VisitMembers(R& record, V&& visitor) {
    using Plain = std::remove_cv_t<R>;
    static_assert(IsRecordV<Plain>,
                  "VisitMembers needs a record declared with ORX_MAINTAIND_RECORD");
    auto members = record.Members();
    constexpr std::size_t kCount = std::tuple_size_v<decltype(members)>;
    static_assert(kCount == Plain::kMemberNames.size(), "member list and member names differ");
    detail::VisitIndexed(members, Plain::kMemberNames, visitor, std::make_index_sequence<kCount>{});
}

}  // namespace orx::maintaind

// Declares the member list of a record; see the top of this file. Place it inside the struct,
// after the data members, naming each of them once in declaration order.
#define ORX_MAINTAIND_RECORD(Type, ...)                                                        \
    auto Members() {                                                                           \
        return std::tie(__VA_ARGS__);                                                          \
    }                                                                                          \
    auto Members() const {                                                                     \
        return std::tie(__VA_ARGS__);                                                          \
    }                                                                                          \
    [[maybe_unused]] static constexpr auto kMemberNames =                                      \
        ::orx::maintaind::detail::SplitMemberNames<::orx::maintaind::detail::CountMemberNames( \
            #__VA_ARGS__)>(#__VA_ARGS__);                                                      \
    [[maybe_unused]] friend bool operator==(const Type& lhs, const Type& rhs) {                \
        return lhs.Members() == rhs.Members();                                                 \
    }                                                                                          \
    [[maybe_unused]] friend bool operator!=(const Type& lhs, const Type& rhs) {                \
        return !(lhs == rhs);                                                                  \
    }
