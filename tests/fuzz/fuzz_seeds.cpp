// Writes a seed corpus for orx_fuzz_decode into the directory given as the only argument: empty
// and fully populated encodings of each fuzzed record, each behind its selector byte. Seeds are
// made by the encoder itself, so they stay valid when the records change.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "orx/maintaind/types.h"
#include "orx/test/record_filler.h"
#include "vorx/serialize/cdr.h"

namespace {

template <class T>
bool WriteSeed(const std::string& directory, const std::string& name, uint8_t selector,
               const T& value) {
    // The fuzzer decodes what follows the selector, aligned to that point: not EncodeAppend.
    std::vector<uint8_t> bytes = vorx::serialize::Encode(value);
    bytes.insert(bytes.begin(), selector);
    std::ofstream file(directory + "/" + name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(file);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <corpus directory>\n", argv[0]);
        return 2;
    }
    using namespace orx::maintaind;
    using orx::test::FilledRecord;
    const std::string directory = argv[1];
    bool ok = WriteSeed(directory, "seed-app-default", 0, AppRegisterInfo{}) &&
              WriteSeed(directory, "seed-app-one", 0, FilledRecord<AppRegisterInfo>({1, 1, 1})) &&
              WriteSeed(directory, "seed-app-two", 0, FilledRecord<AppRegisterInfo>({0, 2, 2})) &&
              WriteSeed(directory, "seed-switch-default", 1, LatencySwitch{}) &&
              WriteSeed(directory, "seed-switch", 1, FilledRecord<LatencySwitch>({1, 3, 3})) &&
              WriteSeed(directory, "seed-return-code", 2, ReturnCode{1});
    if (!ok) {
        std::fprintf(stderr, "cannot write seeds into %s\n", directory.c_str());
        return 1;
    }
    return 0;
}
