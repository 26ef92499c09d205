// Checks a decoded RegisterApp request before it is queued: the report must say what it is about
// and carry what that kind of report needs. Limits that depend on the registry are the updater's.
#pragma once

#include <cstddef>
#include <string>

#include "orx/maintaind/app.h"
#include "vorx/serialize/decode_status.h"

namespace orx::maintaind::daemon {

// Bounds on one request, checked before and while it is decoded.
struct RequestLimits {
    size_t maxRequestBytes = 4u << 20;
    vorx::serialize::DecodeLimits decode{16, 65536, 65535};
};

// "" when `report` is consistent; otherwise why it is not, in a few words.
// Consistent means: a known kind; the nested record of that kind identifies its sender (non-empty
// application name, positive pid) or, for latency reports, its application and event; per-binding
// maps hold only DDS and SOME/IP entries; the nested records of other kinds are left empty.
std::string CheckReport(const AppRegisterInfo& report);

}  // namespace orx::maintaind::daemon
