// Copies between the generated wire types and the driver's own structs.
#ifndef VORX_DRIVER_DDS_SRC_WIRE_CONVERT_H
#define VORX_DRIVER_DDS_SRC_WIRE_CONVERT_H

#include "OrxDdsWire.h"
#include "vorx/driver/dds/frame.h"

namespace vorx {
namespace driver {
namespace dds {

// Fills `wire` with pointers into `frame` (no copy of strings or payload):
// `wire` is valid only while `frame` lives and is unchanged. For writing only.
void ViewAsWire(const Frame& frame, vorx_driver_dds_wire_Frame* wire);
Frame FromWire(const vorx_driver_dds_wire_Frame& wire);

// Same pair for announcements.
void ViewAsWire(const ServiceOffer& offer, vorx_driver_dds_wire_ServiceOffer* wire);
ServiceOffer FromWire(const vorx_driver_dds_wire_ServiceOffer& wire);

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
