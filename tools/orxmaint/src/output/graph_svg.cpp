#include "output/graph_svg.h"

#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace orx::orxmaint {

namespace {

bool DotOnPath() {
    const char* path = std::getenv("PATH");
    std::string dirs = path == nullptr ? "/usr/bin:/bin" : path;
    size_t begin = 0;
    while (begin <= dirs.size()) {
        size_t end = dirs.find(':', begin);
        if (end == std::string::npos) {
            end = dirs.size();
        }
        const std::string dir = end == begin ? "." : dirs.substr(begin, end - begin);
        if (::access((dir + "/dot").c_str(), X_OK) == 0) {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

// Removes the temporary file however the rendering ends.
struct TempFile {
    std::string path;
    ~TempFile() {
        if (!path.empty()) {
            ::unlink(path.c_str());
        }
    }
};

}  // namespace

std::string RenderSvg(const std::string& dotText, std::string& svg) {
    if (!DotOnPath()) {
        return "cannot write SVG: Graphviz's `dot` is not installed (Debian package graphviz); "
               "use --format dot or --format mermaid instead";
    }
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern =
        std::string(tmp == nullptr || *tmp == '\0' ? "/tmp" : tmp) + "/orxmaint-graph-XXXXXX";
    const int fd = ::mkstemp(pattern.data());
    if (fd < 0) {
        return "cannot write SVG: no temporary file for the graph in " + pattern;
    }
    TempFile file{pattern};
    const bool written =
        ::write(fd, dotText.data(), dotText.size()) == static_cast<ssize_t>(dotText.size());
    ::close(fd);
    if (!written) {
        return "cannot write SVG: the graph could not be written to " + file.path;
    }
    // The path is ours (mkstemp, no quotes in it), so the shell sees it as one word.
    FILE* pipe = ::popen(("dot -Tsvg '" + file.path + "'").c_str(), "r");
    if (pipe == nullptr) {
        return "cannot write SVG: `dot` could not be started";
    }
    std::string output;
    char buffer[65536];
    size_t read = 0;
    while ((read = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0) {
        output.append(buffer, read);
    }
    const int status = ::pclose(pipe);
    if (status != 0) {
        return "cannot write SVG: `dot` failed (its messages are above)";
    }
    svg = std::move(output);
    return "";
}

}  // namespace orx::orxmaint
