// libFuzzer target for the CDR decoder. The first input byte picks the record type, the rest is
// decoded. Any input must either be refused with an in-range offset or decode to a value that
// re-encodes to exactly the same bytes; sanitizers and libFuzzer's malloc limit catch crashes,
// overreads and oversized allocations.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "orx/maintaind/types.h"
#include "vorx/serialize/cdr.h"

namespace {

template <class T>
void DecodeAndCheck(const uint8_t* data, std::size_t size) {
    T value;
    const vorx::serialize::DecodeStatus status = vorx::serialize::Decode(data, size, value);
    if (!status.ok()) {
        if (status.offset > size) {
            std::abort();
        }
        return;
    }
    const std::vector<uint8_t> bytes = vorx::serialize::Encode(value);
    if (bytes.size() != size || vorx::serialize::EncodedSize(value) != size ||
        (size > 0 && std::memcmp(bytes.data(), data, size) != 0)) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const uint8_t selector = data[0];
    ++data;
    --size;
    switch (selector % 3) {
        case 0:
            DecodeAndCheck<orx::maintaind::AppRegisterInfo>(data, size);
            break;
        case 1:
            DecodeAndCheck<orx::maintaind::LatencySwitch>(data, size);
            break;
        default:
            DecodeAndCheck<orx::maintaind::ReturnCode>(data, size);
            break;
    }
    return 0;
}
