#include "vorx/vcc/dfx_plugin_loader.h"

#include <dlfcn.h>

#include <atomic>

#include "ara/kelda/common/log/log.h"
#include "orx/sync/mutex.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace vorx::vcc {
namespace {

struct LoaderState {
    orx::sync::Mutex mutex;           // serialises Load
    std::atomic<bool> loaded{false};  // read without the lock: the plug-in may ask while loading
};

LoaderState& State() {
    static auto* const state = new LoaderState();  // never destroyed
    return *state;
}

}  // namespace

bool DfxPluginLoader::Load(const std::string& path) {
    LoaderState& state = State();
    orx::sync::MutexLock lock(state.mutex);
    if (state.loaded.load()) {
        return true;
    }
    const auto log = ara::kelda::common::log::Log::GetLog("CM");
    if (path.empty()) {
        log->LogInfo() << "DFX plug-in not configured, maintenance reporting is off";
        return false;
    }
    // The plug-in's static initialisers run inside dlopen and register its singletons.
    (void)dlerror();
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_GLOBAL);
    if (handle == nullptr) {
        const char* error = dlerror();
        log->LogWarn() << "Failed to load DFX plug-in[path=" << path
                       << ", error=" << (error != nullptr ? error : "unknown")
                       << "], maintenance reporting is off";
        return false;
    }
    if (!RegisterDfxInterface::GetOrxMaintaindInterface()) {
        // Not unloaded: its initialisers may have registered other things.
        log->LogWarn() << "DFX plug-in registered no maintenance interface[path=" << path
                       << "], maintenance reporting is off";
        return false;
    }
    state.loaded.store(true);
    log->LogInfo() << "DFX plug-in loaded[path=" << path << "]";
    return true;
}

bool DfxPluginLoader::Loaded() {
    return State().loaded.load();
}

}  // namespace vorx::vcc
