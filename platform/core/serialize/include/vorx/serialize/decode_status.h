// Outcome and limits of a CDR decode.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vorx::serialize {

enum class DecodeError : uint8_t {
    kOk = 0,
    kTruncated,        // the input ends inside a fixed-size value or its alignment padding
    kLengthPastEnd,    // a string length or element count needs more bytes than are left
    kTooDeep,          // records and containers nested deeper than DecodeLimits::maxDepth
    kTooManyElements,  // an element count above DecodeLimits::maxElements
    kStringTooLong,    // a string longer than DecodeLimits::maxStringLength
    kBadBool,          // a bool byte other than 0 or 1
    kBadString,        // a string length of 0, or a string whose last byte is not NUL
    kUnsortedMapKeys,  // map or set keys not strictly ascending (out of order or repeated)
    kTrailingBytes,    // bytes left after the value
    kBadPadding,       // a non-zero alignment padding byte (our encoder writes zeros)
};

// Bounds that keep a decode of hostile input small and shallow.
struct DecodeLimits {
    uint32_t maxDepth = 16;               // records, vectors, maps and sets nested; the top is 1
    uint32_t maxElements = 1u << 20;      // elements of any one vector, map or set
    uint32_t maxStringLength = 1u << 20;  // characters of one string, without its NUL
};

// Name of the enumerator, e.g. "kBadBool".
constexpr const char* ToString(DecodeError error) {
    switch (error) {
        case DecodeError::kOk:
            return "kOk";
        case DecodeError::kTruncated:
            return "kTruncated";
        case DecodeError::kLengthPastEnd:
            return "kLengthPastEnd";
        case DecodeError::kTooDeep:
            return "kTooDeep";
        case DecodeError::kTooManyElements:
            return "kTooManyElements";
        case DecodeError::kStringTooLong:
            return "kStringTooLong";
        case DecodeError::kBadBool:
            return "kBadBool";
        case DecodeError::kBadString:
            return "kBadString";
        case DecodeError::kUnsortedMapKeys:
            return "kUnsortedMapKeys";
        case DecodeError::kTrailingBytes:
            return "kTrailingBytes";
        case DecodeError::kBadPadding:
            return "kBadPadding";
    }
    return "unknown DecodeError";
}

// What a decode error means, in words.
constexpr const char* Describe(DecodeError error) {
    switch (error) {
        case DecodeError::kOk:
            return "no error";
        case DecodeError::kTruncated:
            return "input ends inside a value";
        case DecodeError::kLengthPastEnd:
            return "length or element count runs past the end of the input";
        case DecodeError::kTooDeep:
            return "records and containers nested deeper than the limit";
        case DecodeError::kTooManyElements:
            return "element count above the limit";
        case DecodeError::kStringTooLong:
            return "string longer than the limit";
        case DecodeError::kBadBool:
            return "bool byte other than 0 or 1";
        case DecodeError::kBadString:
            return "string of length 0 or without its terminating NUL";
        case DecodeError::kUnsortedMapKeys:
            return "map or set keys not in strictly ascending order";
        case DecodeError::kTrailingBytes:
            return "bytes left over after the value";
        case DecodeError::kBadPadding:
            return "alignment padding byte is not zero";
    }
    return "unknown error";
}

struct DecodeStatus {
    DecodeError error = DecodeError::kOk;
    std::size_t offset = 0;  // byte offset in the input where the failing item was found

    bool ok() const { return error == DecodeError::kOk; }

    // For example "CDR decode failed at offset 17: kBadBool (bool byte other than 0 or 1)".
    std::string Message() const {
        if (ok()) {
            return "CDR decode succeeded";
        }
        return std::string("CDR decode failed at offset ") + std::to_string(offset) + ": " +
               ToString(error) + " (" + Describe(error) + ")";
    }
};

}  // namespace vorx::serialize
