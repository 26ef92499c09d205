#ifndef ARA_COM_INTERNAL_BIND_INDEX_H
#define ARA_COM_INTERNAL_BIND_INDEX_H

#include <cstdint>
#include <string>

namespace ara {
namespace com {
namespace internal {

// Names one entity of one service instance when the core asks a
// configuration provider for its settings.
struct BindIndex {
    std::string serviceName;  // service path, e.g. "/velmar/ap/orx/ORXMaintaindAppService"
    std::string instanceId;   // instance id as text
    uint32_t entityId{0};     // event or method entity id; 0 for the service itself
};

}  // namespace internal
}  // namespace com
}  // namespace ara

#endif
