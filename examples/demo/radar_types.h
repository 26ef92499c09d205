#ifndef ORX_EXAMPLES_DEMO_RADAR_TYPES_H
#define ORX_EXAMPLES_DEMO_RADAR_TYPES_H

#include <cstdint>
#include <string>
#include <vector>

#include "orx/maintaind/record.h"

// The data types of the demo's radar service. They are records of the core's encoders: plain
// structs that name their members once, in wire order, with ORX_MAINTAIND_RECORD.
namespace demo {

// One object the radar sees, relative to the vehicle, in centimetres and cm/s.
struct RadarObject {
    uint16_t id{};
    int32_t xCm{};
    int32_t yCm{};
    int32_t speedCmPerS{};

    ORX_MAINTAIND_RECORD(RadarObject, id, xCm, yCm, speedCmPerS)
};

// Payload of the event "ObjectList", sent every 100 ms.
struct ObjectList {
    uint32_t frame{};
    std::vector<RadarObject> objects;

    ORX_MAINTAIND_RECORD(ObjectList, frame, objects)
};

// Reply of the method "Calibrate" (argument: an angle offset in millidegrees).
struct CalibrationResult {
    bool applied{};
    int32_t totalOffsetMdeg{};  // offset in use after the call

    ORX_MAINTAIND_RECORD(CalibrationResult, applied, totalOffsetMdeg)
};

// Value of the field "Mode".
struct RadarMode {
    uint8_t value{};  // see ModeName

    ORX_MAINTAIND_RECORD(RadarMode, value)
};

inline const char* ModeName(const RadarMode& mode) {
    switch (mode.value) {
        case 0:
            return "standby";
        case 1:
            return "short-range";
        case 2:
            return "long-range";
        default:
            return "unknown";
    }
}

constexpr uint8_t kModeCount = 3;

}  // namespace demo

#endif  // ORX_EXAMPLES_DEMO_RADAR_TYPES_H
