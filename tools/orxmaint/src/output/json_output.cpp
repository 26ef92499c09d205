#include "output/json_output.h"

namespace orx::orxmaint {

void PrintJson(const nlohmann::json& value, std::ostream& out) {
    out << value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

}  // namespace orx::orxmaint
