#include "check/rules.h"

namespace orx::maintaind::daemon::check {

namespace {

std::string DepthAndQueue(uint32_t depth, uint32_t queue) {
    return "historyDepth " + std::to_string(depth) + ", queueSize " + std::to_string(queue);
}

}  // namespace

void CompareDdsEvents(const DDSEventInfo& provider, const DDSEventInfo& consumer,
                      FindingSink& sink) {
    sink.AddIfDiffer(Severity::kError, "dds.topic", "topicName", provider.topicName,
                     consumer.topicName,
                     "the subscriber reads another topic than the publisher writes: it receives "
                     "nothing");
    sink.AddIfDiffer(Severity::kError, "dds.dataType", "dataTypeName", provider.dataTypeName,
                     consumer.dataTypeName,
                     "DDS matches a reader and a writer only with the same type name: the "
                     "subscriber receives nothing");
    sink.AddIfDiffer(Severity::kError, "dds.domain", "domainId", provider.domainId,
                     consumer.domainId,
                     "participants of different DDS domains never discover each other: the "
                     "subscriber receives nothing");

    // The publisher's writer offers, the subscriber's reader requests.
    if (consumer.reliability == ReliabilityKind::RELIABLE &&
        provider.reliability != ReliabilityKind::RELIABLE) {
        sink.Add(Severity::kError, "dds.reliability", "reliability",
                 ValueText(provider.reliability), ValueText(consumer.reliability),
                 "DDS does not match a reliable reader with a best-effort writer: the subscriber "
                 "receives nothing");
    } else if (provider.reliability != consumer.reliability) {
        sink.Add(Severity::kWarning, "dds.reliability", "reliability",
                 ValueText(provider.reliability), ValueText(consumer.reliability),
                 "matched, but best effort: samples lost on the network are not sent again to "
                 "this subscriber");
    }
    if (consumer.durability > provider.durability) {
        sink.Add(Severity::kError, "dds.durability", "durability", ValueText(provider.durability),
                 ValueText(consumer.durability),
                 "DDS does not match a reader that asks for more durability than the writer "
                 "offers: the subscriber receives nothing");
    } else if (consumer.durability < provider.durability) {
        sink.Add(Severity::kWarning, "dds.durability", "durability", ValueText(provider.durability),
                 ValueText(consumer.durability),
                 "matched, but the subscriber does not get the samples written before it joined");
    }
    if (consumer.historyDepth > provider.historyDepth || consumer.queueSize > provider.queueSize) {
        sink.Add(Severity::kInfo, "dds.history", "historyDepth/queueSize",
                 DepthAndQueue(provider.historyDepth, provider.queueSize),
                 DepthAndQueue(consumer.historyDepth, consumer.queueSize),
                 "the subscriber keeps more samples than the publisher: a late joiner or a "
                 "resend gets at most what the publisher keeps");
    }
}

void CompareDdsMethods(const DDSMethodInfo& provider, const DDSMethodInfo& consumer,
                       FindingSink& sink) {
    const char* topicMessage =
        "the client and the server use different topics: calls are never answered";
    sink.AddIfDiffer(Severity::kError, "dds.topic", "requestTopicName", provider.requestTopicName,
                     consumer.requestTopicName, topicMessage);
    sink.AddIfDiffer(Severity::kError, "dds.topic", "replyTopicName", provider.replyTopicName,
                     consumer.replyTopicName, topicMessage);
    const char* typeMessage =
        "DDS matches a reader and a writer only with the same type name: calls are never "
        "answered";
    sink.AddIfDiffer(Severity::kError, "dds.dataType", "requestDataTypeName",
                     provider.requestDataTypeName, consumer.requestDataTypeName, typeMessage);
    sink.AddIfDiffer(Severity::kError, "dds.dataType", "replyDataTypeName",
                     provider.replyDataTypeName, consumer.replyDataTypeName, typeMessage);
    sink.AddIfDiffer(Severity::kError, "dds.domain", "domainId", provider.domainId,
                     consumer.domainId,
                     "participants of different DDS domains never discover each other: calls are "
                     "never answered");
    // Both sides read and write: with one reliability per side, a difference puts a reliable
    // reader against a best-effort writer in one direction.
    sink.AddIfDiffer(Severity::kError, "dds.reliability", "reliability", provider.reliability,
                     consumer.reliability,
                     "one direction pairs a reliable reader with a best-effort writer, which DDS "
                     "does not match: calls are never answered");
    // Requests: the server reads. Replies: the client reads.
    if (provider.requestDurability > consumer.requestDurability) {
        sink.Add(Severity::kError, "dds.durability", "requestDurability",
                 ValueText(provider.requestDurability), ValueText(consumer.requestDurability),
                 "the server's request reader asks for more durability than the client's writer "
                 "offers: DDS does not match them, calls are never answered");
    }
    if (consumer.replyDurability > provider.replyDurability) {
        sink.Add(Severity::kError, "dds.durability", "replyDurability",
                 ValueText(provider.replyDurability), ValueText(consumer.replyDurability),
                 "the client's reply reader asks for more durability than the server's writer "
                 "offers: DDS does not match them, replies never arrive");
    }
    if (provider.requestHistoryDepth > consumer.requestHistoryDepth ||
        provider.requestQueueSize > consumer.requestQueueSize) {
        sink.Add(Severity::kInfo, "dds.history", "requestHistoryDepth/requestQueueSize",
                 DepthAndQueue(provider.requestHistoryDepth, provider.requestQueueSize),
                 DepthAndQueue(consumer.requestHistoryDepth, consumer.requestQueueSize),
                 "the server keeps more requests than the client: a burst beyond the client's "
                 "depth can lose requests before they are sent again");
    }
    if (consumer.replyHistoryDepth > provider.replyHistoryDepth ||
        consumer.replyQueueSize > provider.replyQueueSize) {
        sink.Add(Severity::kInfo, "dds.history", "replyHistoryDepth/replyQueueSize",
                 DepthAndQueue(provider.replyHistoryDepth, provider.replyQueueSize),
                 DepthAndQueue(consumer.replyHistoryDepth, consumer.replyQueueSize),
                 "the client keeps more replies than the server: a burst beyond the server's "
                 "depth can lose replies before they are sent again");
    }
}

}  // namespace orx::maintaind::daemon::check
