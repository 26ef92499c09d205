#include "output/graph_model.h"

#include <map>
#include <tuple>
#include <utility>

#include "output/values.h"

namespace orx::orxmaint {

namespace {

namespace tools = maintaind::tools;

std::string ShortName(const std::string& name) {
    const size_t slash = name.find_last_of('/');
    return slash == std::string::npos || slash + 1 == name.size() ? name : name.substr(slash + 1);
}

class Builder {
  public:
    explicit Builder(const std::vector<tools::CheckFinding>& findings) {
        for (const tools::CheckFinding& finding : findings) {
            if (finding.severity != tools::kSeverityError) {
                continue;
            }
            broken_.insert({finding.consumer.appName, finding.consumer.pid, finding.serviceId});
        }
    }

    void AddNode(const tools::NodeEntry& node) {
        App(node.appName, node.pid).host = node.host;
        App(node.appName, node.pid).online = node.online;
    }

    template <class Entry>
    void AddEntity(const Entry& entry, const std::string& name) {
        const std::string& app = App(entry.appName, entry.pid).id;
        const std::string& service = Service(entry.serviceId, entry.serviceName).id;
        GraphEdge& edge = entry.isPub ? Edge(app, service) : Edge(service, app);
        edge.labels.insert(ShortName(name));
        edge.broken |=
            !entry.isPub && broken_.count({entry.appName, entry.pid, entry.serviceId}) != 0;
    }

    Graph graph;

  private:
    GraphApp& App(const std::string& appName, int32_t pid) {
        const auto [it, added] = apps_.emplace(std::make_pair(appName, pid), graph.apps.size());
        if (added) {
            GraphApp app;
            app.id = "a" + std::to_string(graph.apps.size());
            app.appName = appName;
            app.pid = pid;
            graph.apps.push_back(app);
        }
        return graph.apps[it->second];
    }

    GraphService& Service(uint16_t serviceId, const std::string& serviceName) {
        const auto [it, added] =
            services_.emplace(std::make_pair(serviceId, serviceName), graph.services.size());
        if (added) {
            graph.services.push_back(
                {"s" + std::to_string(graph.services.size()), serviceId, serviceName});
        }
        return graph.services[it->second];
    }

    GraphEdge& Edge(const std::string& from, const std::string& to) {
        const auto [it, added] = edges_.emplace(std::make_pair(from, to), graph.edges.size());
        if (added) {
            graph.edges.push_back({from, to, {}, false});
        }
        return graph.edges[it->second];
    }

    std::set<std::tuple<std::string, int32_t, uint16_t>> broken_;
    std::map<std::pair<std::string, int32_t>, size_t> apps_;
    std::map<std::pair<uint16_t, std::string>, size_t> services_;
    std::map<std::pair<std::string, std::string>, size_t> edges_;
};

// Text inside a double-quoted DOT or Mermaid string.
std::string Quote(const std::string& text, bool mermaid) {
    std::string quoted;
    for (const char c : text) {
        if (c == '"') {
            quoted += mermaid ? "#quot;" : "\\\"";
        } else if (c == '\\' && !mermaid) {
            quoted += "\\\\";
        } else {
            quoted += c;
        }
    }
    return quoted;
}

std::string Labels(const GraphEdge& edge) {
    std::string text;
    for (const std::string& label : edge.labels) {
        text += (text.empty() ? "" : ", ") + label;
    }
    return text;
}

std::string AppLabel(const GraphApp& app, const char* newline, bool mermaid) {
    std::string label = Quote(app.appName, mermaid) + newline + "pid " + std::to_string(app.pid);
    if (!app.host.empty()) {
        label += newline + Quote(app.host, mermaid);
    }
    return app.online ? label : label + newline + "offline";
}

std::string ServiceLabel(const GraphService& service, const char* newline, bool mermaid) {
    return Quote(OrDash(service.serviceName), mermaid) + newline + HexId(service.serviceId);
}

}  // namespace

Graph BuildGraph(const GraphInput& input) {
    Builder builder(input.findings);
    for (const tools::NodeEntry& node : input.nodes) {
        builder.AddNode(node);
    }
    for (const tools::EventEntry& entry : input.events) {
        builder.AddEntity(entry, entry.eventName);
    }
    for (const tools::MethodEntry& entry : input.methods) {
        builder.AddEntity(entry, entry.methodName);
    }
    for (const tools::FieldEntry& entry : input.fields) {
        builder.AddEntity(entry, entry.fieldName);
    }
    return std::move(builder.graph);
}

std::string ToDot(const Graph& graph) {
    std::string dot =
        "digraph orx {\n  rankdir=LR;\n  node [fontname=\"Helvetica\"];\n"
        "  edge [fontname=\"Helvetica\", fontsize=10];\n";
    for (const GraphApp& app : graph.apps) {
        dot += "  " + app.id + " [shape=box, style=filled, label=\"" + AppLabel(app, "\\n", false) +
               "\", " +
               (app.online ? "fillcolor=\"#dbe9f6\""
                           : "fillcolor=\"#dddddd\", fontcolor=\"#777777\"") +
               "];\n";
    }
    for (const GraphService& service : graph.services) {
        dot += "  " + service.id + " [shape=ellipse, label=\"" +
               ServiceLabel(service, "\\n", false) + "\"];\n";
    }
    for (const GraphEdge& edge : graph.edges) {
        dot += "  " + edge.from + " -> " + edge.to + " [label=\"" + Quote(Labels(edge), false) +
               "\"" + (edge.broken ? ", color=red, fontcolor=red, penwidth=2" : "") + "];\n";
    }
    return dot + "}\n";
}

std::string ToMermaid(const Graph& graph) {
    std::string text = "flowchart LR\n";
    for (const GraphApp& app : graph.apps) {
        text += "  " + app.id + "[\"" + AppLabel(app, "<br/>", true) + "\"]\n";
        if (!app.online) {
            text += "  style " + app.id + " fill:#ddd,color:#777\n";
        }
    }
    for (const GraphService& service : graph.services) {
        text += "  " + service.id + "([\"" + ServiceLabel(service, "<br/>", true) + "\"])\n";
    }
    for (size_t i = 0; i < graph.edges.size(); ++i) {
        const GraphEdge& edge = graph.edges[i];
        text += "  " + edge.from + " -->|\"" + Quote(Labels(edge), true) + "\"| " + edge.to + "\n";
        if (edge.broken) {
            text += "  linkStyle " + std::to_string(i) + " stroke:red,color:red\n";
        }
    }
    return text;
}

}  // namespace orx::orxmaint
