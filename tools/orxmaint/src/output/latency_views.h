// Tables of latency analysis: what was switched, who acknowledged it, what subscribers measured.
#pragma once

#include <ostream>
#include <string>

#include "orx/maintaind/enums.h"
#include "orx/maintaind/tools/replies.h"

namespace orx::orxmaint {

void PrintLatencyStatuses(const maintaind::tools::LatencyStatusListReply& reply, std::ostream& out);
void PrintLatencyResults(const maintaind::tools::LatencyResultListReply& reply, std::ostream& out);
// The confirmation of a switch that maintaind published (reply code OK).
void PrintLatencySwitched(const maintaind::tools::LatencySwitchReply& reply,
                          maintaind::LatencyMode mode, std::ostream& out);
// Why a switch of `event` was refused (reply code not OK), with the candidates of an ambiguous
// name and how to pick one. `narrowedBy` names the filters the name was resolved under (e.g.
// "--app radar"), empty when none.
void PrintLatencySwitchRefused(const maintaind::tools::LatencySwitchReply& reply,
                               const std::string& event, const std::string& narrowedBy,
                               std::ostream& err);

}  // namespace orx::orxmaint
