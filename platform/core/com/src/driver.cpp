#include "vorx/vcc/driver/driver.h"

namespace vorx::vcc {

// Out of line so the vtable and type information exist once, in this library.
Driver::~Driver() = default;

}  // namespace vorx::vcc
