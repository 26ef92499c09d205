// The radar: offers /demo/RadarService with the event ObjectList (10 Hz), the method Calibrate
// and the field Mode. SIGUSR1 pauses and resumes publishing, so that a subscriber's sample
// timeout can be provoked.
#include <signal.h>

#include <atomic>
#include <cstdlib>
#include <string>

#include "demo_apps.h"
#include "demo_support.h"
#include "radar_types.h"

namespace demo {
namespace {

using namespace std::chrono_literals;

constexpr int32_t kMaxCalibrationMdeg = 5000;

// A few objects that move a little from frame to frame.
ObjectList MakeFrame(uint32_t frame) {
    ObjectList list;
    list.frame = frame;
    const uint16_t count = static_cast<uint16_t>(1 + frame % 4);
    for (uint16_t i = 0; i < count; ++i) {
        RadarObject object;
        object.id = static_cast<uint16_t>(i + 1);
        object.xCm = 1500 + 700 * i - static_cast<int32_t>(frame % 100) * 5;
        object.yCm = -200 + 150 * i;
        object.speedCmPerS = -300 + 50 * i;
        list.objects.push_back(object);
    }
    return list;
}

}  // namespace

int RunRadar(vorx::vcc::app::Runtime& runtime) {
    std::atomic<int32_t> offsetMdeg{0};  // used by the method handler: outlives the provider
    auto radar = runtime.Provide("/demo/RadarService");
    if (!radar) {
        Say("[radar] /demo/RadarService is not deployed in " + runtime.ConfigPath());
        return 1;
    }
    radar->ServeMethodSync<CalibrationResult, int32_t>(
        "Calibrate", [&offsetMdeg](const int32_t& deltaMdeg) {
            CalibrationResult result;
            const int32_t wanted = offsetMdeg.load() + deltaMdeg;
            result.applied = wanted >= -kMaxCalibrationMdeg && wanted <= kMaxCalibrationMdeg;
            if (result.applied) {
                offsetMdeg.store(wanted);
            }
            result.totalOffsetMdeg = offsetMdeg.load();
            Say("[radar] Calibrate(" + std::to_string(deltaMdeg) +
                " mdeg): " + (result.applied ? "applied" : "refused, out of range") +
                ", offset now " + std::to_string(result.totalOffsetMdeg) + " mdeg");
            return result;
        });
    auto mode = radar->ServeField<RadarMode>("Mode", RadarMode{1}, [](const RadarMode& wanted) {
        const RadarMode taken = wanted.value < kModeCount ? wanted : RadarMode{0};
        Say(std::string("[radar] Mode set to ") + ModeName(taken));
        return taken;
    });
    if (!radar->Offer()) {
        Say("[radar] the service could not be offered");
        return 1;
    }
    if (mode) {
        mode->Notify();
    }
    Say("[radar] offering /demo/RadarService instance " + radar->Deployment().instanceId +
        ", ObjectList every 100 ms (SIGUSR1 pauses, Ctrl-C stops)");

    bool paused = false;
    uint32_t frame = 0;
    auto next = std::chrono::steady_clock::now();
    while (true) {
        if (!paused) {
            ++frame;
            const ObjectList list = MakeFrame(frame);
            const bool sent = radar->Publish("ObjectList", list);
            if (frame % 50 == 1) {
                Say("[radar] frame " + std::to_string(frame) + ": " +
                    std::to_string(list.objects.size()) + " objects" + (sent ? "" : " (not sent)"));
            }
        }
        next += 100ms;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            next - std::chrono::steady_clock::now());
        const int signal = WaitForSignal(left);
        if (IsStopSignal(signal)) {
            break;
        }
        if (signal == SIGUSR1) {
            paused = !paused;
            Say(paused ? "[radar] publishing paused" : "[radar] publishing resumed");
        }
        if (std::chrono::steady_clock::now() > next + 1s) {
            next = std::chrono::steady_clock::now();  // do not burst after a stall
        }
    }
    radar->StopOffer();
    Say("[radar] stopped after " + std::to_string(frame) + " frames");
    return 0;
}

}  // namespace demo
