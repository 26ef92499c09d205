#include "output/json_writer.h"

#include <charconv>

namespace orx::orxmaint {

namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr const char* kHex = "0123456789abcdef";

// Length of the well-formed UTF-8 sequence at the start of `text`, 0 when it is not one
// (stray continuation byte, overlong form, surrogate, beyond U+10FFFF, cut short).
size_t Utf8SequenceLength(std::string_view text) {
    const auto byte = [&text](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;   // no overlong forms
        high = lead == 0xED ? 0x9F : 0xBF;  // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;  // nothing beyond U+10FFFF
    } else {
        return 0;
    }
    if (text.size() < length || byte(1) < low || byte(1) > high) {
        return 0;
    }
    for (size_t i = 2; i < length; ++i) {
        if (byte(i) < 0x80 || byte(i) > 0xBF) {
            return 0;
        }
    }
    return length;
}

}  // namespace

void JsonWriter::Separate() {
    if (afterKey_) {
        afterKey_ = false;
    } else if (!first_) {
        out_ += ',';
    }
    first_ = false;
}

void JsonWriter::BeginObject() {
    Separate();
    out_ += '{';
    first_ = true;
}

void JsonWriter::EndObject() {
    out_ += '}';
    first_ = false;
}

void JsonWriter::BeginArray() {
    Separate();
    out_ += '[';
    first_ = true;
}

void JsonWriter::EndArray() {
    out_ += ']';
    first_ = false;
}

void JsonWriter::Key(std::string_view name) {
    Separate();
    Quoted(name);
    out_ += ':';
    afterKey_ = true;
}

void JsonWriter::Number(int64_t value) {
    Separate();
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof(digits), value).ptr;
    out_.append(digits, end);
}

void JsonWriter::Number(uint64_t value) {
    Separate();
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof(digits), value).ptr;
    out_.append(digits, end);
}

void JsonWriter::Text(std::string_view text) {
    Separate();
    Quoted(text);
}

void JsonWriter::Quoted(std::string_view text) {
    out_ += '"';
    size_t i = 0;
    while (i < text.size()) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c >= 0x80) {
            const size_t length = Utf8SequenceLength(text.substr(i));
            if (length == 0) {
                out_ += kReplacement;
                ++i;
            } else {
                out_.append(text.substr(i, length));
                i += length;
            }
            continue;
        }
        switch (c) {
            case '"':
                out_ += "\\\"";
                break;
            case '\\':
                out_ += "\\\\";
                break;
            case '\n':
                out_ += "\\n";
                break;
            case '\r':
                out_ += "\\r";
                break;
            case '\t':
                out_ += "\\t";
                break;
            case '\b':
                out_ += "\\b";
                break;
            case '\f':
                out_ += "\\f";
                break;
            default:
                if (c < 0x20) {
                    out_ += "\\u00";
                    out_ += kHex[c >> 4];
                    out_ += kHex[c & 0x0F];
                } else {
                    out_ += static_cast<char>(c);
                }
                break;
        }
        ++i;
    }
    out_ += '"';
}

}  // namespace orx::orxmaint
