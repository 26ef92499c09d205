// Encode, size and decode throughput of one realistic event report: an AppRegisterInfo for an
// event offered on DDS and SOME/IP, with E2E settings on both bindings, DDS attributes and a
// SOME/IP serialization tag.
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

#include "orx/maintaind/types.h"
#include "vorx/serialize/cdr.h"

namespace {

using namespace orx::maintaind;

E2EConfigInfo MakeE2E() {
    E2EConfigInfo e2e;
    e2e.profile = E2EProfile::PROFILE_04;
    e2e.dataIdList = {0x1001, 0x1002, 0x1003, 0x1004};
    e2e.isE2EEnabled = true;
    e2e.dataLength = 64;
    e2e.maxDataLength = 4096;
    e2e.counterOffset = 16;
    e2e.crcOffset = 32;
    e2e.dataIdMode = E2EDataIDMode::ALT;
    e2e.maxDeltaCounter = 2;
    e2e.maxErrorStateInit = 1;
    e2e.minOkStateInit = 2;
    e2e.windowSizeInit = 3;
    e2e.maxErrorStateValid = 1;
    e2e.minOkStateValid = 2;
    e2e.windowSizeValid = 3;
    e2e.maxErrorStateInvalid = 1;
    e2e.minOkStateInvalid = 2;
    e2e.isCheckEnabled = true;
    e2e.windowSizeInvalid = 3;
    return e2e;
}

AppRegisterInfo MakeEventReport() {
    EventInfo dds;
    DDSEventInfo& d = dds.ddsEventInfo;
    d.serviceId = 0x1234;
    d.instanceId = 1;
    d.domainId = 2;
    d.topicName = "/vehicle/chassis/VehicleSpeedService/1/SpeedEvent";
    d.dataTypeName = "vehicle::chassis::SpeedSample";
    d.historyDepth = 10;
    d.queueSize = 32;
    d.durability = DurabilityQos::TRANSIENT_LOCAL;
    d.history = HistoryQos::KEEP_LAST;
    d.transportQos = {TransportQos::SHM, TransportQos::UDP};
    d.fragSize = 1400;
    d.listenQueueSize = 64;
    d.networkName = "lo";
    d.attributes = {{"dds.latency_budget", "0"},
                    {"dds.ownership", "shared"},
                    {"dds.resource_limits.max_samples", "256"}};
    d.ddsMode = 1;
    d.e2eConfig = MakeE2E();
    d.reliability = ReliabilityKind::RELIABLE;

    EventInfo someip;
    SomeipEventInfo& s = someip.someipEventInfo;
    s.serviceId = 0x1234;
    s.instanceId = 1;
    s.majorVersion = 1;
    s.eventId = 0x8001;
    s.eventGroupIds = {1, 2};
    s.networkName = "lo";
    s.minorVersion = 3;
    s.udpTtl = 3;
    s.port = 30509;
    s.isReliable = false;
    s.e2eConfig = MakeE2E();
    s.serializeTag.assign(96, 0x5A);

    AppRegisterInfo report;
    report.isPub = true;
    report.kind = static_cast<uint8_t>(ReportKind::EVENT);
    EventRegisterInfo& event = report.eventRegisterInfo;
    event.serviceName = "VehicleSpeedService";
    event.instanceName = "/vehicle/chassis/VehicleSpeedService/SpeedProvider";
    event.eventInfos[DriverType::DDS] = dds;
    event.eventInfos[DriverType::SOMEIP] = someip;
    event.eventName = "SpeedEvent";
    event.dataTypeName = "vehicle::chassis::SpeedSample";
    event.role = 1;
    event.serializeConfig = {1, "{\"byteOrder\":\"little\",\"alignment\":4}"};
    event.shortName = "Speed";
    event.appName = "chassis_speed_provider";
    event.pid = 4242;
    event.isOnline = true;
    return report;
}

void Annotate(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
    state.counters["encodedBytes"] = static_cast<double>(bytes);
}

void BM_EncodeEventReport(benchmark::State& state) {
    const AppRegisterInfo report = MakeEventReport();
    for (auto _ : state) {
        std::vector<uint8_t> bytes = vorx::serialize::Encode(report);
        benchmark::DoNotOptimize(bytes.data());
    }
    Annotate(state, vorx::serialize::EncodedSize(report));
}
BENCHMARK(BM_EncodeEventReport);

// The same into a buffer that is cleared and reused, as a sender with its own buffer would.
void BM_EncodeEventReportReusedBuffer(benchmark::State& state) {
    const AppRegisterInfo report = MakeEventReport();
    std::vector<uint8_t> bytes;
    for (auto _ : state) {
        bytes.clear();
        vorx::serialize::EncodeAppend(report, bytes);
        benchmark::DoNotOptimize(bytes.data());
    }
    Annotate(state, bytes.size());
}
BENCHMARK(BM_EncodeEventReportReusedBuffer);

void BM_EncodedSizeEventReport(benchmark::State& state) {
    const AppRegisterInfo report = MakeEventReport();
    for (auto _ : state) {
        benchmark::DoNotOptimize(vorx::serialize::EncodedSize(report));
    }
    Annotate(state, vorx::serialize::EncodedSize(report));
}
BENCHMARK(BM_EncodedSizeEventReport);

void BM_DecodeEventReport(benchmark::State& state) {
    const std::vector<uint8_t> bytes = vorx::serialize::Encode(MakeEventReport());
    for (auto _ : state) {
        AppRegisterInfo decoded;
        auto status = vorx::serialize::Decode(bytes, decoded);
        benchmark::DoNotOptimize(status);
        if (!status.ok()) {
            state.SkipWithError("decode failed");
            break;
        }
    }
    Annotate(state, bytes.size());
}
BENCHMARK(BM_DecodeEventReport);

// Decoding over the previous record reuses its strings' and containers' storage.
void BM_DecodeEventReportReusedRecord(benchmark::State& state) {
    const std::vector<uint8_t> bytes = vorx::serialize::Encode(MakeEventReport());
    AppRegisterInfo decoded;
    for (auto _ : state) {
        auto status = vorx::serialize::Decode(bytes, decoded);
        benchmark::DoNotOptimize(status);
        if (!status.ok()) {
            state.SkipWithError("decode failed");
            break;
        }
    }
    Annotate(state, bytes.size());
}
BENCHMARK(BM_DecodeEventReportReusedRecord);

}  // namespace

BENCHMARK_MAIN();
