// Who and when this process is, for announcements and frame headers.
#ifndef VORX_DRIVER_DDS_SRC_HOST_IDENTITY_H
#define VORX_DRIVER_DDS_SRC_HOST_IDENTITY_H

#include <cstdint>
#include <string>

namespace vorx {
namespace driver {
namespace dds {

// A random 64-bit number (for ids that must differ between processes).
uint64_t RandomId();
// This host's name, "" when it cannot be read.
std::string HostName();

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
