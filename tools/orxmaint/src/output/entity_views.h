// Tables and summaries of the registry's lists: nodes, events, methods, fields, E2E settings and
// data types. Each Print* sorts its copy of the entries, prints a table (none for an empty list)
// and a one-line summary.
#pragma once

#include <ostream>

#include "orx/maintaind/tools/replies.h"

namespace orx::orxmaint {

void PrintNodes(const maintaind::tools::NodeListReply& reply, std::ostream& out);
void PrintEvents(const maintaind::tools::EventListReply& reply, std::ostream& out);
void PrintMethods(const maintaind::tools::MethodListReply& reply, std::ostream& out);
void PrintFields(const maintaind::tools::FieldListReply& reply, std::ostream& out);
void PrintE2EConfigs(const maintaind::tools::E2EListReply& reply, std::ostream& out);
void PrintDataTypes(const maintaind::tools::DataTypeListReply& reply, std::ostream& out);
// One data type: its counts and applications, then the events and methods that use it.
void PrintDataType(const maintaind::tools::DataTypeReply& reply, std::ostream& out);

}  // namespace orx::orxmaint
