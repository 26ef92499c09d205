// JSON view of the maintenance records, for the daemon's and the tool's output.
//
// ToJson(record) writes a JSON object with one entry per member, named exactly as the member is
// declared. Values:
//   - integers and bools as JSON numbers and booleans; enumerations as their numeric value;
//   - strings as strings; vectors and sets as arrays;
//   - maps with string keys as objects ({"key": value, ...});
//   - maps with any other key as arrays of {"key": k, "value": v} objects, in key order
//     (JSON object keys must be strings, and numbers as strings would lose their type);
//   - nested records as nested objects.
#pragma once

#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include <nlohmann/json.hpp>

#include "orx/maintaind/record.h"

namespace orx::maintaind {

template <class T>
nlohmann::json ToJson(const T& value);

namespace detail {

template <class K, class V, class C, class A>
nlohmann::json MapToJson(const std::map<K, V, C, A>& map) {
    if constexpr (std::is_same_v<K, std::string>) {
        nlohmann::json object = nlohmann::json::object();
        for (const auto& [key, item] : map) {
            object[key] = ToJson(item);
        }
        return object;
    } else {
        nlohmann::json array = nlohmann::json::array();
        for (const auto& [key, item] : map) {
            array.push_back({{"key", ToJson(key)}, {"value", ToJson(item)}});
        }
        return array;
    }
}

template <class Range>
nlohmann::json RangeToJson(const Range& range) {
    nlohmann::json array = nlohmann::json::array();
    for (const auto& item : range) {
        array.push_back(ToJson(item));
    }
    return array;
}

template <class T>
struct JsonOf {
    static nlohmann::json Make(const T& value) {
        if constexpr (IsRecordV<T>) {
            nlohmann::json object = nlohmann::json::object();
            VisitMembers(value, [&object](std::string_view name, const auto& member) {
                object[std::string(name)] = ToJson(member);
            });
            return object;
        } else if constexpr (std::is_enum_v<T>) {
            return static_cast<std::underlying_type_t<T>>(value);
        } else if constexpr (std::is_same_v<T, bool> || std::is_integral_v<T> ||
                             std::is_same_v<T, std::string>) {
            return value;
        } else {
            static_assert(!sizeof(T*), "ToJson: unsupported member type");
            return {};
        }
    }
};

template <class T, class A>
struct JsonOf<std::vector<T, A>> {
    static nlohmann::json Make(const std::vector<T, A>& value) { return RangeToJson(value); }
};

template <class T, class C, class A>
struct JsonOf<std::set<T, C, A>> {
    static nlohmann::json Make(const std::set<T, C, A>& value) { return RangeToJson(value); }
};

template <class K, class V, class C, class A>
struct JsonOf<std::map<K, V, C, A>> {
    static nlohmann::json Make(const std::map<K, V, C, A>& value) { return MapToJson(value); }
};

}  // namespace detail

// Converts a record (or any member type of one) to JSON as described at the top of this file.
template <class T>
nlohmann::json ToJson(const T& value) {
    return detail::JsonOf<T>::Make(value);
}

}  // namespace orx::maintaind
