// Pieces of the one-line summaries under the tables.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>

namespace orx::orxmaint {

// "1 node", "3 nodes", "0 nodes".
std::string Count(size_t count, const char* singular, const char* plural);

// When the daemon cut the list: a line saying how many of how many are shown and how to narrow
// the query. Nothing otherwise.
void PrintTruncation(bool truncated, size_t shown, uint32_t total, std::ostream& out);

}  // namespace orx::orxmaint
