#include "check/rules.h"

namespace orx::maintaind::daemon::check {

namespace {

constexpr const char* kRejected =
    "the receiver's E2E check fails on every sample: it discards all data";

}  // namespace

void CompareE2E(const E2EConfigInfo& provider, const E2EConfigInfo& consumer, FindingSink& sink) {
    if (provider.isE2EEnabled != consumer.isE2EEnabled) {
        sink.Add(Severity::kError, "e2e.protected", "isE2EEnabled",
                 ValueText(provider.isE2EEnabled), ValueText(consumer.isE2EEnabled),
                 "only one side adds or checks the E2E header: the receiver discards every "
                 "sample or reads the header as data");
        return;
    }
    if (!provider.isE2EEnabled) {
        return;
    }
    sink.AddIfDiffer(Severity::kError, "e2e.profile", "profile", provider.profile, consumer.profile,
                     kRejected);
    sink.AddIfDiffer(Severity::kError, "e2e.dataIds", "dataIdList", provider.dataIdList,
                     consumer.dataIdList, kRejected);
    sink.AddIfDiffer(Severity::kError, "e2e.dataIdMode", "dataIdMode", provider.dataIdMode,
                     consumer.dataIdMode, kRejected);
    sink.AddIfDiffer(Severity::kError, "e2e.dataLength", "dataLength", provider.dataLength,
                     consumer.dataLength, kRejected);
    sink.AddIfDiffer(Severity::kError, "e2e.offsets", "counterOffset", provider.counterOffset,
                     consumer.counterOffset, kRejected);
    sink.AddIfDiffer(Severity::kError, "e2e.offsets", "crcOffset", provider.crcOffset,
                     consumer.crcOffset, kRejected);
}

}  // namespace orx::maintaind::daemon::check
