#ifndef VORX_VCC_CODEC_H
#define VORX_VCC_CODEC_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "vorx/serialize/cdr.h"
#include "vorx/vcc/payload.h"

// How the core turns call arguments, replies and event samples into payloads and back. Bytes are
// the CDR of the core's encoders. A call with one argument carries exactly that argument's CDR;
// a call with several carries, per argument, its CDR length (uint32, little-endian) followed by
// its CDR; a call without arguments carries no bytes.
namespace vorx::vcc::codec {

// Encodes one value. Returns false when the encoder wrote another number of bytes than it
// counted beforehand (a broken record description); `out` is then unusable.
template <class T>
bool EncodeValue(const T& value, std::vector<uint8_t>& out) {
    const size_t expected = serialize::EncodedSize(value);
    out = serialize::Encode(value);
    return out.size() == expected;
}

// Decodes one value from exactly `size` bytes. False on any malformed input; `out` is then
// unspecified.
template <class T>
bool DecodeValue(const uint8_t* data, size_t size, T& out) {
    return serialize::Decode(data, size, out).ok();
}

// Reads a value from a payload of either form: copies the object when it has type T, decodes
// the bytes otherwise. False for an object of another type, bad bytes or an empty payload.
template <class T>
bool ReadValue(const Payload& payload, T& out) {
    if (payload.HasObject()) {
        const T* object = payload.GetObject<T>();
        if (object == nullptr) {
            return false;
        }
        out = *object;
        return true;
    }
    if (!payload.HasBytes()) {
        return false;
    }
    const std::vector<uint8_t>& bytes = payload.GetBytes();
    return DecodeValue(bytes.data(), bytes.size(), out);
}

namespace detail {

inline void AppendLength(std::vector<uint8_t>& out, uint32_t length) {
    for (int shift = 0; shift < 32; shift += 8) {
        out.push_back(static_cast<uint8_t>(length >> shift));
    }
}

template <class T>
bool AppendFramed(std::vector<uint8_t>& out, const T& value) {
    std::vector<uint8_t> one;
    if (!EncodeValue(value, one)) {
        return false;
    }
    AppendLength(out, static_cast<uint32_t>(one.size()));
    out.insert(out.end(), one.begin(), one.end());
    return true;
}

template <class T>
bool ReadFramed(const uint8_t*& data, size_t& left, T& out) {
    if (left < 4) {
        return false;
    }
    uint32_t length = 0;
    for (int i = 0; i < 4; ++i) {
        length |= static_cast<uint32_t>(data[i]) << (8 * i);
    }
    data += 4;
    left -= 4;
    if (length > left) {
        return false;
    }
    if (!DecodeValue(data, length, out)) {
        return false;
    }
    data += length;
    left -= length;
    return true;
}

}  // namespace detail

// Encodes call arguments as described at the top. Returns false like EncodeValue.
template <class... Args>
bool EncodeArgs(std::vector<uint8_t>& out, const Args&... args) {
    if constexpr (sizeof...(Args) == 1) {
        return EncodeValue(args..., out);
    } else {
        out.clear();
        return (detail::AppendFramed(out, args) && ...);
    }
}

// The object form of call arguments: the argument itself for one, a tuple of copies otherwise.
template <class... Args>
Payload MakeArgsObject(const Args&... args) {
    if constexpr (sizeof...(Args) == 1) {
        using Arg = std::decay_t<std::tuple_element_t<0, std::tuple<Args...>>>;
        return Payload::FromObject(std::make_shared<const Arg>(args...));
    } else {
        using Tuple = std::tuple<std::decay_t<Args>...>;
        return Payload::FromObject(std::make_shared<const Tuple>(args...));
    }
}

// Reads call arguments from a payload of either form into `out`. False on a mismatch.
template <class... Args>
bool ReadArgs(const Payload& payload, std::tuple<Args...>& out) {
    if constexpr (sizeof...(Args) == 1) {
        return ReadValue(payload, std::get<0>(out));
    } else if constexpr (sizeof...(Args) == 0) {
        return payload.IsEmpty() || (payload.HasBytes() && payload.ByteSize() == 0) ||
               payload.GetObject<std::tuple<>>() != nullptr;
    } else {
        if (payload.HasObject()) {
            const auto* object = payload.GetObject<std::tuple<Args...>>();
            if (object == nullptr) {
                return false;
            }
            out = *object;
            return true;
        }
        const std::vector<uint8_t>& bytes = payload.GetBytes();
        const uint8_t* data = bytes.data();
        size_t left = bytes.size();
        const bool ok = std::apply(
            [&data, &left](auto&... values) {
                return (detail::ReadFramed(data, left, values) && ...);
            },
            out);
        return ok && left == 0;
    }
}

}  // namespace vorx::vcc::codec

#endif  // VORX_VCC_CODEC_H
