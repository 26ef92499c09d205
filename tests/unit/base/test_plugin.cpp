// A stand-in DFX plug-in: like the real one, it registers its two singletons from a static
// initialiser while it is being loaded.
#include "fake_dfx_objects.h"

namespace {

int g_token = 0;

struct Registrar {
    Registrar() {
        using vorx::vcc::RegisterDfxInterface;
        RegisterDfxInterface::RegisterDfxConfigInterface(
            vorx::vcc::test::FakeDfxObject<vorx::vcc::DDSDfxConfigInterface>(g_token));
        RegisterDfxInterface::RegisterOrxMaintaindInterface(
            vorx::vcc::test::FakeDfxObject<vorx::vcc::OrxMaintaindInterface>(g_token));
    }
};

const Registrar g_registrar;

}  // namespace
