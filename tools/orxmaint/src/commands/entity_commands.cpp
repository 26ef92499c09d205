#include "commands/entity_commands.h"

#include "orx/maintaind/tools/replies.h"
#include "output/entity_views.h"
#include "output/json_output.h"

namespace orx::orxmaint {

namespace tools = maintaind::tools;

namespace {

// Queries one list and prints it as a table (`print`) or as the JSON array of `entries`.
template <class Reply, class Entries, class Printer>
int RunList(CommandContext& context, uint32_t entityId, const char* methodName,
            Entries Reply::*entries, Printer print) {
    Reply reply;
    if (!Query(context, entityId, methodName, FilterOf(context.options), reply)) {
        return kExitFailed;
    }
    if (context.options.json) {
        PrintJson(EntriesJson(reply.*entries, context.options.full), context.out);
    } else {
        print(reply, context.out);
    }
    return kExitOk;
}

}  // namespace

int RunNodes(CommandContext& context) {
    return RunList(context, tools::kQueryNodeInfoId, "QueryNodeInfo", &tools::NodeListReply::nodes,
                   PrintNodes);
}

int RunEvents(CommandContext& context) {
    return RunList(context, tools::kQueryEventInfoId, "QueryEventInfo",
                   &tools::EventListReply::events, PrintEvents);
}

int RunMethods(CommandContext& context) {
    return RunList(context, tools::kQueryMethodInfoId, "QueryMethodInfo",
                   &tools::MethodListReply::methods, PrintMethods);
}

int RunFields(CommandContext& context) {
    return RunList(context, tools::kQueryFieldInfoId, "QueryFieldInfo",
                   &tools::FieldListReply::fields, PrintFields);
}

int RunE2E(CommandContext& context) {
    return RunList(context, tools::kQueryE2EInfoId, "QueryE2EInfo", &tools::E2EListReply::configs,
                   PrintE2EConfigs);
}

int RunTypes(CommandContext& context) {
    if (context.options.name.empty()) {
        return RunList(context, tools::kQueryDataTypeListId, "QueryDataTypeList",
                       &tools::DataTypeListReply::dataTypes, PrintDataTypes);
    }
    tools::DataTypeRequest request;
    request.dataTypeName = context.options.name;
    request.filter = FilterOf(context.options);
    tools::DataTypeReply reply;
    if (!Ask(context, tools::kQueryDataTypeId, "QueryDataType", request, reply)) {
        return kExitFailed;
    }
    if (reply.code == static_cast<uint8_t>(tools::ToolsCode::UNKNOWN_EVENT)) {
        context.err << "No event or method uses the data type \"" << request.dataTypeName
                    << "\". List the data types with `orxmaint types`.\n";
        return kExitFailed;
    }
    if (reply.code != static_cast<uint8_t>(tools::ToolsCode::OK)) {
        PrintRefusal(context, "QueryDataType", reply.code, reply.message);
        return kExitFailed;
    }
    if (context.options.json) {
        nlohmann::json type = EntryJson(reply.dataType, context.options.full);
        type["events"] = EntriesJson(reply.events, context.options.full);
        type["methods"] = EntriesJson(reply.methods, context.options.full);
        PrintJson(nlohmann::json::array({type}), context.out);
    } else {
        PrintDataType(reply, context.out);
    }
    return kExitOk;
}

}  // namespace orx::orxmaint
