#include "commands/entity_commands.h"

#include "commands/list_command.h"
#include "orx/maintaind/tools/replies.h"
#include "output/entity_views.h"
#include "output/json_output.h"

namespace orx::orxmaint {

namespace tools = maintaind::tools;

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
        PrintSingleObject(
            [&](JsonWriter& json) {
                json.Members(reply.dataType);
                json.Key("events");
                WriteEntries(json, reply.events, context.options.full);
                json.Key("methods");
                WriteEntries(json, reply.methods, context.options.full);
            },
            context.out);
    } else {
        PrintDataType(reply, context.out);
    }
    return kExitOk;
}

}  // namespace orx::orxmaint
