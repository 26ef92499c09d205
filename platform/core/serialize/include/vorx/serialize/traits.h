// Compile-time classification of the types the CDR encoder, decoder and size counter handle.
//
// Supported: bool; integers; enumerations; std::string; std::vector, std::map and std::set of
// supported types; and records, i.e. any class with Members() (const and non-const) returning a
// std::tuple of references to its members in wire order (std::tie).
//
// An enumeration goes on the wire as its underlying type, unless its namespace declares
//     <unsigned integer type> WireTypeOf(E);
// (declaration only, found by argument-dependent lookup); then its wire type is that return type.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace vorx::serialize {
namespace detail {

template <class T, class = void>
struct HasMembers : std::false_type {};

template <class T>
struct HasMembers<T, std::void_t<decltype(std::declval<T&>().Members()),
                                 decltype(std::declval<const T&>().Members())>> : std::true_type {};

template <class T>
inline constexpr bool kIsRecord = HasMembers<T>::value;

template <class T>
struct IsVector : std::false_type {};
template <class T, class A>
struct IsVector<std::vector<T, A>> : std::true_type {};

template <class T>
struct IsMap : std::false_type {};
template <class K, class V, class C, class A>
struct IsMap<std::map<K, V, C, A>> : std::true_type {};

template <class T>
struct IsSet : std::false_type {};
template <class K, class C, class A>
struct IsSet<std::set<K, C, A>> : std::true_type {};

template <class T>
inline constexpr bool kIsInteger = std::is_integral_v<T> && !std::is_same_v<T, bool>;

// Wire type of an enumeration (see the top of this file).
template <class E, class = void>
struct EnumWire {
    using Type = std::underlying_type_t<E>;
};

template <class E>
struct EnumWire<E, std::void_t<decltype(WireTypeOf(std::declval<E>()))>> {
    using Type = decltype(WireTypeOf(std::declval<E>()));
};

template <class E>
using EnumWireType = typename EnumWire<E>::Type;

// True for element types whose in-memory bytes on a little-endian host are exactly their wire
// bytes, so a vector of them is copied as one block.
template <class T>
constexpr bool IsBlockCopyable() {
    if constexpr (kIsInteger<T>) {
        return true;
    } else if constexpr (std::is_enum_v<T>) {
        return sizeof(EnumWireType<T>) == sizeof(T) && kIsInteger<EnumWireType<T>>;
    } else {
        return false;
    }
}

// Fewest bytes one value of T can take on the wire, not counting alignment padding. The decoder
// uses it to refuse an element count before allocating: N elements need at least N times this.
template <class T>
constexpr std::size_t MinWireSize();

template <class Tuple, std::size_t... I>
constexpr std::size_t MinWireSizeOfMembers(std::index_sequence<I...>) {
    return (
        std::size_t{0} + ... +
        MinWireSize<std::remove_cv_t<std::remove_reference_t<std::tuple_element_t<I, Tuple>>>>());
}

template <class T>
constexpr std::size_t MinWireSize() {
    if constexpr (std::is_same_v<T, bool>) {
        return 1;
    } else if constexpr (kIsInteger<T>) {
        return sizeof(T);
    } else if constexpr (std::is_enum_v<T>) {
        return sizeof(EnumWireType<T>);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return 5;  // length and the terminating NUL
    } else if constexpr (IsVector<T>::value || IsMap<T>::value || IsSet<T>::value) {
        return 4;  // the count
    } else if constexpr (kIsRecord<T>) {
        using Tuple = decltype(std::declval<T&>().Members());
        return MinWireSizeOfMembers<Tuple>(std::make_index_sequence<std::tuple_size_v<Tuple>>{});
    } else {
        static_assert(!sizeof(T*), "vorx::serialize: unsupported type");
        return 0;
    }
}

}  // namespace detail
}  // namespace vorx::serialize
