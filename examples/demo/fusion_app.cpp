// The fusion: uses /demo/RadarService. Subscribes ObjectList (the sample-timeout threshold in its
// orx.json makes a silent radar show up as sample timeouts), calls Calibrate, reads and sets
// Mode, and prints what it does.
#include <atomic>
#include <string>

#include "demo_apps.h"
#include "demo_support.h"
#include "radar_types.h"

namespace demo {
namespace {

using namespace std::chrono_literals;

template <class T>
using Reply = vorx::vcc::app::ServiceConsumer::ResultFuture<T>;

// Waits for a reply and describes a failure; true with `value` set on success.
template <class T>
bool Await(Reply<T>& reply, T& value, std::string& failure) {
    if (reply.wait_for(2s) != ara::core::future_status::ready) {
        failure = "no reply within 2 s";
        return false;
    }
    auto result = reply.GetResult();
    if (!result.HasValue()) {
        failure = result.Error().Message();
        return false;
    }
    value = result.Value();
    return true;
}

// What the fusion does each time it finds the radar.
void TalkToRadar(vorx::vcc::app::ServiceConsumer& radar, int32_t calibrationMdeg) {
    std::string failure;
    auto calibration = radar.Call<CalibrationResult>("Calibrate", calibrationMdeg);
    CalibrationResult result;
    if (Await(calibration, result, failure)) {
        Say("[fusion] Calibrate(" + std::to_string(calibrationMdeg) + " mdeg) -> " +
            (result.applied ? "applied" : "refused") + ", radar offset now " +
            std::to_string(result.totalOffsetMdeg) + " mdeg");
    } else {
        Say("[fusion] Calibrate failed: " + failure);
    }

    auto current = radar.GetField<RadarMode>("Mode");
    RadarMode mode;
    if (!Await(current, mode, failure)) {
        Say("[fusion] reading Mode failed: " + failure);
        return;
    }
    Say(std::string("[fusion] radar Mode is ") + ModeName(mode));
    const RadarMode wanted{static_cast<uint8_t>((mode.value + 1) % kModeCount)};
    auto set = radar.SetField<RadarMode>("Mode", wanted);
    if (Await(set, mode, failure)) {
        Say(std::string("[fusion] asked for Mode ") + ModeName(wanted) + ", radar took " +
            ModeName(mode));
    } else {
        Say("[fusion] setting Mode failed: " + failure);
    }
}

}  // namespace

int RunFusion(vorx::vcc::app::Runtime& runtime) {
    // Counted by the handlers, so made before the consumer and destroyed after it.
    std::atomic<uint64_t> lists{0};
    std::atomic<uint64_t> objects{0};
    auto radar = runtime.Require("/demo/RadarService");
    if (!radar) {
        Say("[fusion] /demo/RadarService is not deployed in " + runtime.ConfigPath());
        return 1;
    }
    radar->SetSampleTimeoutHandler([&runtime](const std::string& event, uint32_t count) {
        Say("[fusion] no " + event + " for " + std::to_string(runtime.SampleTimeoutThresholdMs()) +
            " ms (sample timeout #" + std::to_string(count) + ")");
    });
    radar->Subscribe<ObjectList>("ObjectList", [&lists, &objects](const ObjectList& list) {
        const uint64_t received = ++lists;
        objects += list.objects.size();
        if (received % 50 == 1) {
            std::string first;
            if (!list.objects.empty()) {
                const RadarObject& object = list.objects.front();
                first = ", nearest at x=" + std::to_string(object.xCm) +
                        " cm y=" + std::to_string(object.yCm) + " cm";
            }
            Say("[fusion] ObjectList frame " + std::to_string(list.frame) + ": " +
                std::to_string(list.objects.size()) + " objects" + first);
        }
    });
    radar->SubscribeField<RadarMode>("Mode", [](const RadarMode& mode) {
        Say(std::string("[fusion] radar reports Mode ") + ModeName(mode));
    });
    Say("[fusion] looking for /demo/RadarService (Ctrl-C stops)");

    bool wasAvailable = false;
    int32_t calibration = 250;
    auto nextSummary = std::chrono::steady_clock::now() + 5s;
    while (true) {
        const bool available = radar->IsAvailable();
        if (available != wasAvailable) {
            wasAvailable = available;
            Say(available ? "[fusion] found the radar service" : "[fusion] lost the radar service");
            if (available) {
                TalkToRadar(*radar, calibration);
                calibration = -calibration;
            }
        }
        if (std::chrono::steady_clock::now() >= nextSummary) {
            nextSummary += 5s;
            Say("[fusion] " + std::to_string(lists.load()) + " object lists, " +
                std::to_string(objects.load()) + " objects so far");
        }
        if (IsStopSignal(WaitForSignal(200ms))) {
            break;
        }
    }
    Say("[fusion] stopped after " + std::to_string(lists.load()) + " object lists");
    return 0;
}

}  // namespace demo
