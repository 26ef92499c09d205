#include "commands/graph_command.h"

#include "orx/maintaind/tools/check.h"
#include "orx/maintaind/tools/replies.h"
#include "output/graph_model.h"
#include "output/graph_svg.h"

namespace orx::orxmaint {

namespace tools = maintaind::tools;

int RunGraph(CommandContext& context) {
    tools::QueryFilter filter = FilterOf(context.options);
    filter.withoutRecords = true;
    tools::NodeListReply nodes;
    tools::EventListReply events;
    tools::MethodListReply methods;
    tools::FieldListReply fields;
    tools::CheckReply check;
    if (!Query(context, tools::kQueryNodeInfoId, "QueryNodeInfo", filter, nodes) ||
        !Query(context, tools::kQueryEventInfoId, "QueryEventInfo", filter, events) ||
        !Query(context, tools::kQueryMethodInfoId, "QueryMethodInfo", filter, methods) ||
        !Query(context, tools::kQueryFieldInfoId, "QueryFieldInfo", filter, fields) ||
        !Query(context, tools::kCheckContractsId, "CheckContracts", tools::CheckRequest{}, check)) {
        return kExitFailed;
    }
    const Graph graph =
        BuildGraph({nodes.nodes, events.events, methods.methods, fields.fields, check.findings});
    const std::string& format = context.options.format;
    if (format == "mermaid") {
        context.out << ToMermaid(graph);
    } else if (format == "svg") {
        std::string svg;
        const std::string failure = RenderSvg(ToDot(graph), svg);
        if (!failure.empty()) {
            context.err << failure << '\n';
            return kExitFailed;
        }
        context.out << svg;
    } else {
        context.out << ToDot(graph);
    }
    context.out.flush();
    return kExitOk;
}

}  // namespace orx::orxmaint
