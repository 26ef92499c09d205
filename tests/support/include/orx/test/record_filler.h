#ifndef ORX_TEST_RECORD_FILLER_H
#define ORX_TEST_RECORD_FILLER_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "orx/maintaind/record.h"

namespace orx::test {

// Fills every member of a maintenance record, nested records included. Each value comes from a
// hash of the seed and the member's path of names ("eventInfos.0.ddsEventInfo.serviceId"):
// members differ from one another and from their defaults, and a record whose member list swaps
// two members of the same type gets other bytes. Numbers take the hash (enumerations its low
// byte), texts its last three decimal digits, bools one bit of it: seeds 0 and 1 set every bool
// once each way. Deterministic across runs and machines.
class RecordFiller {
  public:
    struct Options {
        uint64_t seed = 0;
        std::size_t elements = 2;         // entries of the sequences, sets and maps of the record
        std::size_t nestedElements = 2;   // the same inside its nested records
        std::size_t recordElements = 64;  // at most this many where the entries are records
    };

    RecordFiller() = default;
    explicit RecordFiller(Options options) : options_(options) {}

    template <class T>
    void Fill(T& value) const {
        FillAt(value, Hash(options_.seed * 0x9E3779B97F4A7C15ULL, "."), 0);
    }

  private:
    static uint64_t Hash(uint64_t seed, std::string_view text) {  // FNV-1a, then mixed
        uint64_t hash = 0xCBF29CE484222325ULL ^ seed;
        for (const unsigned char c : text) {
            hash = (hash ^ c) * 0x100000001B3ULL;
        }
        return hash ^ (hash >> 29);
    }

    template <class T>
    void FillAt(T& value, uint64_t path, std::size_t depth) const {
        if constexpr (orx::maintaind::IsRecordV<T>) {
            orx::maintaind::VisitMembers(value, [&](std::string_view name, auto& member) {
                FillAt(member, Hash(path, name), depth + 1);
            });
        } else if constexpr (std::is_same_v<T, bool>) {
            value = ((path >> 7) + options_.seed) % 2 == 1;
        } else if constexpr (std::is_enum_v<T>) {
            value = static_cast<T>(path % 256);  // one byte on the wire, whatever the width
        } else if constexpr (std::is_arithmetic_v<T>) {
            value = static_cast<T>(path);
        } else if constexpr (std::is_same_v<T, std::string>) {
            value = std::to_string(path % 1000);
        } else {
            FillContainer(value, path, depth);
        }
    }

    template <class E>
    std::size_t Elements(std::size_t depth) const {
        const std::size_t count = depth <= 1 ? options_.elements : options_.nestedElements;
        return orx::maintaind::IsRecordV<E> ? std::min(count, options_.recordElements) : count;
    }

    template <class E>
    void FillContainer(std::vector<E>& values, uint64_t path, std::size_t depth) const {
        values.assign(Elements<E>(depth), E{});
        for (std::size_t i = 0; i < values.size(); ++i) {
            FillAt(values[i], Hash(path, std::to_string(i)), depth);
        }
    }

    // Keys are hashed too; a key that repeats is drawn again.
    template <class K, class V>
    void FillContainer(std::map<K, V>& values, uint64_t path, std::size_t depth) const {
        values.clear();
        for (std::size_t i = 0; values.size() < Elements<V>(depth) && i < 64; ++i) {
            K key{};
            FillAt(key, Hash(path, "key" + std::to_string(i)), depth);
            FillAt(values[key], Hash(path, std::to_string(i)), depth);
        }
    }

    template <class E>
    void FillContainer(std::set<E>& values, uint64_t path, std::size_t depth) const {
        values.clear();
        for (std::size_t i = 0; values.size() < Elements<E>(depth) && i < 64; ++i) {
            E element{};
            FillAt(element, Hash(path, std::to_string(i)), depth);
            values.insert(element);
        }
    }

    Options options_;
};

// A `T` filled by a RecordFiller with `options`.
template <class T>
T FilledRecord(RecordFiller::Options options = {}) {
    T value{};
    RecordFiller(options).Fill(value);
    return value;
}

}  // namespace orx::test

#endif  // ORX_TEST_RECORD_FILLER_H
