#ifndef VORX_VCC_DDS_DFX_CONFIG_INTERFACE_H
#define VORX_VCC_DDS_DFX_CONFIG_INTERFACE_H

#include "ara/com/internal/bind_index.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/vcc/export.h"

namespace vorx {
namespace vcc {

// Supplies the DDS settings of services that are not deployed in the
// application's orx.json (the maintenance service). The DDS driver asks it
// first; each operation fills the record and returns true when it knows the
// service, and returns false without touching it otherwise. May be called
// from several threads.
class VCC_EXPORT DDSDfxConfigInterface {
  public:
    virtual ~DDSDfxConfigInterface();
    virtual bool ReadEventData(const ara::com::internal::BindIndex& index,
                               driver::dds::DDSEventInfo& info) = 0;
    virtual bool ReadMethodData(const ara::com::internal::BindIndex& index,
                                driver::dds::DDSMethodInfo& info) = 0;
    virtual bool ReadServiceDiscoveryData(const ara::com::internal::BindIndex& index,
                                          driver::dds::DDSServiceDiscoveryInfo& info) = 0;
};

}  // namespace vcc
}  // namespace vorx

#endif
