#ifndef VORX_VCC_API_TYPES_DRIVER_TYPE_H
#define VORX_VCC_API_TYPES_DRIVER_TYPE_H

#include <cstdint>

namespace vorx {
namespace vcc {
namespace api {
namespace types {

// The binding that carries an entity. These are the core's numbers; the
// maintenance records number their bindings differently (DDS 0, SOME/IP 1).
enum class DriverType : uint8_t {
    PROLOC = 0,  // process-local binding
    DDS = 1,
    SOMEIP = 2,
};

// Which side of a service an entity description belongs to.
enum class EntityRole : int32_t {
    SERVER = 0,  // offering side: skeleton, publisher, method server
    CLIENT = 1,  // using side: proxy, subscriber, method caller
};

}  // namespace types
}  // namespace api
}  // namespace vcc
}  // namespace vorx

#endif
