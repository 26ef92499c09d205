#include "output/json_output.h"

namespace orx::orxmaint {

void PrintJsonLine(std::string& text, std::ostream& out) {
    text += '\n';
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

}  // namespace orx::orxmaint
