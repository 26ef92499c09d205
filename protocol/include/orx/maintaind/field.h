// Records describing one field: its notifier event and its getter and setter methods.
#pragma once

#include <cstdint>
#include <map>

#include "orx/maintaind/enums.h"
#include "orx/maintaind/event.h"
#include "orx/maintaind/method.h"
#include "orx/maintaind/record.h"

namespace orx::maintaind {

// One binding entry of a field.
struct FieldInfo {
    EventInfo notifierInfo;
    bool hasGetter{};
    MethodInfo getterInfo;
    bool hasSetter{};
    MethodInfo setterInfo;

    ORX_MAINTAIND_RECORD(FieldInfo, notifierInfo, hasGetter, getterInfo, hasSetter, setterInfo)
};

// Registration of one field.
struct FieldRegisterInfo {
    String serviceName;
    String instanceName;
    std::map<DriverType, String> bindingNames;  // per binding, the instance short name
    uint16_t serviceId{};
    bool hasNotifier{};
    int32_t role{};
    String appName;
    int32_t pid{};
    String fieldName;  // the field's type name
    uint16_t instanceId{};
    bool hasGetter{};
    bool hasSetter{};
    std::map<DriverType, FieldInfo> fieldInfos;
    bool isOnline{};

    ORX_MAINTAIND_RECORD(FieldRegisterInfo, serviceName, instanceName, bindingNames, serviceId,
                         hasNotifier, role, appName, pid, fieldName, instanceId, hasGetter,
                         hasSetter, fieldInfos, isOnline)
};

}  // namespace orx::maintaind
