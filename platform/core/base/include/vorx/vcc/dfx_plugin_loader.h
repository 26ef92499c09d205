#ifndef VORX_VCC_DFX_PLUGIN_LOADER_H
#define VORX_VCC_DFX_PLUGIN_LOADER_H

#include <string>

#include "vorx/vcc/export.h"

namespace vorx::vcc {

// Loads the DFX plug-in (liborxcm_dfx.so), whose static initialisers register its singletons
// with RegisterDfxInterface. The process runs on without maintenance reporting when there is
// none.
class VCC_EXPORT DfxPluginLoader {
  public:
    // Opens the plug-in at `path` with dlopen(RTLD_NOW | RTLD_GLOBAL). The caller chooses the
    // path from its settings (the core's runtime: $ORX_DFX_PLUGIN, else "dfx.pluginPath" of
    // orx.json); the loader reads no configuration of its own.
    // Returns true when the plug-in is loaded and a maintenance interface is registered.
    // Returns false:
    //  - quietly (one info line) when `path` is empty: no plug-in configured;
    //  - with one warning line naming the path and the dlerror() text when the file is missing
    //    or not a loadable library;
    //  - with one warning line when the library loaded but registered no maintenance interface.
    // After a successful load, later calls do nothing and return true (the plug-in is loaded at
    // most once per process); after a failure, a later call may try again. The plug-in is never
    // unloaded. Thread-safe; concurrent calls are serialised.
    static bool Load(const std::string& path);

    // True once Load has succeeded.
    static bool Loaded();
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_DFX_PLUGIN_LOADER_H
