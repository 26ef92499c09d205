// The system as a graph: applications (boxes), services (nodes between them), an edge from each
// providing application to the service and from the service to each using application, labelled
// with the event, method and field names it carries. An edge to a using application is broken
// when the contract check found an error for that application and that service.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "orx/maintaind/tools/check.h"
#include "orx/maintaind/tools/replies.h"

namespace orx::orxmaint {

struct GraphApp {
    std::string id;  // identifier in the graph text, "a0", "a1", ...
    std::string appName;
    int32_t pid = 0;
    std::string host;
    bool online = true;
};

struct GraphService {
    std::string id;  // "s0", "s1", ...
    uint16_t serviceId = 0;
    std::string serviceName;
};

struct GraphEdge {
    std::string from;
    std::string to;
    std::set<std::string> labels;  // entity names, each once
    bool broken = false;
};

struct Graph {
    std::vector<GraphApp> apps;
    std::vector<GraphService> services;
    std::vector<GraphEdge> edges;
};

// What the graph is made of: the lists maintaind answered.
struct GraphInput {
    const std::vector<maintaind::tools::NodeEntry>& nodes;
    const std::vector<maintaind::tools::EventEntry>& events;
    const std::vector<maintaind::tools::MethodEntry>& methods;
    const std::vector<maintaind::tools::FieldEntry>& fields;
    const std::vector<maintaind::tools::CheckFinding>& findings;
};

// Applications in the order of `nodes` (then any only the entity lists name), services by id and
// name, edges in the order first seen.
Graph BuildGraph(const GraphInput& input);

// Graphviz DOT text: offline applications grey, broken edges red.
std::string ToDot(const Graph& graph);
// A Mermaid flowchart with the same content.
std::string ToMermaid(const Graph& graph);

}  // namespace orx::orxmaint
