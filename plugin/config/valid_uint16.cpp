#include "config/valid_uint16.h"

#include <cerrno>

namespace orx {
namespace orxcm {
namespace utils {

namespace {

// std::stoi reports a range error through errno as well as by throwing; callers of ValidUint16
// must find their own errno unchanged, also when the conversion throws.
class ErrnoKeeper {
  public:
    ErrnoKeeper() : saved_(errno) {}
    ~ErrnoKeeper() { errno = saved_; }
    ErrnoKeeper(const ErrnoKeeper&) = delete;
    ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

  private:
    int saved_;
};

int ToInt(const std::string& text) {
    const ErrnoKeeper keeper;
    return std::stoi(text);
}

}  // namespace

bool ValidUint16(const std::string& text) {
    // Taken as unsigned, every negative number lands far above 65535.
    return static_cast<uint32_t>(ToInt(text)) <= 0xFFFFU;
}

bool ValidUint16(const std::string& text, uint16_t& value) {
    if (!ValidUint16(text)) {
        return false;
    }
    value = static_cast<uint16_t>(ToInt(text));
    return true;
}

}  // namespace utils
}  // namespace orxcm
}  // namespace orx
