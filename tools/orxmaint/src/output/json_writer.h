// Writes JSON text straight from the records, without building a document first: listings of
// many thousand entries print in a fraction of the time. Values are written as
// orx::maintaind::ToJson gives them (members by their declared names, enumerations as numbers,
// maps with text keys as objects and other maps as arrays of {"key", "value"} objects); members
// come in declaration order.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "orx/maintaind/record.h"

namespace orx::orxmaint {

class JsonWriter {
  public:
    // Appends to `out`, which the caller owns and keeps alive.
    explicit JsonWriter(std::string& out) : out_(out) {}

    // Structure. Commas between elements and members are written as needed.
    void BeginObject();
    void EndObject();
    void BeginArray();
    void EndArray();
    // The name of the next member of the open object.
    void Key(std::string_view name);

    // One value: a record, a container of values, text, a number, a bool or an enumeration.
    template <class T>
    void Value(const T& value) {
        if constexpr (maintaind::IsRecordV<T>) {
            BeginObject();
            Members(value);
            EndObject();
        } else if constexpr (std::is_same_v<T, bool>) {
            Separate();
            out_ += value ? "true" : "false";
        } else if constexpr (std::is_enum_v<T>) {
            Number(static_cast<std::underlying_type_t<T>>(value));
        } else if constexpr (std::is_integral_v<T>) {
            Number(value);
        } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
            Text(value);
        } else {
            Container(value);
        }
    }

    // The members of `record` into the open object, leaving out those named in `skip`.
    template <class R>
    void Members(const R& record, std::initializer_list<std::string_view> skip = {}) {
        maintaind::VisitMembers(record, [this, skip](std::string_view name, const auto& member) {
            for (const std::string_view left : skip) {
                if (name == left) {
                    return;
                }
            }
            Key(name);
            Value(member);
        });
    }

  private:
    template <class T, class A>
    void Container(const std::vector<T, A>& values) {
        Range(values);
    }
    template <class T, class C, class A>
    void Container(const std::set<T, C, A>& values) {
        Range(values);
    }
    template <class K, class V, class C, class A>
    void Container(const std::map<K, V, C, A>& values) {
        if constexpr (std::is_same_v<K, std::string>) {
            BeginObject();
            for (const auto& [key, item] : values) {
                Key(key);
                Value(item);
            }
            EndObject();
        } else {
            BeginArray();
            for (const auto& [key, item] : values) {
                BeginObject();
                Key("key");
                Value(key);
                Key("value");
                Value(item);
                EndObject();
            }
            EndArray();
        }
    }
    template <class Values>
    void Range(const Values& values) {
        BeginArray();
        for (const auto& item : values) {
            Value(item);
        }
        EndArray();
    }

    void Number(int64_t value);
    void Number(uint64_t value);
    template <class I>
    void Number(I value) {
        if constexpr (std::is_signed_v<I>) {
            Number(static_cast<int64_t>(value));
        } else {
            Number(static_cast<uint64_t>(value));
        }
    }
    // A string value, escaped; bytes that are not UTF-8 become U+FFFD.
    void Text(std::string_view text);
    void Quoted(std::string_view text);
    // A comma before every element or member but the first of its container.
    void Separate();

    std::string& out_;
    bool first_ = true;      // nothing written yet in the innermost open container
    bool afterKey_ = false;  // a member name was written; its value follows without a comma
};

}  // namespace orx::orxmaint
