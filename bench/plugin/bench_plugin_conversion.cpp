// Cost of turning the core's description of one event, method and field into its maintenance
// record (the work each report does before it is sent), and the encoded size of the request that
// carries it. Verbose log lines are off, as in production.
#include <benchmark/benchmark.h>

#include <memory>

#include "orx/maintaind/types.h"
#include "orxmaintaind/orx_maintaind_event_client.h"
#include "orxmaintaind/orx_maintaind_field_client.h"
#include "orxmaintaind/orx_maintaind_method_client.h"
#include "vorx/driver/dds/dds_entity_info.h"
#include "vorx/driver/someip/someip_entity_info.h"
#include "vorx/serialize/cdr.h"

namespace {

using orx::orxcm::orxmaintaind::OrxMaintaindEventClient;
using orx::orxcm::orxmaintaind::OrxMaintaindFieldClient;
using orx::orxcm::orxmaintaind::OrxMaintaindMethodClient;
using vorx::vcc::api::types::DriverType;
using vorx::vcc::api::types::E2EXf_Profile;
using vorx::vcc::api::types::E2EXfConfig;

std::shared_ptr<E2EXfConfig> E2E() {
    auto config = std::make_shared<E2EXfConfig>();
    config->profile = E2EXf_Profile::PROFILE_04;
    config->dataIdList = {0x10, 0x11, 0x12, 0x13};
    config->isE2EEnabled = true;
    config->dataLength = 128;
    return config;
}

vorx::serialize::SerializationNode Tree(const std::string& name) {
    vorx::serialize::SerializationNode node;
    node.name = name;
    for (const char* member : {"id", "range", "speed", "flags"}) {
        vorx::serialize::SerializationNode child;
        child.name = member;
        node.children.push_back(child);
    }
    return node;
}

template <typename Info>
void Describe(Info& info, uint32_t entityId) {
    info.SetServiceId(0x1234);
    info.SetInstanceId("1");
    info.SetEntityId(entityId);
    info.SetServiceName("/velmar/demo/RadarService");
    info.SetInstanceName("/velmar/demo/RadarService/Front");
    info.SetShortName("Radar");
    info.SetInstanceShortName("radar_front");
    info.SetResourceAttr({{"zone", "front"}, {"asil", "B"}});
}

std::shared_ptr<vorx::driver::dds::DDSEventInfo> DdsEvent() {
    auto info = std::make_shared<vorx::driver::dds::DDSEventInfo>();
    Describe(*info, 1);
    info->SetEventName("Objects");
    info->SetDataTypeName("radar::ObjectList");
    info->SetTopicName("RadarObjects");
    info->SetTransportQos({1, 3});
    info->SetE2EConfig(E2E());
    return info;
}

std::shared_ptr<vorx::driver::someip::SomeipEventInfo> SomeipEvent() {
    auto info = std::make_shared<vorx::driver::someip::SomeipEventInfo>();
    Describe(*info, 1);
    info->SetEventName("Objects");
    info->SetEventId(0x8001);
    info->SetEventGroupIds({1, 2});
    info->SetSerializationConfig(Tree("ObjectList"));
    info->SetE2EConfig(E2E());
    return info;
}

template <typename Info>
void DescribeMethod(Info& info, const std::string& name) {
    Describe(info, 2);
    info.SetServiceLevelName("RadarService");
    info.SetMethodName(name);
    info.SetInputArgNames({"range", "mode"});
    info.SetOutputArgNames({"objects"});
    info.SetErrorDomains({{"RadarErrors", 0x8000000000000001ULL}});
    info.SetE2EConfig(E2E());
}

std::shared_ptr<vorx::driver::dds::DDSMethodInfo> DdsMethod(const std::string& name) {
    auto info = std::make_shared<vorx::driver::dds::DDSMethodInfo>();
    DescribeMethod(*info, name);
    info->SetRequestTopicName(name + "Request");
    info->SetReplyTopicName(name + "Reply");
    info->SetTransportQos({1, 2});
    return info;
}

std::shared_ptr<vorx::driver::someip::SomeipMethodInfo> SomeipMethod(const std::string& name) {
    auto info = std::make_shared<vorx::driver::someip::SomeipMethodInfo>();
    DescribeMethod(*info, name);
    info->SetMethodId(0x0101);
    info->SetRequestSerializationConfig(Tree("Request"));
    info->SetReplySerializationConfig(Tree("Reply"));
    return info;
}

void BM_EventRecord(benchmark::State& state) {
    OrxMaintaindEventClient client;
    client.SetApplicationName("BenchApp");
    const OrxMaintaindEventClient::EventInfoMap infos{{DriverType::DDS, DdsEvent()},
                                                      {DriverType::SOMEIP, SomeipEvent()}};
    for (auto _ : state) {
        benchmark::DoNotOptimize(client.ChangeToEventRegisterInfo(infos, true));
    }
    orx::maintaind::AppRegisterInfo request;
    request.eventRegisterInfo = *client.ChangeToEventRegisterInfo(infos, true);
    state.counters["requestBytes"] = static_cast<double>(vorx::serialize::EncodedSize(request));
}
BENCHMARK(BM_EventRecord);

void BM_MethodRecord(benchmark::State& state) {
    OrxMaintaindMethodClient client;
    client.SetApplicationName("BenchApp");
    const OrxMaintaindMethodClient::MethodInfoMap infos{
        {DriverType::DDS, DdsMethod("Calibrate")}, {DriverType::SOMEIP, SomeipMethod("Calibrate")}};
    for (auto _ : state) {
        benchmark::DoNotOptimize(client.ChangeToMethodRegisterInfo(infos, true));
    }
    orx::maintaind::AppRegisterInfo request;
    request.kind = 1;
    request.methodRegisterInfo = *client.ChangeToMethodRegisterInfo(infos, true);
    state.counters["requestBytes"] = static_cast<double>(vorx::serialize::EncodedSize(request));
}
BENCHMARK(BM_MethodRecord);

void BM_FieldRecord(benchmark::State& state) {
    OrxMaintaindFieldClient client;
    client.SetApplicationName("BenchApp");
    auto field = std::make_shared<vorx::vcc::api::types::FieldInfo>();
    Describe(*field, 3);
    field->SetFieldName("Mode");
    field->SetHasNotify(true);
    field->SetNotifyInfo(DdsEvent());
    field->SetHasGet(true);
    field->SetGetInfo(DdsMethod("GetMode"));
    field->SetHasSet(true);
    field->SetSetInfo(DdsMethod("SetMode"));
    const OrxMaintaindFieldClient::FieldInfoMap infos{{DriverType::DDS, field}};
    for (auto _ : state) {
        benchmark::DoNotOptimize(client.ChangeToFieldRegisterInfo(infos, true, true));
    }
    orx::maintaind::AppRegisterInfo request;
    request.kind = 2;
    request.fieldRegisterInfo = *client.ChangeToFieldRegisterInfo(infos, true, true);
    state.counters["requestBytes"] = static_cast<double>(vorx::serialize::EncodedSize(request));
}
BENCHMARK(BM_FieldRecord);

}  // namespace

BENCHMARK_MAIN();
