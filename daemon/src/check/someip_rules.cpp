#include "check/rules.h"

namespace orx::maintaind::daemon::check {

namespace {

// The checks events and methods share: interface version and transport.
template <class Info>
void CompareVersionsAndTransport(const Info& provider, const Info& consumer, FindingSink& sink,
                                 const char* effect) {
    if (provider.majorVersion != consumer.majorVersion) {
        sink.Add(Severity::kError, "someip.majorVersion", "majorVersion",
                 ValueText(provider.majorVersion), ValueText(consumer.majorVersion), effect);
    }
    if (consumer.minorVersion > provider.minorVersion) {
        sink.Add(Severity::kError, "someip.minorVersion", "minorVersion",
                 ValueText(provider.minorVersion), ValueText(consumer.minorVersion),
                 "service discovery finds no offer with the minor version the consumer asks "
                 "for: the service is never found");
    }
    if (provider.isReliable != consumer.isReliable) {
        sink.Add(Severity::kError, "someip.reliability", "isReliable",
                 TransportText(provider.isReliable), TransportText(consumer.isReliable),
                 "the two sides use different transports (TCP and UDP): messages never reach "
                 "the other side");
    }
}

}  // namespace

void CompareSomeipEvents(const SomeipEventInfo& provider, const SomeipEventInfo& consumer,
                         FindingSink& sink) {
    sink.AddIfDiffer(Severity::kError, "someip.eventId", "eventId", provider.eventId,
                     consumer.eventId,
                     "the subscriber waits for another event id than the publisher sends: it "
                     "receives nothing");
    CompareVersionsAndTransport(provider, consumer, sink,
                                "service discovery never pairs different major versions: the "
                                "subscriber receives nothing");
    CompareSerializeTags("serializeTag", provider.serializeTag, consumer.serializeTag, sink);
}

void CompareSomeipMethods(const SomeipMethodInfo& provider, const SomeipMethodInfo& consumer,
                          FindingSink& sink) {
    sink.AddIfDiffer(Severity::kError, "someip.methodId", "methodId", provider.methodId,
                     consumer.methodId,
                     "the client calls another method id than the server answers: calls fail "
                     "or reach the wrong method");
    CompareVersionsAndTransport(provider, consumer, sink,
                                "service discovery never pairs different major versions: calls "
                                "are never answered");
    CompareSerializeTags("requestSerializeTag", provider.requestSerializeTag,
                         consumer.requestSerializeTag, sink);
    CompareSerializeTags("replySerializeTag", provider.replySerializeTag,
                         consumer.replySerializeTag, sink);
}

}  // namespace orx::maintaind::daemon::check
