#ifndef TESTS_UNIT_BASE_FAKE_DFX_OBJECTS_H
#define TESTS_UNIT_BASE_FAKE_DFX_OBJECTS_H

#include <memory>

#include "vorx/vcc/register_dfx_interface.h"

namespace vorx::vcc::test {

// The registry only stores and hands back pointers; it never calls the objects. These tests do
// not need the real interface classes, so they register opaque pointers to a token that are
// never dereferenced nor deleted.
template <typename Interface>
std::shared_ptr<Interface> FakeDfxObject(int& token) {
    return std::shared_ptr<Interface>(reinterpret_cast<Interface*>(&token), [](Interface*) {});
}

}  // namespace vorx::vcc::test

#endif  // TESTS_UNIT_BASE_FAKE_DFX_OBJECTS_H
