// Service discovery over DDS: announcing our offers and following everyone's.
#ifndef VORX_DRIVER_DDS_SRC_OFFER_BOARD_H
#define VORX_DRIVER_DDS_SRC_OFFER_BOARD_H

#include <dds/dds.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "callback_slot.h"
#include "dispatch_thread.h"
#include "orx/sync/mutex.h"
#include "participant.h"
#include "vorx/driver/dds/frame.h"

namespace vorx {
namespace driver {
namespace dds {

// Every offer is one instance of the keyed, transient-local announcement
// topic. A withdrawn offer is disposed; the offers of a process that exits or
// crashes lose their writer when its participant's lease runs out. Either way
// the instance stops being alive and leaves the list.
class OfferBoard {
  public:
    using Handler = std::function<void(const std::vector<ServiceOffer>&)>;
    using LostHandler = std::function<void(const ServiceOffer&)>;

    // `identity` supplies providerGuid, processId and hostName of our own
    // offers. `thread` runs the handlers and must outlive Stop. `onLost` is
    // called on that thread for every offer that goes away (withdrawn or its
    // provider lost), before the finds hear of it.
    OfferBoard(std::shared_ptr<Participant> participant, DispatchThread* thread,
               const ServiceOffer& identity, LostHandler onLost);
    ~OfferBoard();

    // Starts following the announcements.
    DdsStatus Start();
    // Stops following them; no handler runs after it returns.
    void Stop();

    // Announces `offer` under its providerId (identity fields are ours);
    // announcing the same providerId again updates it.
    DdsStatus Offer(const ServiceOffer& offer);
    // Withdraws our offer `providerId`; Ok when there was none.
    DdsStatus StopOffer(uint64_t providerId);

    // Calls `handler` on the discovery thread with the current matching list
    // whenever that list changes, and once soon after the start when it is not
    // empty. Returns the find id.
    uint64_t StartFind(const FindFilter& filter, Handler handler);
    // After it returns the handler is not called again (a running call on
    // another thread is waited for).
    void StopFind(uint64_t findId);

    std::vector<ServiceOffer> Current(const FindFilter& filter) const;
    std::optional<ServiceOffer> Known(uint64_t providerId) const;

  private:
    struct Find {
        FindFilter filter;
        std::shared_ptr<CallbackSlot<Handler>> slot;
        std::vector<ServiceOffer> delivered;  // touched on the discovery thread only
    };

    void OnAnnouncements();                           // discovery thread
    void Refresh(const std::shared_ptr<Find>& find);  // discovery thread
    DdsStatus EnsureWriter(dds_entity_t* writer) REQUIRES(mutex_);

    const std::shared_ptr<Participant> participant_;
    DispatchThread* const thread_;
    const ServiceOffer identity_;
    const LostHandler onLost_;

    mutable orx::sync::Mutex mutex_;
    dds_entity_t reader_ GUARDED_BY(mutex_){0};
    dds_entity_t writer_ GUARDED_BY(mutex_){0};
    uint64_t watchToken_ GUARDED_BY(mutex_){0};
    std::map<dds_instance_handle_t, ServiceOffer> known_ GUARDED_BY(mutex_);
    std::map<uint64_t, ServiceOffer> ours_ GUARDED_BY(mutex_);
    std::map<uint64_t, std::shared_ptr<Find>> finds_ GUARDED_BY(mutex_);
    uint64_t nextFindId_ GUARDED_BY(mutex_){1};
};

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
