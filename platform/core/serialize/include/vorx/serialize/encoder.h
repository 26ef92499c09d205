// CDR encoder and size counter for records and plain types.
//
// Wire format (little-endian CDR):
//   - every integer is aligned to its own size relative to the start of the buffer (padding bytes
//     are zero) and written little-endian;
//   - bool is one byte, 0 or 1;
//   - an enumeration is written as its wire type (traits.h), an integer;
//   - a string is a uint32 length that counts a terminating NUL, the bytes, then the NUL;
//   - a vector or set is a uint32 element count followed by the elements;
//   - a map is a uint32 count followed by (key, value) pairs in key order;
//   - a record is its members in Members() order, in place, with no header of its own.
// Nothing is written at the end to pad the last value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "vorx/serialize/traits.h"
#include "vorx/serialize/wire.h"

namespace vorx::serialize {
namespace detail {

// Walks a value and only advances a position: the size counting pass.
class CountingSink {
  public:
    explicit CountingSink(std::size_t start) : position_(start) {}
    std::size_t Position() const { return position_; }
    void Skip(std::size_t count) { position_ += count; }
    template <class T>
    void Scalar(T /*value*/) {
        position_ += sizeof(T);
    }
    void Bytes(const void* /*source*/, std::size_t count) { position_ += count; }

  private:
    std::size_t position_;
};

// Writes into a zero-filled buffer that the counting pass has sized for the same value, so every
// write fits by construction; a write that does not fit is a broken invariant and aborts.
class BufferSink {
  public:
    BufferSink(uint8_t* data, std::size_t size, std::size_t start)
        : data_(data), size_(size), position_(start) {}
    std::size_t Position() const { return position_; }
    void Skip(std::size_t count) {
        Require(count);
        position_ += count;  // padding: the buffer is zero already
    }
    template <class T>
    void Scalar(T value) {
        Require(sizeof(T));
        T wire = HostToWire(value);
        std::memcpy(data_ + position_, &wire, sizeof(T));
        position_ += sizeof(T);
    }
    void Bytes(const void* source, std::size_t count) {
        Require(count);
        if (!CheckedCopy(data_ + position_, size_ - position_, source, count)) {
            std::abort();
        }
        position_ += count;
    }

  private:
    void Require(std::size_t count) const {
        if (count > size_ - position_) {
            std::abort();
        }
    }

    uint8_t* data_;
    std::size_t size_;
    std::size_t position_;
};

template <class Sink>
class Writer {
  public:
    explicit Writer(Sink& sink) : sink_(sink) {}

    template <class T>
    void Write(const T& value) {
        if constexpr (std::is_same_v<T, bool>) {
            sink_.Scalar(static_cast<uint8_t>(value ? 1 : 0));
        } else if constexpr (kIsInteger<T>) {
            Integer(value);
        } else if constexpr (std::is_enum_v<T>) {
            Integer(static_cast<EnumWireType<T>>(static_cast<std::underlying_type_t<T>>(value)));
        } else if constexpr (std::is_same_v<T, std::string>) {
            Count(value.size() + 1);
            sink_.Bytes(value.data(), value.size());
            sink_.Scalar(uint8_t{0});
        } else if constexpr (IsVector<T>::value) {
            WriteVector(value);
        } else if constexpr (IsMap<T>::value) {
            Count(value.size());
            for (const auto& [key, item] : value) {
                Write(key);
                Write(item);
            }
        } else if constexpr (IsSet<T>::value) {
            Count(value.size());
            for (const auto& key : value) {
                Write(key);
            }
        } else if constexpr (kIsRecord<T>) {
            const auto members = value.Members();
            WriteMembers(members, std::make_index_sequence<std::tuple_size_v<decltype(members)>>{});
        } else {
            static_assert(!sizeof(T*), "vorx::serialize: unsupported type");
        }
    }

  private:
    template <class Tuple, std::size_t... I>
    void WriteMembers(const Tuple& members, std::index_sequence<I...>) {
        (Write(std::get<I>(members)), ...);
    }

    template <class I>
    void Integer(I value) {
        sink_.Skip(Padding(sink_.Position(), sizeof(I)));
        sink_.Scalar(value);
    }

    void Count(std::size_t count) {
        if (count > std::numeric_limits<uint32_t>::max()) {
            throw std::length_error("vorx::serialize: sequence or string too long for CDR");
        }
        Integer(static_cast<uint32_t>(count));
    }

    template <class T, class A>
    void WriteVector(const std::vector<T, A>& value) {
        Count(value.size());
        if constexpr (IsBlockCopyable<T>() && kHostIsLittleEndian) {
            if (!value.empty()) {
                sink_.Skip(Padding(sink_.Position(), sizeof(T)));
                sink_.Bytes(value.data(), value.size() * sizeof(T));
            }
        } else {
            for (const auto& item : value) {
                Write(item);
            }
        }
    }

    Sink& sink_;
};

}  // namespace detail

// Number of bytes Encode(value) produces; walks the value without allocating.
// Throws std::length_error where Encode would.
template <class T>
std::size_t EncodedSize(const T& value) {
    detail::CountingSink counter(0);
    detail::Writer<detail::CountingSink>(counter).Write(value);
    return counter.Position();
}

// Appends the encoding of `value` to `out`. Alignment is relative to out's start (out.data()), so
// the bytes match Encode(value) only when out.size() is a multiple of 8 on entry. Grows `out`
// once, to the exact size. Throws std::length_error if a string or sequence has 2^32 or more
// elements (CDR counts are 32 bits); `out` is then unchanged.
template <class T>
void EncodeAppend(const T& value, std::vector<uint8_t>& out) {
    const std::size_t start = out.size();
    detail::CountingSink counter(start);
    detail::Writer<detail::CountingSink>(counter).Write(value);
    out.resize(counter.Position());
    detail::BufferSink sink(out.data(), out.size(), start);
    detail::Writer<detail::BufferSink>(sink).Write(value);
}

// The CDR encoding of `value`. Throws std::length_error as EncodeAppend does.
template <class T>
std::vector<uint8_t> Encode(const T& value) {
    std::vector<uint8_t> out;
    EncodeAppend(value, out);
    return out;
}

}  // namespace vorx::serialize
