#include "check/finding_sink.h"

#include <utility>

namespace orx::maintaind::daemon::check {

const char* SeverityName(Severity severity) {
    switch (severity) {
        case Severity::kError:
            return tools::kSeverityError;
        case Severity::kWarning:
            return tools::kSeverityWarning;
        case Severity::kInfo:
            return tools::kSeverityInfo;
    }
    return tools::kSeverityError;
}

void FindingSink::Add(Severity severity, const char* check, const std::string& member,
                      std::string providerValue, std::string consumerValue, const char* message) {
    tools::CheckFinding finding = base_;
    finding.severity = SeverityName(severity);
    finding.check = check;
    finding.binding = binding_;
    finding.member = part_ + member;
    finding.provider.value = std::move(providerValue);
    finding.consumer.value = std::move(consumerValue);
    finding.message = message;
    out_.push_back(std::move(finding));
}

}  // namespace orx::maintaind::daemon::check
