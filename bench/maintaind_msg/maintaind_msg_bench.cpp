// Cost of turning one event that runs on DDS and SOME/IP into its maintenance record,
// and the size of the registration request that carries it.

#include <benchmark/benchmark.h>

#include "orx/maintaind/config/orx_maintaind_config.h"
#include "vorx/serialize/encoder.h"

namespace {

using orx::maintaind::config::OrxMaintaindConfig;

std::shared_ptr<vorx::vcc::api::types::E2EXfConfig> MakeE2E() {
    auto config = std::make_shared<vorx::vcc::api::types::E2EXfConfig>();
    config->profile = vorx::vcc::api::types::E2EXf_Profile::PROFILE_4M;
    config->dataIdList = {0x101U, 0x102U};
    config->isE2EEnabled = true;
    config->dataLength = 64U;
    config->maxDataLength = 128U;
    return config;
}

// A realistic event description: both bindings, E2E, a few DDS attributes and a
// SOME/IP serialization tree of one struct with four members.
template <class Info>
void DescribeEvent(Info& info) {
    info.SetServiceName("/demo/RadarService");
    info.SetInstanceName("Radar/Front");
    info.SetEventName("ObjectList");
    info.SetDataTypeName("/demo/ObjectListType");
    info.SetShortName("objects");
    info.SetServiceId(0x1234U);
    info.SetInstanceId("1");
    info.SetNetwork({"127.0.0.1", true});
    info.SetE2EConfig(MakeE2E());
}

vorx::driver::dds::DDSEventInfo MakeDdsEvent() {
    vorx::driver::dds::DDSEventInfo info;
    DescribeEvent(info);
    info.SetTopicName("rt/demo/RadarService/ObjectList");
    info.SetTransportQos({1U, 3U});
    info.SetResourceAttr({{"dds.partition", "front"}, {"dds.ownership", "shared"}});
    return info;
}

vorx::driver::someip::SomeipEventInfo MakeSomeipEvent() {
    vorx::driver::someip::SomeipEventInfo info;
    DescribeEvent(info);
    info.SetEventId(0x8001U);
    info.SetEventGroupIds({1U});
    vorx::serialize::SerializationNode root;
    root.name = "ObjectListType";
    for (const char* member : {"timestamp", "count", "objects", "status"}) {
        vorx::serialize::SerializationNode child;
        child.name = member;
        root.children.push_back(child);
    }
    info.SetSerializationConfig(root);
    return info;
}

void BM_ConvertDdsAndSomeipEvent(benchmark::State& state) {
    const vorx::driver::dds::DDSEventInfo dds = MakeDdsEvent();
    const vorx::driver::someip::SomeipEventInfo someip = MakeSomeipEvent();
    const std::string appName = "radar_app";
    orx::maintaind::AppRegisterInfo request;
    for (auto _ : state) {
        orx::maintaind::EventRegisterInfo record;
        OrxMaintaindConfig().GetDDSEventRegisterInfo(dds, record, true, appName);
        OrxMaintaindConfig().GetSOMEIPEventRegisterInfo(someip, record, true, appName);
        benchmark::DoNotOptimize(record);
        request.eventRegisterInfo = std::move(record);
    }
    state.counters["requestBytes"] = static_cast<double>(vorx::serialize::EncodedSize(request));
    state.counters["serializeTagBytes"] = static_cast<double>(
        request.eventRegisterInfo.eventInfos.at(orx::maintaind::DriverType::SOMEIP)
            .someipEventInfo.serializeTag.size());
}
BENCHMARK(BM_ConvertDdsAndSomeipEvent);

void BM_SerializeTagRoundTrip(benchmark::State& state) {
    const vorx::serialize::SerializationNode tree = MakeSomeipEvent().GetSerializationConfig();
    vorx::serialize::SerializationNode parsed;
    for (auto _ : state) {
        const std::vector<uint8_t> bytes = orx::maintaind::config::OrxMaintaindSerializeHelper::
            ChangeSomeipSerializeConfigToRawData(tree);
        benchmark::DoNotOptimize(
            orx::maintaind::config::OrxMaintaindSerializeHelper::ParseSomeipSerializeRawData(
                bytes, parsed));
    }
}
BENCHMARK(BM_SerializeTagRoundTrip);

}  // namespace

BENCHMARK_MAIN();
