// The static search operations of Proxy.
#include <map>
#include <memory>
#include <utility>

#include "com_log.h"
#include "dfx_config_gate.h"
#include "orx/sync/mutex.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/proxy.h"

namespace vorx::vcc {
namespace {

// Which driver runs each search. Never destroyed: searches are stopped from destructors at exit.
class SearchBook {
  public:
    static SearchBook& Get() {
        static auto* const book = new SearchBook();
        return *book;
    }

    uint64_t Add(std::shared_ptr<Driver> driver, FindId find) {
        orx::sync::MutexLock lock(mutex_);
        const uint64_t id = nextId_++;
        searches_.emplace(id, std::make_pair(std::move(driver), find));
        return id;
    }

    std::pair<std::shared_ptr<Driver>, FindId> Take(uint64_t id) {
        orx::sync::MutexLock lock(mutex_);
        auto it = searches_.find(id);
        if (it == searches_.end()) {
            return {nullptr, 0};
        }
        auto search = std::move(it->second);
        searches_.erase(it);
        return search;
    }

  private:
    orx::sync::Mutex mutex_;
    uint64_t nextId_ GUARDED_BY(mutex_){1};
    std::map<uint64_t, std::pair<std::shared_ptr<Driver>, FindId>> searches_ GUARDED_BY(mutex_);
};

}  // namespace

FindServiceHandle Proxy::StartFindService(
    const FindServiceHandler& handler,
    const std::shared_ptr<driver::dds::DDSServiceDiscoveryInfo>& info) {
    if (!info) {
        ComLog().LogError() << "[Proxy][Service search without service discovery info]";
        return FindServiceHandle{};
    }
    ServiceDescription desc;
    desc.serviceId = info->GetServiceId();
    desc.instanceId = info->GetInstanceId();
    desc.serviceName = info->GetServiceName();
    desc.driverType = api::types::DriverType::DDS;
    desc.network = info->GetNetwork().first;
    return StartFindService(handler, desc);
}

FindServiceHandle Proxy::StartFindService(const FindServiceHandler& handler,
                                          const ServiceDescription& desc) {
    if (!AcceptServiceDiscovery(desc)) {
        return FindServiceHandle{};
    }
    std::shared_ptr<Driver> driver = DriverRegistry::GetInstance()->GetDriver(desc.driverType);
    const FindId find = driver->StartFind(
        desc, [handler](const ServiceHandleContainer& handles) { handler(handles); });
    if (find == 0) {
        ComLog().LogError() << "[Proxy][Service search refused by the driver][driver="
                            << driver->Name() << ", serviceId=" << desc.serviceId
                            << ", instanceId=" << desc.instanceId << "]";
        return FindServiceHandle{};
    }
    ComLog().LogDebug() << "[Proxy][Service search started][serviceId=" << desc.serviceId
                        << ", instanceId=" << desc.instanceId
                        << ", serviceName=" << desc.serviceName << "]";
    return FindServiceHandle{SearchBook::Get().Add(std::move(driver), find)};
}

void Proxy::StopFindService(const FindServiceHandle& handle) {
    auto [driver, find] = SearchBook::Get().Take(handle.id);
    if (driver) {
        driver->StopFind(find);
    }
}

}  // namespace vorx::vcc
