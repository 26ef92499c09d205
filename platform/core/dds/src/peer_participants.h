// Follows the processes of the domain: every participant of this driver carries who its process
// is in its DDS user data, and DDS's built-in participant topic tells when one appears, and when
// one leaves or is not heard of for its lease (crash, network cut).
#ifndef VORX_DRIVER_DDS_SRC_PEER_PARTICIPANTS_H
#define VORX_DRIVER_DDS_SRC_PEER_PARTICIPANTS_H

#include <dds/dds.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "callback_slot.h"
#include "dispatch_thread.h"
#include "orx/sync/mutex.h"
#include "participant.h"
#include "vorx/driver/dds/dds_status.h"
#include "vorx/driver/dds/frame.h"
#include "vorx/vcc/process_identity.h"

namespace vorx {
namespace driver {
namespace dds {

// The user data of a participant: "vorx-peer\n" then one "name=value" line each for host,
// hostid, pid and start. Participants of other programs carry none and are not followed.
std::string EncodePeerUserData(const vcc::ProcessIdentity& process);
std::optional<vcc::ProcessIdentity> DecodePeerUserData(const void* data, size_t size);

class PeerParticipants {
  public:
    using AliveHandler = std::function<void(const ParticipantGuid&, const vcc::ProcessIdentity&)>;
    using LostHandler = std::function<void(const ParticipantGuid&)>;

    PeerParticipants(std::shared_ptr<Participant> participant, DispatchThread* thread);
    ~PeerParticipants();

    DdsStatus Start();
    // No handler runs after it returns.
    void Stop();

    // Calls `onAlive` for every peer known now and every one that appears or comes back, and
    // `onLost` for every one that goes; on the discovery thread. Returns the watch's id.
    uint64_t Watch(AliveHandler onAlive, LostHandler onLost);
    // After it returns the watch's handlers never run again (a running call is waited for
    // unless Unwatch comes from inside it).
    void Unwatch(uint64_t watch);

    // The peer `guid` when it is alive. Also finds a peer that DDS knows but whose discovery
    // sample the discovery thread has not handled yet (a request may arrive first).
    std::optional<vcc::ProcessIdentity> Find(const ParticipantGuid& guid) const;

  private:
    struct Watcher {
        std::shared_ptr<CallbackSlot<AliveHandler>> alive;
        std::shared_ptr<CallbackSlot<LostHandler>> lost;
    };

    void OnParticipants();  // discovery thread

    const std::shared_ptr<Participant> participant_;
    DispatchThread* const thread_;

    mutable orx::sync::Mutex mutex_;
    dds_entity_t reader_ GUARDED_BY(mutex_){0};
    uint64_t token_ GUARDED_BY(mutex_){0};
    std::map<dds_instance_handle_t, ParticipantGuid> handles_ GUARDED_BY(mutex_);
    std::map<ParticipantGuid, vcc::ProcessIdentity> alive_ GUARDED_BY(mutex_);
    std::map<uint64_t, Watcher> watchers_ GUARDED_BY(mutex_);
    uint64_t nextWatch_ GUARDED_BY(mutex_){1};
};

}  // namespace dds
}  // namespace driver
}  // namespace vorx

#endif
