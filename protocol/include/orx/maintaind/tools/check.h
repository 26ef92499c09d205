// CheckContracts: the daemon compares, for every service instance and every event, method and
// field of it, what the offering side declared with what each using side declared, and lists
// every difference that breaks or weakens the communication at run time.
//
// A finding names its rule by a short stable identifier (`check`), for example "dds.reliability"
// or "e2e.dataIds"; docs/orxmaint.md lists them all. Scripts may rely on the identifiers, the
// severities and the member names below; the texts of `message` may change.
#pragma once

#include <cstdint>
#include <vector>

#include "orx/maintaind/record.h"
#include "orx/maintaind/tools/requests.h"

namespace orx::maintaind::tools {

// Values of CheckFinding::severity.
inline constexpr const char* kSeverityError = "error";      // the two sides do not communicate
inline constexpr const char* kSeverityWarning = "warning";  // they do, with less than declared
inline constexpr const char* kSeverityInfo = "info";        // worth knowing, nothing breaks

// Values of CheckFinding::kind.
inline constexpr const char* kKindEvent = "event";
inline constexpr const char* kKindMethod = "method";
inline constexpr const char* kKindField = "field";

// One side of a finding. Empty (pid 0) for the missing side of an orphan.
struct CheckParty {
    String appName;
    int32_t pid{};
    String host;   // as QueryNodeInfo shows it; "" when not known
    String value;  // what this side declared for the compared member, as text

    ORX_MAINTAIND_RECORD(CheckParty, appName, pid, host, value)
};

struct CheckFinding {
    String severity;  // kSeverityError, kSeverityWarning or kSeverityInfo
    uint16_t serviceId{};
    uint16_t instanceId{};  // the provider's instance (the consumer's for an orphan consumer)
    String serviceName;
    String entityName;  // event, method or field name as registered
    String kind;        // kKindEvent, kKindMethod or kKindField
    String check;       // the rule, e.g. "dds.topic"
    String binding;     // "DDS", "SOMEIP", or "" when the rule is not about one binding
    String member;      // the compared member, e.g. "reliability", "getter.requestTopicName"
    CheckParty provider;
    CheckParty consumer;
    String message;  // what goes wrong at run time because of it, in one line

    ORX_MAINTAIND_RECORD(CheckFinding, severity, serviceId, instanceId, serviceName, entityName,
                         kind, check, binding, member, provider, consumer, message)
};

// Which findings to list. Every online entity is compared whatever the filter; the filter only
// selects the findings: `appName` (and `pid`) those where either side is that application,
// `hasServiceId`/`serviceId`, `hasInstanceId`/`instanceId` and `serviceName` those of that
// service, `maxEntries` caps the list. The other members of the filter are ignored.
struct CheckRequest {
    QueryFilter filter;

    ORX_MAINTAIND_RECORD(CheckRequest, filter)
};

// Findings sorted by service id, instance, entity, kind, severity (errors first) and rule. The
// counts cover every selected finding, also those cut by the entry cap.
struct CheckReply {
    uint8_t code{};
    String message;
    std::vector<CheckFinding> findings;
    uint32_t total{};
    bool truncated{};
    uint32_t errors{};
    uint32_t warnings{};
    uint32_t infos{};
    uint32_t entities{};  // online events, methods and fields compared
    uint32_t pairs{};     // provider-consumer pairs compared

    ORX_MAINTAIND_RECORD(CheckReply, code, message, findings, total, truncated, errors, warnings,
                         infos, entities, pairs)
};

}  // namespace orx::maintaind::tools
