// Low-level wire helpers shared by the encoder, decoder and size counter: alignment, little-endian
// conversion and bounds-checked block copies.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

// safeclib's header also defines a generic EXTERN macro; keep it from leaking into our includers.
#pragma push_macro("EXTERN")
#undef EXTERN
#include <safe_mem_lib.h>
#pragma pop_macro("EXTERN")

namespace vorx::serialize::detail {

inline constexpr bool kHostIsLittleEndian = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

// Every primitive is aligned to its own size, relative to the start of the buffer.
constexpr std::size_t Padding(std::size_t position, std::size_t alignment) {
    return (alignment - position % alignment) % alignment;
}

template <class T>
constexpr T ByteSwap(T value) {
    static_assert(std::is_integral_v<T>);
    using U = std::make_unsigned_t<T>;
    U in = static_cast<U>(value);
    U out = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        out = static_cast<U>((out << 8) | ((in >> (8 * i)) & 0xFFu));
    }
    return static_cast<T>(out);
}

// Converts between host order and the little-endian wire order (the same operation both ways).
template <class T>
constexpr T HostToWire(T value) {
    if constexpr (kHostIsLittleEndian || sizeof(T) == 1) {
        return value;
    } else {
        return ByteSwap(value);
    }
}

// Copies `count` bytes into a destination with `space` bytes available, through safeclib's
// memcpy_s (which also refuses null pointers and overlap). Copies are split because memcpy_s
// refuses single copies above RSIZE_MAX_MEM. Returns false if memcpy_s refused.
inline bool CheckedCopy(void* destination, std::size_t space, const void* source,
                        std::size_t count) {
    auto* to = static_cast<unsigned char*>(destination);
    const auto* from = static_cast<const unsigned char*>(source);
    while (count > 0) {
        std::size_t chunk = count < RSIZE_MAX_MEM ? count : RSIZE_MAX_MEM;
        std::size_t room = space < RSIZE_MAX_MEM ? space : RSIZE_MAX_MEM;
        if (memcpy_s(to, room, from, chunk) != EOK) {
            return false;
        }
        to += chunk;
        from += chunk;
        space -= chunk;
        count -= chunk;
    }
    return true;
}

}  // namespace vorx::serialize::detail
