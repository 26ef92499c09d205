#include "output/entity_views.h"

#include <set>
#include <string>

#include "output/sorting.h"
#include "output/summary.h"
#include "output/table.h"
#include "output/values.h"

namespace orx::orxmaint {

namespace tools = maintaind::tools;

namespace {

using Align = Table::Align;

// Side counts and applications of an entity list, for the summary line.
template <class Entry>
std::string EntitySummary(const std::vector<Entry>& entries, const char* singular,
                          const char* plural) {
    size_t pub = 0;
    std::set<std::string> apps;
    for (const Entry& entry : entries) {
        pub += entry.isPub ? 1U : 0U;
        apps.insert(entry.appName);
    }
    return Count(entries.size(), singular, plural) + " (" + std::to_string(pub) + " pub, " +
           std::to_string(entries.size() - pub) + " sub) in " +
           Count(apps.size(), "application", "applications");
}

// The DDS topic and the SOME/IP id of an entity, whichever it has: "topic", "0x0001" or both.
std::string TopicOrId(const std::string& topic, uint16_t someipId) {
    if (someipId == 0) {
        return OrDash(topic);
    }
    return topic.empty() ? HexId(someipId) : topic + " / " + HexId(someipId);
}

std::string Online(const tools::NodeEntry& node) {
    return node.online ? "yes" : "no";
}

std::string FieldParts(const tools::FieldEntry& field) {
    std::string parts;
    for (const auto& [has, name] :
         {std::make_pair(field.hasNotifier, "notify"), std::make_pair(field.hasGetter, "get"),
          std::make_pair(field.hasSetter, "set")}) {
        if (has) {
            parts += parts.empty() ? name : std::string(",") + name;
        }
    }
    return OrDash(parts);
}

std::string DataIds(const std::vector<uint32_t>& ids) {
    std::string text;
    for (const uint32_t id : ids) {
        text += (text.empty() ? "" : ",") + std::to_string(id);
    }
    return OrDash(text);
}

std::string Joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return OrDash(text);
}

// Events and methods share their columns but for the entity's name and where it travels (DDS
// topic or SOME/IP id); `name` and `where` give those two for an entry.
template <class Entry, class Name, class Where>
void PrintServiceEntityTable(const std::vector<Entry>& entries, const char* nameHeader,
                             const char* whereHeader, Name name, Where where, std::ostream& out) {
    Table table({{"APP"},
                 {"PID", Align::kRight},
                 {"SIDE"},
                 {"SERVICE"},
                 {"ID"},
                 {"INST", Align::kRight},
                 {nameHeader},
                 {"BINDINGS"},
                 {whereHeader},
                 {"ONLINE"}});
    for (const Entry* e : Sorted(entries)) {
        table.AddRow({e->appName, std::to_string(e->pid), Side(e->isPub), OrDash(e->serviceName),
                      HexId(e->serviceId), std::to_string(e->instanceId), name(*e),
                      Bindings(e->bindings), where(*e), YesNo(e->online)});
    }
    table.Print(out);
}

void PrintEventTable(const std::vector<tools::EventEntry>& events, std::ostream& out) {
    PrintServiceEntityTable(
        events, "EVENT", "TOPIC / EVENT ID", [](const tools::EventEntry& e) { return e.eventName; },
        [](const tools::EventEntry& e) { return TopicOrId(e.topicName, e.eventId); }, out);
}

void PrintMethodTable(const std::vector<tools::MethodEntry>& methods, std::ostream& out) {
    PrintServiceEntityTable(
        methods, "METHOD", "REQUEST TOPIC / METHOD ID",
        [](const tools::MethodEntry& m) { return m.methodName; },
        [](const tools::MethodEntry& m) { return TopicOrId(m.requestTopicName, m.methodId); }, out);
}

}  // namespace

void PrintNodes(const tools::NodeListReply& reply, std::ostream& out) {
    size_t online = 0;
    if (!reply.nodes.empty()) {
        Table table({{"APP"},
                     {"PID", Align::kRight},
                     {"HOST"},
                     {"ONLINE"},
                     {"REASON"},
                     {"RESTARTS", Align::kRight},
                     {"EVENTS", Align::kRight},
                     {"METHODS", Align::kRight},
                     {"FIELDS", Align::kRight},
                     {"FIRST SEEN"},
                     {"LAST SEEN"}});
        for (const tools::NodeEntry* n : Sorted(reply.nodes)) {
            online += n->online ? 1U : 0U;
            table.AddRow({n->appName, std::to_string(n->pid), OrDash(n->host), Online(*n),
                          OrDash(n->offlineReason), std::to_string(n->restarts),
                          std::to_string(n->eventCount), std::to_string(n->methodCount),
                          std::to_string(n->fieldCount), LocalTime(n->firstSeen),
                          LocalTime(n->lastSeen)});
        }
        table.Print(out);
    }
    out << Count(reply.nodes.size(), "node", "nodes") << ", " << online << " online\n";
    PrintTruncation(reply.truncated, reply.nodes.size(), reply.total, out);
}

