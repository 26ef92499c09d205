// Test helper that walks any record through its member list and fills every member with
// distinct values; used by the unit tests and the fuzzer's seed generator.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "orx/maintaind/types.h"

namespace orx::maintaind::test {

// Fills every member, recursively, with values that differ from member to member and from the
// defaults (bools alternate, so run with two seeds to see each bool set). Containers get
// `elements` entries each.
class RecordFiller {
  public:
    explicit RecordFiller(uint64_t seed, std::size_t elements = 2)
        : next_(seed * 1000003u + 1), seed_(seed), elements_(elements) {}

    template <class T>
    void Fill(T& value) {
        if constexpr (std::is_same_v<T, bool>) {
            value = (next_++ + seed_) % 2 == 1;
        } else if constexpr (std::is_integral_v<T>) {
            value = static_cast<T>(Mix(next_++));
        } else if constexpr (std::is_enum_v<T>) {
            // Every enumeration is one byte on the wire, whatever its width in memory.
            value = static_cast<T>(Mix(next_++) % 256);
        } else if constexpr (std::is_same_v<T, std::string>) {
            value = std::string(next_ % 5, 'a' + static_cast<char>(next_ % 26)) + "#" +
                    std::to_string(next_);
            ++next_;
        } else if constexpr (IsVectorType<T>::value) {
            value.clear();
            for (std::size_t i = 0; i < elements_; ++i) {
                typename T::value_type item{};
                Fill(item);
                value.push_back(item);
            }
        } else if constexpr (IsMapType<T>::value) {
            value.clear();
            for (int attempt = 0; value.size() < elements_ && attempt < 64; ++attempt) {
                typename T::key_type key{};
                Fill(key);
                Fill(value[key]);
            }
        } else {
            auto members = value.Members();
            FillMembers(members, std::make_index_sequence<std::tuple_size_v<decltype(members)>>{});
        }
    }

  private:
    template <class Tuple, std::size_t... I>
    void FillMembers(Tuple& members, std::index_sequence<I...>) {
        (Fill(std::get<I>(members)), ...);
    }

    template <class T>
    struct IsVectorType : std::false_type {};
    template <class T, class A>
    struct IsVectorType<std::vector<T, A>> : std::true_type {};
    template <class T>
    struct IsMapType : std::false_type {};
    template <class K, class V, class C, class A>
    struct IsMapType<std::map<K, V, C, A>> : std::true_type {};

    static uint64_t Mix(uint64_t x) {  // splitmix64: all bytes vary
        x += 0x9E3779B97F4A7C15ull;
        x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
        x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
        return x ^ (x >> 31);
    }

    uint64_t next_;
    uint64_t seed_;
    std::size_t elements_;
};

template <class T>
T Filled(uint64_t seed, std::size_t elements = 2) {
    T value{};
    RecordFiller(seed, elements).Fill(value);
    return value;
}

}  // namespace orx::maintaind::test
