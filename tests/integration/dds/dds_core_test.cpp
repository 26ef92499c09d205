// The core (proxies, skeletons, method and event channels) over the DDS driver
// between two processes, with the maintenance records as payload; and a report
// sent from a static destructor at process exit.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>

#include "child_process.h"
#include "orx/maintaind/service.h"
#include "orx/maintaind/types.h"
#include "vorx/driver/dds/dds_driver.h"
#include "vorx/serialize/cdr.h"
#include "vorx/vcc/dds_dfx_config_interface.h"
#include "vorx/vcc/driver/driver_registry.h"
#include "vorx/vcc/orxmaintaind/type/orx_maintaind_type.h"
#include "vorx/vcc/proxy.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace {

using namespace std::chrono_literals;
using orx::maintaind::AppRegisterInfo;
using orx::maintaind::LatencySwitch;
using orx::maintaind::ReturnCode;
using orx::test::ChildProcess;
namespace vcc = vorx::vcc;
namespace dds = vorx::driver::dds;

constexpr uint32_t kRegisterApp = orx::maintaind::service::kRegisterAppMethodId;
constexpr uint32_t kSwitchLatency = orx::maintaind::service::kSwitchLatencyEventId;

std::string AppServicePath() {
    return vcc::orxmaintaind::type::OrxMaintaindType::GetInstance()->GetAppServicePath();
}

// Answers for the maintenance service the way the DFX plug-in's provider does.
class MaintaindTopics : public vcc::DDSDfxConfigInterface {
  public:
    bool ReadEventData(const ara::com::internal::BindIndex& index,
                       dds::DDSEventInfo& info) override {
        if (index.entityId != kSwitchLatency) {
            return false;
        }
        info.SetTopicName("SwitchApplicationLatency");
        return true;
    }
    bool ReadMethodData(const ara::com::internal::BindIndex& index,
                        dds::DDSMethodInfo& info) override {
        if (index.entityId != kRegisterApp) {
            return false;
        }
        info.SetRequestTopicName("RegisterAppRequestTopic");
        info.SetReplyTopicName("RegisterAppRequestTopic");
        return true;
    }
    bool ReadServiceDiscoveryData(const ara::com::internal::BindIndex&,
                                  dds::DDSServiceDiscoveryInfo&) override {
        return true;
    }
};

TEST(CoreOverDds, RegisterAppAndLatencySwitchBetweenProcesses) {
    // Before the registry picks the DDS binding's driver.
    setenv("ORX_DDS_DRIVER", "dds", 1);
    setenv("ORX_DDS_DOMAIN", "206", 1);
    dds::RegisterDdsDriver();
    ASSERT_EQ(
        vcc::DriverRegistry::GetInstance()->GetDriver(vcc::api::types::DriverType::DDS)->Name(),
        "dds");
    vcc::RegisterDfxInterface::RegisterDfxConfigInterface(std::make_shared<MaintaindTopics>());

    ChildProcess daemon({DDS_CORE_PEER_PATH, "maintaind"},
                        {"ORX_DDS_DRIVER=dds", "ORX_DDS_DOMAIN=206"});
    ASSERT_TRUE(daemon.WaitForLine("READY", 20s));

    std::mutex mutex;
    std::condition_variable changed;
    vcc::ServiceHandleContainer found;
    auto discovery = std::make_shared<dds::DDSServiceDiscoveryInfo>();
    discovery->SetServiceId(orx::maintaind::service::kAppServiceId);
    discovery->SetInstanceId("65534");
    discovery->SetServiceName(AppServicePath());
    const auto search = vcc::Proxy::StartFindService(
        [&](vcc::ServiceHandleContainer handles) {
            std::lock_guard<std::mutex> lock(mutex);
            found = std::move(handles);
            changed.notify_all();
        },
        discovery);
    {
        std::unique_lock<std::mutex> lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, 20s, [&] { return !found.empty(); }));
    }
    vcc::Proxy proxy(found.front());

    auto info = std::make_shared<dds::DDSMethodInfo>();
    info->SetEntityId(kRegisterApp);
    auto method = proxy.InitializeMethodProxy<ReturnCode>(info);
    ASSERT_TRUE(method);
    for (const uint8_t kind : {0, 1, 2}) {
        AppRegisterInfo report;
        report.kind = kind;
        report.eventRegisterInfo.appName = "dds-core-test";
        auto future = method->Request(report);
        ASSERT_EQ(future.wait_for(5s), ara::core::future_status::ready);
        auto result = future.GetResult();
        ASSERT_TRUE(result.HasValue()) << result.Error().Message();
        EXPECT_EQ(result.Value().code, kind == 1 ? 1 : 0);
        EXPECT_TRUE(daemon.WaitForLine("GOT kind=" + std::to_string(kind), 5s));
    }

    size_t waiting = 0;
    proxy.SetReceiveHandler(
        [&] {
            std::lock_guard<std::mutex> lock(mutex);
            ++waiting;
            changed.notify_all();
        },
        kSwitchLatency);
    auto eventInfo = std::make_shared<dds::DDSEventInfo>();
    eventInfo->SetEntityId(kSwitchLatency);
    ASSERT_TRUE(proxy.Subscribe<LatencySwitch>(kSwitchLatency, eventInfo, 10));
    ASSERT_TRUE(daemon.Send("switch 3"));
    ASSERT_TRUE(daemon.WaitForLine("SENT", 5s));
    std::vector<uint16_t> instances;
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (instances.size() < 3 && std::chrono::steady_clock::now() < deadline) {
        {
            std::unique_lock<std::mutex> lock(mutex);
            changed.wait_until(lock, deadline, [&] { return waiting > 0; });
            waiting = 0;
        }
        proxy.GetNewSamples<LatencySwitch>(
            [&](vcc::SamplePtr<const LatencySwitch> sample) {
                instances.push_back(sample->latencyIndex.instanceId);
            },
            kSwitchLatency, 10);
    }
    EXPECT_EQ(instances, (std::vector<uint16_t>{1, 2, 3}));
    vcc::Proxy::StopFindService(search);
    vcc::RegisterDfxInterface::RegisterDfxConfigInterface(nullptr);
}

