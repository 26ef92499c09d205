// The rules, one family per file. Each compares what the provider (the offering side: event
// publisher, method server) declared with what one consumer (the using side) declared, and adds a
// finding to the sink for every difference that matters at run time. None of them looks at the
// online state or pairs entities: the engine does that.
#pragma once

#include <string>
#include <vector>

#include "check/finding_sink.h"
#include "orx/maintaind/common.h"
#include "orx/maintaind/event.h"
#include "orx/maintaind/method.h"

namespace orx::maintaind::daemon::check {

// dds_rules.cpp: topic names, data types, domain, and the DDS request/offer rules for
// reliability and durability; history depth and queue size where the reader keeps more.
void CompareDdsEvents(const DDSEventInfo& provider, const DDSEventInfo& consumer,
                      FindingSink& sink);
void CompareDdsMethods(const DDSMethodInfo& provider, const DDSMethodInfo& consumer,
                       FindingSink& sink);

// someip_rules.cpp: event or method id, major version equal, the consumer's minor version not
// above the provider's, same transport (TCP or UDP).
void CompareSomeipEvents(const SomeipEventInfo& provider, const SomeipEventInfo& consumer,
                         FindingSink& sink);
void CompareSomeipMethods(const SomeipMethodInfo& provider, const SomeipMethodInfo& consumer,
                          FindingSink& sink);

// serialization_rules.cpp: the serialization configuration of the record and the SOME/IP
// serialization bytes of a binding must be equal.
void CompareSerializeConfigs(const std::string& member, const SerializeConfig& provider,
                             const SerializeConfig& consumer, FindingSink& sink);
void CompareSerializeTags(const std::string& member, const std::vector<uint8_t>& provider,
                          const std::vector<uint8_t>& consumer, FindingSink& sink);

// e2e_rules.cpp: both protected or neither; when both are, the same profile, data ids, data-id
// mode, data length and counter and CRC offsets.
void CompareE2E(const E2EConfigInfo& provider, const E2EConfigInfo& consumer, FindingSink& sink);

}  // namespace orx::maintaind::daemon::check
