#include "commands/command_context.h"

#include "cli/service_selector.h"

namespace orx::orxmaint {

maintaind::tools::QueryFilter FilterOf(const Options& options) {
    maintaind::tools::QueryFilter filter;
    filter.appName = options.app;
    if (!options.service.empty()) {
        ServiceSelector selector;
        // The command line has checked the text already.
        if (ParseServiceSelector(options.service, selector).empty()) {
            ApplyServiceSelector(selector, filter);
        }
    }
    if (options.side == "pub") {
        filter.side = maintaind::tools::kPubSide;
    } else if (options.side == "sub") {
        filter.side = maintaind::tools::kSubSide;
    }
    filter.onlineOnly = options.onlineOnly;
    // Each entity's registration record makes most of an answer's size; only --full prints it.
    filter.withoutRecords = !options.full;
    return filter;
}

void PrintRefusal(CommandContext& context, const char* methodName, uint8_t code,
                  const std::string& message) {
    context.err << "maintaind could not answer " << methodName << " ("
                << maintaind::tools::ToString(static_cast<maintaind::tools::ToolsCode>(code))
                << (message.empty() ? "" : ": " + message) << ")\n";
}

}  // namespace orx::orxmaint
