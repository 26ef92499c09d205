#ifndef ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_METHOD_RECORDS_H
#define ORX_ORXCM_ORXMAINTAIND_ORX_MAINTAIND_METHOD_RECORDS_H

// Conversions of the core's method descriptions into the per-binding maintenance sub-records.
// Shared by the method client and the field client (getters and setters); they do not log.

#include <string>

#include "orx/maintaind/types.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/driver/someip/someip_entity_info.h"
#include "vorx/vcc/api/types/entity_info.h"

namespace orx {
namespace orxcm {
namespace orxmaintaind {

// The method's type name: the method name alone when the service-level name is empty, else
// service-level name, "/" and method name.
std::string JoinMethodTypeName(const vorx::vcc::api::types::MethodInfo& info);

// The part of `text` from its last "/" to the end, the "/" included; "" when there is no "/".
std::string MethodNameFromTypeName(const std::string& text);

// Copies the four durability/history switches (only the values 0 and 1; others leave the
// record's default) and the transport choices (1 to 3 kept, others reported as 0).
void FillDDSMethodQos(const vorx::driver::dds::DDSMethodInfo& info,
                      orx::maintaind::DDSMethodInfo& record);

// The DDS sub-record of a method: method name, topics, data types, domain, queue sizes, QoS,
// depths, sizes, E2E and reliability.
orx::maintaind::DDSMethodInfo MakeDDSMethodRecord(const vorx::driver::dds::DDSMethodInfo& info);

// The SOME/IP sub-record of a method: ids, versions, network, reliability, transport choices,
// E2E and the request and reply serialization settings as bytes.
orx::maintaind::SomeipMethodInfo MakeSomeipMethodRecord(
    const vorx::driver::someip::SomeipMethodInfo& info);

}  // namespace orxmaintaind
}  // namespace orxcm
}  // namespace orx

#endif
