// Compares the registration records of one provider and one consumer of the same event, method or
// field, binding by binding, with the rules of rules.h. Bindings present on one side only are not
// compared; when the two sides share no binding at all, one "binding.mismatch" finding says so.
#pragma once

#include <vector>

#include "check/finding_sink.h"
#include "orx/maintaind/field.h"
#include "orx/maintaind/tools/entries.h"

namespace orx::maintaind::daemon::check {

// One side of an event: its record, whether it offers it, and the E2E configurations its process
// reported (nullptr when none). A reported configuration of the event and binding takes the
// place of the one the binding record carries.
struct EventSide {
    const EventRegisterInfo& record;
    bool isPub;
    const std::vector<tools::E2EEntry>* reportedE2E;
};

void CompareEventRecords(const EventSide& provider, const EventSide& consumer, FindingSink& sink);
void CompareMethodRecords(const MethodRegisterInfo& provider, const MethodRegisterInfo& consumer,
                          FindingSink& sink);
void CompareFieldRecords(const FieldRegisterInfo& provider, const FieldRegisterInfo& consumer,
                         FindingSink& sink);

}  // namespace orx::maintaind::daemon::check
