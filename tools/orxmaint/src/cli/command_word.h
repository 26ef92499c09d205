// Names a mistyped command before the parser does: the parser only says that a command is
// required, never which word it did not know.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace orx::orxmaint {

// Walks argv as `app` would (skipping options and the values of options that take one) and
// returns "" when every command word is known, else one message naming the first unknown word
// and the nearest command, e.g. `unknown command "node"; did you mean "nodes"?`.
std::string FindUnknownCommand(CLI::App& app, int argc, const char* const* argv);

}  // namespace orx::orxmaint
