// CDR decoder for records and plain types; the inverse of encoder.h, for hostile input.
//
// Every length and count is checked against the bytes that are left before anything is
// allocated (N elements need at least N times the smallest encoding of one element), nesting is
// bounded, and the input must be canonical: bools 0 or 1, zero padding, NUL-terminated strings,
// strictly ascending map and set keys, no trailing bytes. Hence any input that decodes
// successfully re-encodes to the very same bytes. Unknown enumeration values are accepted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "vorx/serialize/decode_status.h"
#include "vorx/serialize/traits.h"
#include "vorx/serialize/wire.h"

namespace vorx::serialize {
namespace detail {

class Reader {
  public:
    Reader(const uint8_t* data, std::size_t size, const DecodeLimits& limits)
        : data_(data), size_(size), limits_(limits) {}

    const DecodeStatus& Status() const { return status_; }
    std::size_t Position() const { return position_; }

    // Decodes one value into `out`. On failure returns false and Status() tells why; `out` is
    // then valid but holds a partial value.
    template <class T>
    bool Read(T& out) {
        if constexpr (std::is_same_v<T, bool>) {
            return ReadBool(out);
        } else if constexpr (kIsInteger<T>) {
            return Integer(out);
        } else if constexpr (std::is_enum_v<T>) {
            EnumWireType<T> wire{};
            if (!Integer(wire)) {
                return false;
            }
            out = static_cast<T>(static_cast<std::underlying_type_t<T>>(wire));
            return true;
        } else if constexpr (std::is_same_v<T, std::string>) {
            return ReadString(out);
        } else if constexpr (IsVector<T>::value) {
            return Nested([&] { return ReadVector(out); });
        } else if constexpr (IsMap<T>::value || IsSet<T>::value) {
            return Nested([&] { return ReadSorted(out); });
        } else if constexpr (kIsRecord<T>) {
            return Nested([&] {
                auto members = out.Members();
                return ReadMembers(
                    members, std::make_index_sequence<std::tuple_size_v<decltype(members)>>{});
            });
        } else {
            static_assert(!sizeof(T*), "vorx::serialize: unsupported type");
            return false;
        }
    }

  private:
    std::size_t Left() const { return size_ - position_; }

    // Members in order, stopping at the first failure.
    template <class Tuple, std::size_t... I>
    bool ReadMembers(Tuple& members, std::index_sequence<I...>) {
        return (Read(std::get<I>(members)) && ...);
    }

    bool Fail(DecodeError error, std::size_t offset) {
        status_.error = error;
        status_.offset = offset;
        return false;
    }

    template <class F>
    bool Nested(F&& body) {
        if (depth_ >= limits_.maxDepth) {
            return Fail(DecodeError::kTooDeep, position_);
        }
        ++depth_;
        bool ok = body();
        --depth_;
        return ok;
    }

    bool Align(std::size_t alignment) {
        std::size_t padding = Padding(position_, alignment);
        if (padding > Left()) {
            return Fail(DecodeError::kTruncated, position_);
        }
        for (std::size_t i = 0; i < padding; ++i) {
            if (data_[position_ + i] != 0) {
                return Fail(DecodeError::kBadPadding, position_ + i);
            }
        }
        position_ += padding;
        return true;
    }

    template <class I>
    bool Integer(I& out) {
        if (!Align(sizeof(I))) {
            return false;
        }
        if (Left() < sizeof(I)) {
            return Fail(DecodeError::kTruncated, position_);
        }
        I wire;
        std::memcpy(&wire, data_ + position_, sizeof(I));
        out = HostToWire(wire);
        position_ += sizeof(I);
        return true;
    }

    bool ReadBool(bool& out) {
        if (Left() < 1) {
            return Fail(DecodeError::kTruncated, position_);
        }
        uint8_t byte = data_[position_];
        if (byte > 1) {
            return Fail(DecodeError::kBadBool, position_);
        }
        out = byte == 1;
        ++position_;
        return true;
    }

    // Reads an element count and checks it against the limit and against the bytes left.
    bool ReadCount(uint32_t& count, std::size_t minElementSize) {
        if (!Align(sizeof(uint32_t))) {
            return false;
        }
        const std::size_t at = position_;
        if (!Integer(count)) {
            return false;
        }
        if (count > limits_.maxElements) {
            return Fail(DecodeError::kTooManyElements, at);
        }
        if (minElementSize > 0 && count > Left() / minElementSize) {
            return Fail(DecodeError::kLengthPastEnd, at);
        }
        return true;
    }

