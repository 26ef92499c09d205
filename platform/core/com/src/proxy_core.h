#ifndef VORX_VCC_COM_SRC_PROXY_CORE_H
#define VORX_VCC_COM_SRC_PROXY_CORE_H

#include <cstdint>
#include <map>
#include <memory>
#include <typeinfo>
#include <vector>

#include "event_receiver.h"
#include "orx/sync/mutex.h"
#include "vorx/vcc/driver/driver.h"
#include "vorx/vcc/method_proxy.h"
#include "vorx/vcc/proxy.h"

namespace vorx::vcc {

// What a Proxy owns: its client connection to the driver, its method proxies and its events.
// Driver callbacks hold it weakly, so a reply racing the proxy's end is simply dropped.
class Proxy::Core : public std::enable_shared_from_this<Proxy::Core> {
  public:
    struct MethodEntry {
        const std::type_info* type{nullptr};
        std::shared_ptr<MethodProxyBase> proxy;
    };

    explicit Core(const HandleType& handle);

    // Opens the client connection. Call once, right after construction.
    void Connect();
    // Ends everything; see ~Proxy.
    void Shutdown();

    std::vector<std::shared_ptr<MethodProxyBase>> Methods() const;

    const HandleType handle;
    std::shared_ptr<Driver> driver;  // set by Connect, then constant
    ClientId client{0};              // set by Connect, then constant
    EventReceiver events;
    mutable orx::sync::Mutex mutex;
    std::map<uint32_t, MethodEntry> methods GUARDED_BY(mutex);

  private:
    void OnReply(const MethodReply& reply);
    void OnServiceLost();
};

}  // namespace vorx::vcc

#endif  // VORX_VCC_COM_SRC_PROXY_CORE_H
