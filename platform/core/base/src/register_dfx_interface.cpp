#include "vorx/vcc/register_dfx_interface.h"

#include <mutex>
#include <utility>

namespace vorx::vcc {
namespace {

struct Registry {
    std::mutex mutex;
    std::shared_ptr<DDSDfxConfigInterface> config;  // guarded by mutex
    std::shared_ptr<OrxMaintaindInterface> client;  // guarded by mutex
    std::uint32_t configCount = 0;                  // guarded by mutex
    std::uint32_t clientCount = 0;                  // guarded by mutex
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
            std::lock_guard<std::mutex> lock(registry.mutex);
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

// Replaces the object in `slot` (a member of `registry`) and counts non-null objects.
template <typename T>
void Store(Registry& registry, std::shared_ptr<T>& slot, std::uint32_t& count,
           std::shared_ptr<T> object) {
    std::shared_ptr<T> previous;  // dies after the lock is released
    std::lock_guard<std::mutex> lock(registry.mutex);
    if (object) {
        ++count;
    }
    previous = std::exchange(slot, std::move(object));
}

}  // namespace

void RegisterDfxInterface::RegisterDfxConfigInterface(
    std::shared_ptr<DDSDfxConfigInterface> config) {
    Registry& registry = TheRegistry();
    Store(registry, registry.config, registry.configCount, std::move(config));
}

void RegisterDfxInterface::RegisterOrxMaintaindInterface(
    std::shared_ptr<OrxMaintaindInterface> client) {
    Registry& registry = TheRegistry();
    Store(registry, registry.client, registry.clientCount, std::move(client));
}

std::shared_ptr<DDSDfxConfigInterface> RegisterDfxInterface::GetDfxConfigInterface() {
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    return registry.config;
}

std::shared_ptr<OrxMaintaindInterface> RegisterDfxInterface::GetOrxMaintaindInterface() {
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    return registry.client;
}

std::uint32_t RegisterDfxInterface::DfxConfigRegistrationCount() {
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    return registry.configCount;
}

std::uint32_t RegisterDfxInterface::OrxMaintaindRegistrationCount() {
    Registry& registry = TheRegistry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    return registry.clientCount;
}

}  // namespace vorx::vcc
