// Event entries as maintaind lists them for a system of many applications, each with the full
// registration record a DDS and SOME/IP event carries.
#pragma once

#include <cstddef>
#include <vector>

#include "orx/maintaind/tools/entries.h"

namespace orx::orxmaint::bench {

// `count` entries of 50 applications, alternately offered and subscribed.
std::vector<maintaind::tools::EventEntry> MakeEventEntries(size_t count);

}  // namespace orx::orxmaint::bench
