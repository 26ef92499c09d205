// How `orxmaint check` shows its findings: for people, one table per service instance, errors
// first; for scripts, one JSON array of finding objects.
#pragma once

#include <ostream>

#include "orx/maintaind/tools/check.h"

namespace orx::orxmaint {

// Tables grouped by service and instance, then one summary line ("no contract problems" when
// nothing was found).
void PrintFindings(const maintaind::tools::CheckReply& reply, std::ostream& out);

// One JSON array on one line: an object per finding with the members of CheckFinding.
void PrintFindingsJson(const maintaind::tools::CheckReply& reply, std::ostream& out);

}  // namespace orx::orxmaint
