#ifndef ORX_TESTS_UNIT_APP_TEST_DEPLOYMENTS_H
#define ORX_TESTS_UNIT_APP_TEST_DEPLOYMENTS_H

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "vorx/vcc/app/deployment_parser.h"

namespace orx::test {

// A service deployed with every key the parser knows, on DDS and SOME/IP; `role` is "provided"
// or "required". Tests change single values of it.
inline nlohmann::json FullService(const std::string& role = "provided") {
    nlohmann::json service = nlohmann::json::parse(R"({
      "service": "/test/SensorService", "shortName": "Sensor", "serviceId": 4660,
      "instanceId": "7", "instanceName": "Sensor/Front", "instanceShortName": "Front",
      "role": "provided",
      "bindings": {
        "dds": {"domainId": 3, "network": "127.0.0.1", "networkFlag": true,
                "transportQos": ["udp", "shm"], "resourceAttributes": {"zone": "front"},
                "participantQos": {"announceInitialMs": 100, "announcePeriodMs": 200,
                                   "leaseDurationMs": 3000, "responseDelayMs": 10},
                "discoveryFilter": {"text": "[1]", "class": 2}, "ddsMode": "data"},
        "someip": {"majorVersion": 2, "minorVersion": 5, "network": "10.0.0.1", "port": 30509,
                   "reliable": true, "transportQos": ["tcp"]}
      },
      "events": [{
        "name": "Objects", "shortName": "Objs", "entityId": 11, "dataType": "/test/Objects",
        "serialization": {"type": "someip", "config": "packed"}, "latencyAnalysis": true,
        "e2e": {"profile": "4m", "dataIds": [1, 2], "dataLength": 64, "maxDataLength": 128,
                "counterOffset": 8, "crcOffset": 16, "dataIdMode": "nibble", "maxDeltaCounter": 3,
                "disableCheck": true,
                "stateMachine": {"maxErrorStateInit": 1, "minOkStateInit": 2, "windowSizeInit": 3,
                                 "maxErrorStateValid": 4, "minOkStateValid": 5,
                                 "windowSizeValid": 6, "maxErrorStateInvalid": 7,
                                 "minOkStateInvalid": 8, "windowSizeInvalid": 9}},
        "dds": {"topic": "SensorObjects", "historyDepth": 4, "queueSize": 5,
                "durability": "transientLocal", "history": "keepAll", "reliability": "bestEffort",
                "transportQos": ["tcp"], "fragSize": 1400, "listenQueueSize": 9,
                "pubDiscoveryFilter": {"text": "[2]", "class": 1},
                "subDiscoveryFilter": {"text": "[3]", "class": 4}},
        "someip": {"eventId": 32769, "eventGroupIds": [1, 2], "udpTtl": 5, "reliable": false,
                   "serialization": {"name": "Objects", "byteOrder": "little",
                                     "lengthFieldSize": 2, "tlv": true,
                                     "children": [{"name": "count", "dataId": 3, "alignment": 8}]},
                   "pdu": {"name": "ObjectsPdu", "length": 16, "dynamicLength": true,
                           "signals": [{"name": "count", "type": "uint8", "bigEndian": true,
                                        "startPosition": 0, "length": 8, "initValue": "0"}]}}
      }],
      "methods": [{
        "name": "Reset", "entityId": 12, "inputArgs": ["level", "reason"], "outputArgs": ["ok"],
        "errorDomains": [{"name": "SensorErrors", "id": 77}],
        "requestSerialization": {"type": "cdr", "config": "req"},
        "replySerialization": {"type": "cdr", "config": "rep"}, "fireAndForget": false,
        "dds": {"requestTopic": "ResetReq", "replyTopic": "ResetRep", "requestDataType": "In",
                "replyDataType": "Out", "requestQueueSize": 2, "replyQueueSize": 3,
                "requestHistoryDepth": 4, "replyHistoryDepth": 5,
                "requestDurability": "transientLocal", "replyDurability": "volatile",
                "requestHistory": "keepAll", "replyHistory": "keepLast", "reliability": "reliable",
                "fragSize": 100, "listenQueueSize": 6, "discoveryFilter": {"text": "[5]", "class": 6}},
        "someip": {"methodId": 3, "requestSerialization": {"name": "ResetIn"},
                   "replySerialization": {"name": "ResetOut"}}
      }],
      "fields": [{
        "name": "Gain", "dataType": "/test/Gain",
        "notifier": {"entityId": 13, "someip": {"eventId": 32770}},
        "getter": {"entityId": 14, "someip": {"methodId": 4}},
        "setter": {"entityId": 15, "someip": {"methodId": 5}}
      }]
    })");
    service["role"] = role;
    return service;
}

// An orx.json document whose "services" list holds `services`.
inline nlohmann::json Document(const std::vector<nlohmann::json>& services) {
    return nlohmann::json{{"services", services}};
}

}  // namespace orx::test

#endif  // ORX_TESTS_UNIT_APP_TEST_DEPLOYMENTS_H
