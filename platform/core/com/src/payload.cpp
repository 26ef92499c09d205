#include "vorx/vcc/payload.h"

namespace vorx::vcc {

Payload Payload::FromBytes(std::vector<uint8_t> bytes) {
    Payload payload;
    payload.bytes_ = std::make_shared<const std::vector<uint8_t>>(std::move(bytes));
    return payload;
}

const std::vector<uint8_t>& Payload::GetBytes() const {
    static const std::vector<uint8_t>* const kNone = new std::vector<uint8_t>();
    return bytes_ ? *bytes_ : *kNone;
}

}  // namespace vorx::vcc