    bool ReadString(std::string& out) {
        if (!Align(sizeof(uint32_t))) {
            return false;
        }
        const std::size_t at = position_;
        uint32_t length = 0;
        if (!Integer(length)) {
            return false;
        }
        if (length == 0) {
            return Fail(DecodeError::kBadString, at);
        }
        if (length - 1 > limits_.maxStringLength) {
            return Fail(DecodeError::kStringTooLong, at);
        }
        if (length > Left()) {
            return Fail(DecodeError::kLengthPastEnd, at);
        }
        if (data_[position_ + length - 1] != 0) {
            return Fail(DecodeError::kBadString, position_ + length - 1);
        }
        out.resize(length - 1);
        if (!CheckedCopy(out.data(), out.size(), data_ + position_, length - 1)) {
            return Fail(DecodeError::kLengthPastEnd, at);
        }
        position_ += length;
        return true;
    }

    template <class T, class A>
    bool ReadVector(std::vector<T, A>& out) {
        uint32_t count = 0;
        if (!ReadCount(count, MinWireSize<T>())) {
            return false;
        }
        out.clear();
        if constexpr (IsBlockCopyable<T>() && kHostIsLittleEndian) {
            if (count == 0) {
                return true;
            }
            if (!Align(sizeof(T))) {
                return false;
            }
            const std::size_t bytes = std::size_t{count} * sizeof(T);
            if (bytes > Left()) {
                return Fail(DecodeError::kLengthPastEnd, position_);
            }
            out.resize(count);
            if (!CheckedCopy(out.data(), bytes, data_ + position_, bytes)) {
                return Fail(DecodeError::kLengthPastEnd, position_);
            }
            position_ += bytes;
            return true;
        } else {
            // The count is bounded by the bytes left unless elements can be empty; then only the
            // element limit bounds it, so do not reserve ahead.
            if constexpr (MinWireSize<T>() > 0) {
                out.reserve(count);
            }
            for (uint32_t i = 0; i < count; ++i) {
                if constexpr (std::is_same_v<T, bool>) {
                    bool item = false;
                    if (!ReadBool(item)) {
                        return false;
                    }
                    out.push_back(item);
                } else {
                    out.emplace_back();
                    if (!Read(out.back())) {
                        return false;
                    }
                }
            }
            return true;
        }
    }

    // Maps and sets: keys must be strictly ascending, which also rules out duplicates.
    template <class Container>
    bool ReadSorted(Container& out) {
        using Key = typename Container::key_type;
        constexpr bool kIsMap = IsMap<Container>::value;
        std::size_t minElementSize = MinWireSize<Key>();
        if constexpr (kIsMap) {
            minElementSize += MinWireSize<typename Container::mapped_type>();
        }
        uint32_t count = 0;
        if (!ReadCount(count, minElementSize)) {
            return false;
        }
        out.clear();
        for (uint32_t i = 0; i < count; ++i) {
            const std::size_t at = position_;
            Key key{};
            if (!Read(key)) {
                return false;
            }
            if (!out.empty() && !out.key_comp()(KeyOf(*std::prev(out.end())), key)) {
                return Fail(DecodeError::kUnsortedMapKeys, at);
            }
            if constexpr (kIsMap) {
                auto it = out.emplace_hint(out.end(), std::piecewise_construct,
                                           std::forward_as_tuple(std::move(key)),
                                           std::forward_as_tuple());
                if (!Read(it->second)) {
                    return false;
                }
            } else {
                out.emplace_hint(out.end(), std::move(key));
            }
        }
        return true;
    }

    template <class K, class V>
    static const K& KeyOf(const std::pair<const K, V>& entry) {
        return entry.first;
    }
    template <class K>
    static const K& KeyOf(const K& key) {
        return key;
    }

    const uint8_t* data_;
    std::size_t size_;
    DecodeLimits limits_;
    std::size_t position_ = 0;
    uint32_t depth_ = 0;
    DecodeStatus status_;
};

}  // namespace detail

// Decodes `size` bytes at `data` into `out`; alignment is relative to `data`. The whole input
// must be exactly one encoded value. On success returns an ok status and `out` holds the value.
// On failure returns the error and the offset where it was found; `out` is then valid but holds
// an unspecified partial value. Never reads outside [data, data + size), never allocates more
// than a small multiple of `size`.
template <class T>
DecodeStatus Decode(const uint8_t* data, std::size_t size, T& out,
                    const DecodeLimits& limits = {}) {
    detail::Reader reader(data, size, limits);
    if (!reader.Read(out)) {
        return reader.Status();
    }
    if (reader.Position() != size) {
        return DecodeStatus{DecodeError::kTrailingBytes, reader.Position()};
    }
    return DecodeStatus{};
}

template <class T>
DecodeStatus Decode(const std::vector<uint8_t>& bytes, T& out, const DecodeLimits& limits = {}) {
    return Decode(bytes.data(), bytes.size(), out, limits);
}

}  // namespace vorx::serialize