TEST(CoreOverDds, ReportFromAStaticDestructorReachesTheServer) {
    constexpr uint32_t kDomain = 207;
    dds::ParticipantSettings settings;
    settings.domainId = kDomain;
    dds::DdsStatus status;
    auto server = dds::DdsDriver::Create(settings, &status);
    ASSERT_TRUE(server) << status.message();

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<uint8_t> kinds;
    std::weak_ptr<dds::DdsDriver> weak = server;
    vcc::ServerCallbacks callbacks;
    callbacks.onRequest = [&, weak](vcc::ProviderId provider, const vcc::MethodCall& call) {
        AppRegisterInfo report;
        const auto& bytes = call.payload.GetBytes();
        if (vorx::serialize::Decode(bytes, report).ok()) {
            std::lock_guard<std::mutex> lock(mutex);
            kinds.push_back(report.kind);
            changed.notify_all();
        }
        vcc::MethodReply reply;
        reply.clientId = call.clientId;
        reply.entityId = call.entityId;
        reply.sessionId = call.sessionId;
        reply.payload = vcc::Payload::FromBytes(vorx::serialize::Encode(ReturnCode{0}));
        if (auto self = weak.lock()) {
            self->SendReply(provider, std::move(reply));
        }
    };
    vcc::ServiceDescription desc;
    desc.serviceId = orx::maintaind::service::kAppServiceId;
    desc.instanceId = "1";
    desc.serviceName = AppServicePath();
    desc.driverType = vcc::api::types::DriverType::DDS;
    ASSERT_NE(server->Offer(desc, callbacks), 0u);

    ChildProcess client({DDS_CORE_PEER_PATH, "exit-client"},
                        {"ORX_DDS_DRIVER=dds", "ORX_DDS_DOMAIN=" + std::to_string(kDomain)});
    ASSERT_TRUE(client.WaitForLine("BOUND", 20s));
    const auto line = client.WaitForLine("EXIT REPLY", 10s);
    ASSERT_TRUE(line.has_value());
    EXPECT_EQ(*line, "EXIT REPLY code=0");
    const auto exit = client.Wait(10s);
    ASSERT_TRUE(exit.has_value());
    EXPECT_TRUE(WIFEXITED(*exit) && WEXITSTATUS(*exit) == 0) << "wait status " << *exit;
    std::lock_guard<std::mutex> lock(mutex);
    EXPECT_EQ(kinds, std::vector<uint8_t>{3});
}

}  // namespace
