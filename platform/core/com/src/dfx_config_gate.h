#ifndef VORX_VCC_COM_SRC_DFX_CONFIG_GATE_H
#define VORX_VCC_COM_SRC_DFX_CONFIG_GATE_H

#include <cstdint>
#include <memory>

#include "vorx/vcc/api/types/entity_info.h"
#include "vorx/vcc/handle_type.h"

namespace vorx::vcc {

// The maintenance daemon's services are not deployed in the application's orx.json; on the DDS
// binding their settings come from the DFX plug-in's configuration provider
// (RegisterDfxInterface::GetDfxConfigInterface). These checks ask it, on the using side, whether
// it knows the service and its entities. They answer true (go ahead) for every other binding and
// service and when no provider is registered; false, with a warning, when the provider refuses.
bool AcceptServiceDiscovery(const ServiceDescription& search);
bool AcceptMethod(const HandleType& handle, const api::types::MethodInfo& info);
bool AcceptEvent(const HandleType& handle, uint32_t entityId, const api::types::EventInfo* info);

}  // namespace vorx::vcc

#endif  // VORX_VCC_COM_SRC_DFX_CONFIG_GATE_H