void PrintEvents(const tools::EventListReply& reply, std::ostream& out) {
    if (!reply.events.empty()) {
        PrintEventTable(reply.events, out);
    }
    out << EntitySummary(reply.events, "event", "events") << '\n';
    PrintTruncation(reply.truncated, reply.events.size(), reply.total, out);
}

void PrintMethods(const tools::MethodListReply& reply, std::ostream& out) {
    if (!reply.methods.empty()) {
        PrintMethodTable(reply.methods, out);
    }
    out << EntitySummary(reply.methods, "method", "methods") << '\n';
    PrintTruncation(reply.truncated, reply.methods.size(), reply.total, out);
}

void PrintFields(const tools::FieldListReply& reply, std::ostream& out) {
    if (!reply.fields.empty()) {
        Table table({{"APP"},
                     {"PID", Align::kRight},
                     {"SIDE"},
                     {"SERVICE"},
                     {"ID"},
                     {"INST", Align::kRight},
                     {"FIELD"},
                     {"BINDINGS"},
                     {"HAS"},
                     {"ONLINE"}});
        for (const tools::FieldEntry* f : Sorted(reply.fields)) {
            table.AddRow({f->appName, std::to_string(f->pid), Side(f->isPub),
                          OrDash(f->serviceName), HexId(f->serviceId),
                          std::to_string(f->instanceId), f->fieldName, Bindings(f->bindings),
                          FieldParts(*f), YesNo(f->online)});
        }
        table.Print(out);
    }
    out << EntitySummary(reply.fields, "field", "fields") << '\n';
    PrintTruncation(reply.truncated, reply.fields.size(), reply.total, out);
}

void PrintE2EConfigs(const tools::E2EListReply& reply, std::ostream& out) {
    std::set<std::string> apps;
    if (!reply.configs.empty()) {
        Table table({{"APP"},
                     {"PID", Align::kRight},
                     {"SIDE"},
                     {"BINDING"},
                     {"EVENT"},
                     {"ID"},
                     {"INST", Align::kRight},
                     {"PROFILE"},
                     {"DATA IDS"},
                     {"E2E"},
                     {"CHECK"},
                     {"UPDATED"}});
        for (const tools::E2EEntry* c : Sorted(reply.configs)) {
            apps.insert(c->appName);
            const maintaind::E2EConfigInfo& e2e = c->config.e2eConfig;
            table.AddRow({c->appName, std::to_string(c->pid), Side(c->isPub), OrDash(c->binding),
                          OrDash(c->config.eventName), HexId(c->config.serviceId),
                          std::to_string(c->config.instanceId), maintaind::ToString(e2e.profile),
                          DataIds(e2e.dataIdList), e2e.isE2EEnabled ? "on" : "off",
                          e2e.isDisableE2ECheck ? "off" : "on", LocalTime(c->updatedAt)});
        }
        table.Print(out);
    }
    out << Count(reply.configs.size(), "E2E configuration", "E2E configurations") << " in "
        << Count(apps.size(), "application", "applications") << '\n';
    PrintTruncation(reply.truncated, reply.configs.size(), reply.total, out);
}

void PrintDataTypes(const tools::DataTypeListReply& reply, std::ostream& out) {
    if (!reply.dataTypes.empty()) {
        Table table({{"DATA TYPE"},
                     {"EVENTS", Align::kRight},
                     {"METHODS", Align::kRight},
                     {"APPLICATIONS"}});
        for (const tools::DataTypeEntry* t : Sorted(reply.dataTypes)) {
            table.AddRow({t->dataTypeName, std::to_string(t->eventCount),
                          std::to_string(t->methodCount), Joined(t->appNames)});
        }
        table.Print(out);
    }
    out << Count(reply.dataTypes.size(), "data type", "data types") << '\n';
    PrintTruncation(reply.truncated, reply.dataTypes.size(), reply.total, out);
}

void PrintDataType(const tools::DataTypeReply& reply, std::ostream& out) {
    const tools::DataTypeEntry& type = reply.dataType;
    out << "Data type:    " << type.dataTypeName << '\n'
        << "Used by:      " << Count(type.eventCount, "event", "events") << ", "
        << Count(type.methodCount, "method", "methods") << '\n'
        << "Applications: " << Joined(type.appNames) << '\n';
    if (!reply.events.empty()) {
        out << '\n';
        PrintEventTable(reply.events, out);
    }
    if (!reply.methods.empty()) {
        out << '\n';
        PrintMethodTable(reply.methods, out);
    }
}

}  // namespace orx::orxmaint
