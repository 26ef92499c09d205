#ifndef VORX_VCC_REGISTER_DFX_INTERFACE_H
#define VORX_VCC_REGISTER_DFX_INTERFACE_H

#include <cstdint>
#include <memory>

#include "vorx/vcc/export.h"

namespace vorx::vcc {

class DDSDfxConfigInterface;
class OrxMaintaindInterface;

// The core's registry of the DFX plug-in's two singletons. The plug-in registers them from its
// static initialisers while it is being loaded, possibly before anything else of the core is
// initialised; the registry's storage is created on first use, so that order is safe.
//
// The registry keeps one reference to each registered object. It drops them at process exit
// (static destruction), so the plug-in's objects are destroyed when the last owner lets go; from
// then on the getters return nullptr. Registering again replaces the earlier object.
//
// Thread-safe: every call may be made from any thread.
class VCC_EXPORT RegisterDfxInterface {
  public:
    static void RegisterDfxConfigInterface(std::shared_ptr<DDSDfxConfigInterface> config);
    static void RegisterOrxMaintaindInterface(std::shared_ptr<OrxMaintaindInterface> client);

    // The registered objects, nullptr when none is registered.
    static std::shared_ptr<DDSDfxConfigInterface> GetDfxConfigInterface();
    static std::shared_ptr<OrxMaintaindInterface> GetOrxMaintaindInterface();

    // How many non-null objects were registered so far (for tests and diagnostics).
    static std::uint32_t DfxConfigRegistrationCount();
    static std::uint32_t OrxMaintaindRegistrationCount();
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_REGISTER_DFX_INTERFACE_H
