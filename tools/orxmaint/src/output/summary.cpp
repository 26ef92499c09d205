#include "output/summary.h"

namespace orx::orxmaint {

std::string Count(size_t count, const char* singular, const char* plural) {
    return std::to_string(count) + " " + (count == 1 ? singular : plural);
}

void PrintTruncation(bool truncated, size_t shown, uint32_t total, std::ostream& out) {
    if (!truncated) {
        return;
    }
    out << "Showing " << shown << " of " << total
        << " entries: maintaind cut the list. Narrow it with --app or --service.\n";
}

}  // namespace orx::orxmaint
