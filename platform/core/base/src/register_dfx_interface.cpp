#include "vorx/vcc/register_dfx_interface.h"

#include <utility>

#include "orx/sync/mutex.h"

namespace vorx::vcc {
namespace {

struct Registry {
    orx::sync::Mutex mutex;
    std::shared_ptr<DDSDfxConfigInterface> config GUARDED_BY(mutex);
    std::shared_ptr<OrxMaintaindInterface> client GUARDED_BY(mutex);
    std::uint32_t configCount GUARDED_BY(mutex) = 0;
    std::uint32_t clientCount GUARDED_BY(mutex) = 0;

    // Replaces the object in `slot` (config or client), counts non-null objects and returns the
    // object replaced, for the caller to drop after unlocking.
    template <typename T>
    std::shared_ptr<T> Exchange(std::shared_ptr<T>& slot, std::uint32_t& count,
                                std::shared_ptr<T> object) REQUIRES(mutex) {
        if (object) {
            ++count;
        }
        return std::exchange(slot, std::move(object));
    }
};

Registry& TheRegistry();

// Drops the registry's references at process exit. The storage itself is never destroyed, so
// calls that come later (from other destructors) still find a valid, empty registry.
struct ReleaseAtExit {
    ReleaseAtExit() = default;
    ReleaseAtExit(const ReleaseAtExit&) = delete;
    ReleaseAtExit& operator=(const ReleaseAtExit&) = delete;
    ~ReleaseAtExit() {
        std::shared_ptr<DDSDfxConfigInterface> config;
        std::shared_ptr<OrxMaintaindInterface> client;
        {
            Registry& registry = TheRegistry();
            orx::sync::MutexLock lock(registry.mutex);
            config = std::move(registry.config);
            client = std::move(registry.client);
        }
        // The plug-in's destructors may run here; they must not find our lock held.
    }
};

Registry& TheRegistry() {
    // Created on first use, which may be inside the plug-in's static initialisers.
    static Registry* const registry = new Registry();
    static ReleaseAtExit release;
    return *registry;
}

}  // namespace

void RegisterDfxInterface::RegisterDfxConfigInterface(
    std::shared_ptr<DDSDfxConfigInterface> config) {
    Registry& registry = TheRegistry();
    std::shared_ptr<DDSDfxConfigInterface> previous;  // dies after the lock is released
    orx::sync::MutexLock lock(registry.mutex);
    previous = registry.Exchange(registry.config, registry.configCount, std::move(config));
}

void RegisterDfxInterface::RegisterOrxMaintaindInterface(
    std::shared_ptr<OrxMaintaindInterface> client) {
    Registry& registry = TheRegistry();
    std::shared_ptr<OrxMaintaindInterface> previous;  // dies after the lock is released
    orx::sync::MutexLock lock(registry.mutex);
    previous = registry.Exchange(registry.client, registry.clientCount, std::move(client));
}

std::shared_ptr<DDSDfxConfigInterface> RegisterDfxInterface::GetDfxConfigInterface() {
    Registry& registry = TheRegistry();
    orx::sync::MutexLock lock(registry.mutex);
    return registry.config;
}

std::shared_ptr<OrxMaintaindInterface> RegisterDfxInterface::GetOrxMaintaindInterface() {
    Registry& registry = TheRegistry();
    orx::sync::MutexLock lock(registry.mutex);
    return registry.client;
}

std::uint32_t RegisterDfxInterface::DfxConfigRegistrationCount() {
    Registry& registry = TheRegistry();
    orx::sync::MutexLock lock(registry.mutex);
    return registry.configCount;
}

std::uint32_t RegisterDfxInterface::OrxMaintaindRegistrationCount() {
    Registry& registry = TheRegistry();
    orx::sync::MutexLock lock(registry.mutex);
    return registry.clientCount;
}

}  // namespace vorx::vcc
