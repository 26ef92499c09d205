// A stand-in for maintaind's tools-side service in this process: answers every tools method with
// a canned reply and remembers what it was asked.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "orx/maintaind/tools/tools.h"
#include "vorx/vcc/method_server.h"
#include "vorx/vcc/skeleton.h"

namespace orx::orxmaint::test {

class FakeToolsService {
  public:
    // The service on the DDS binding (served by whatever driver the registry has for it) with
    // `instanceId`. Not offered yet.
    explicit FakeToolsService(const std::string& instanceId = "1");
    ~FakeToolsService();

    // Canned answers. Set them before Offer; they are read on the driver's server thread.
    maintaind::tools::NodeListReply nodes;
    maintaind::tools::EventListReply events;
    maintaind::tools::MethodListReply methods;
    maintaind::tools::FieldListReply fields;
    maintaind::tools::E2EListReply e2eConfigs;
    maintaind::tools::DataTypeListReply dataTypes;
    maintaind::tools::DataTypeReply dataType;
    maintaind::tools::LatencyStatusListReply latencyStatuses;
    maintaind::tools::LatencyResultListReply latencyResults;
    maintaind::tools::LatencySwitchReply latencySwitch;
    maintaind::tools::SampleTimeoutListReply timeouts;
    maintaind::tools::DaemonStatusReply status;
    // False: requests are taken but never answered.
    bool answer = true;

    bool Offer();

    // What the last request of each kind carried, and how many requests came.
    maintaind::tools::QueryFilter LastFilter() const;
    maintaind::tools::LatencySwitchRequest LastSwitch() const;
    maintaind::tools::DataTypeRequest LastDataTypeRequest() const;
    uint32_t LastMethod() const;
    size_t RequestCount() const;

  private:
    template <class Reply, class Request>
    void Serve(uint32_t entityId, const Reply& reply);
    void Remember(uint32_t entityId);

    vorx::vcc::Skeleton skeleton_;
    mutable std::mutex mutex_;
    maintaind::tools::QueryFilter lastFilter_;           // guarded by mutex_
    maintaind::tools::LatencySwitchRequest lastSwitch_;  // guarded by mutex_
    maintaind::tools::DataTypeRequest lastDataType_;     // guarded by mutex_
    uint32_t lastMethod_ = 0;                            // guarded by mutex_
    size_t requests_ = 0;                                // guarded by mutex_
    std::vector<std::shared_ptr<void>> unanswered_;      // guarded by mutex_
};

}  // namespace orx::orxmaint::test
