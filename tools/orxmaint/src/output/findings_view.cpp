#include "output/findings_view.h"

#include <string>

#include "output/json_output.h"
#include "output/summary.h"
#include "output/table.h"
#include "output/values.h"

namespace orx::orxmaint {

namespace {

namespace tools = maintaind::tools;

// "radar[1234]@ecu1", or "-" for the missing side of an orphan.
std::string Party(const tools::CheckParty& party) {
    if (party.pid == 0 && party.appName.empty()) {
        return "-";
    }
    std::string text = party.appName + "[" + std::to_string(party.pid) + "]";
    return party.host.empty() ? text : text + "@" + party.host;
}

std::string Member(const tools::CheckFinding& finding) {
    return finding.binding.empty() ? finding.member : finding.binding + " " + finding.member;
}

Table NewTable() {
    return Table({{"SEVERITY"},
                  {"KIND"},
                  {"ENTITY"},
                  {"CHECK"},
                  {"MEMBER"},
                  {"PROVIDER"},
                  {"OFFERS"},
                  {"CONSUMER"},
                  {"WANTS"},
                  {"AT RUN TIME"}});
}

}  // namespace

void PrintFindings(const tools::CheckReply& reply, std::ostream& out) {
    const tools::CheckFinding* previous = nullptr;
    Table table = NewTable();
    const auto flush = [&] {
        if (table.RowCount() > 0) {
            table.Print(out);
            out << '\n';
        }
        table = NewTable();
    };
    for (const tools::CheckFinding& finding : reply.findings) {
        if (previous == nullptr || previous->serviceId != finding.serviceId ||
            previous->instanceId != finding.instanceId) {
            flush();
            out << "service " << HexId(finding.serviceId) << " " << OrDash(finding.serviceName)
                << ", instance " << finding.instanceId << '\n';
        }
        previous = &finding;
        table.AddRow({finding.severity, finding.kind, finding.entityName, finding.check,
                      Member(finding), Party(finding.provider), OrDash(finding.provider.value),
                      Party(finding.consumer), OrDash(finding.consumer.value), finding.message});
    }
    flush();
    PrintTruncation(reply.truncated, reply.findings.size(), reply.total, out);
    if (reply.total == 0) {
        out << "no contract problems: ";
    } else {
        out << Count(reply.errors, "error", "errors") << ", "
            << Count(reply.warnings, "warning", "warnings") << ", "
            << Count(reply.infos, "info", "infos") << "; ";
    }
    out << Count(reply.pairs, "provider-consumer pair", "provider-consumer pairs") << " of "
        << Count(reply.entities, "online entity", "online entities") << " compared\n";
}

void PrintFindingsJson(const tools::CheckReply& reply, std::ostream& out) {
    std::string text;
    text.reserve(reply.findings.size() * 400);
    JsonWriter json(text);
    json.Value(reply.findings);
    PrintJsonLine(text, out);
}

}  // namespace orx::orxmaint
