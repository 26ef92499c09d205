// Follows which frame topics other participants (and this one) use for which
// service, from DDS's own discovery data.
#ifndef VORX_DRIVER_DDS_SRC_PEER_TOPICS_H
#define VORX_DRIVER_DDS_SRC_PEER_TOPICS_H

#include <dds/dds.h>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "dispatch_thread.h"
#include "orx/sync/mutex.h"
#include "participant.h"
#include "vorx/driver/dds/dds_status.h"

namespace vorx {
namespace driver {
namespace dds {

// The offering side does not know the topic names its clients chose for
// methods (from the DFX configuration, a deployment or the default names) nor
// those its subscribers read events from. Every request writer and event reader
// therefore carries a tag in its DDS user data, and the offering side reads the
// tags from the built-in publication and subscription topics:
//   request writer: "vorx-request:<serviceId>"
//   event reader:   "vorx-event:<serviceId>:<entityId>"
// Entries are kept for the life of the transport (topic names are few).
class PeerTopics {
  public:
    // Called on the discovery thread the first time a request topic (or an
    // event topic) of a service is seen.
    using TopicHandler = std::function<void(uint16_t serviceId, const std::string& topic)>;

    static std::string RequestTag(uint16_t serviceId);
    static std::string EventTag(uint16_t serviceId, uint32_t entityId);

    PeerTopics(std::shared_ptr<Participant> participant, DispatchThread* thread,
               TopicHandler onRequestTopic, TopicHandler onEventTopic);
    ~PeerTopics();

    DdsStatus Start();
    // No handler runs after it returns.
    void Stop();

    // Request topics seen for `serviceId`.
    std::set<std::string> RequestTopics(uint16_t serviceId) const;
    // Topics subscribers read event `entityId` of `serviceId` from.
    std::set<std::string> EventTopics(uint16_t serviceId, uint32_t entityId) const;
    // Topics subscribers read any event of `serviceId` from.
    std::set<std::string> EventTopics(uint16_t serviceId) const;

  private:
    void OnPublications();   // discovery thread
    void OnSubscriptions();  // discovery thread
    // Takes every waiting endpoint sample of `reader` and returns (topic, tag)
    // of our frame endpoints.
    std::vector<std::pair<std::string, std::string>> TakeTagged(dds_entity_t reader);

    const std::shared_ptr<Participant> participant_;
    DispatchThread* const thread_;
    const TopicHandler onRequestTopic_;
    const TopicHandler onEventTopic_;

    mutable orx::sync::Mutex mutex_;
    dds_entity_t publications_ GUARDED_BY(mutex_){0};
    dds_entity_t subscriptions_ GUARDED_BY(mutex_){0};
    std::vector<uint64_t> tokens_ GUARDED_BY(mutex_);
    std::map<uint16_t, std::set<std::string>> requestTopics_ GUARDED_BY(mutex_);
    std::map<std::pair<uint16_t, uint32_t>, std::set<std::string>> eventTopics_ GUARDED_BY(mutex_);
};

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
