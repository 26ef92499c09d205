// SVG from DOT text through Graphviz's `dot` program (Debian package graphviz).
#pragma once

#include <string>

namespace orx::orxmaint {

// Runs `dot -Tsvg` on `dotText`. On success stores the picture in `svg` and returns ""; otherwise
// returns what went wrong, in words for the user (`dot` not installed, or it failed), and leaves
// `svg` alone. Blocks until `dot` ends; uses a temporary file under $TMPDIR (or /tmp).
std::string RenderSvg(const std::string& dotText, std::string& svg);

}  // namespace orx::orxmaint
