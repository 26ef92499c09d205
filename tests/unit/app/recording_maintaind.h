#ifndef ORX_TESTS_UNIT_APP_RECORDING_MAINTAIND_H
#define ORX_TESTS_UNIT_APP_RECORDING_MAINTAIND_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "vorx/vcc/orx_maintaind_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace orx::test {

namespace types = vorx::vcc::api::types;

// A maintenance interface that records every call the core makes, in order, for the tests to
// read. Registered with RegisterDfxInterface like the plug-in's client. Thread-safe.
class RecordingMaintaind : public vorx::vcc::OrxMaintaindInterface {
  public:
    using DriverType = types::DriverType;
    using ModeHandler = std::function<void(const types::LatencyAnalysisMode&)>;
    using QueryHandler = std::function<types::LatencyResult()>;

    // One call: its operation name ("InitializeAll", "RegisterEvent", "UnregisterEvent"...) and
    // what it carried.
    struct Call {
        std::string op;
        bool isPub{false};
        uint16_t serviceId{0};
        std::vector<uint32_t> entityIds;  // withdrawals: the keys of the outer map
        BindingMap<types::EventInfo> events;
        BindingMap<types::MethodInfo> methods;
        BindingMap<types::FieldInfo> fields;
        std::vector<types::EventE2EConfigInfo> e2e;
        std::shared_ptr<types::EventInfo> queryInfo;
        DriverType queryDriver{DriverType::PROLOC};
    };

    // A sample-timeout listener that records its notices.
    class Listener : public types::SubscriberListener {
      public:
        using Notice = std::pair<types::ListenerTimeoutInfo, DriverType>;
        void OnSampleTimeout(const types::ListenerTimeoutInfo& info, DriverType driver) override {
            std::lock_guard<std::mutex> lock(mutex_);
            notices_.push_back({info, driver});
        }
        std::vector<Notice> Notices() const {
            std::lock_guard<std::mutex> lock(mutex_);
            return notices_;
        }

      private:
        mutable std::mutex mutex_;
        std::vector<Notice> notices_;
    };

    // Makes one and registers it as the process's maintenance interface.
    static std::shared_ptr<RecordingMaintaind> Install() {
        auto recorder = std::make_shared<RecordingMaintaind>();
        vorx::vcc::RegisterDfxInterface::RegisterOrxMaintaindInterface(recorder);
        return recorder;
    }

    void InitializeAll() override { Add("InitializeAll"); }
    void RegisterNodePid(const uint16_t& serviceId) override {
        Add("RegisterNodePid", false, [&](Call& c) { c.serviceId = serviceId; });
    }
    void RegisterNodePid(const std::string&) override { Add("RegisterNodePidByName"); }
    void RegisterEventInfoToMaintaind(const BindingMap<types::EventInfo>& infos,
                                      const bool& isPub) override {
        Add("RegisterEvent", isPub, [&](Call& c) { c.events = infos; });
    }
    void UnregisterEventInfoToMaintaind(const EntityBindingMap<types::EventInfo>& infos,
                                        const bool& isPub) override {
        Add("UnregisterEvent", isPub, [&](Call& c) { c.entityIds = KeysOf(infos); });
    }
    void RegisterMethodInfoToMaintaind(const BindingMap<types::MethodInfo>& infos,
                                       const bool& isPub) override {
        Add("RegisterMethod", isPub, [&](Call& c) { c.methods = infos; });
    }
    void UnregisterMethodInfoToMaintaind(const EntityBindingMap<types::MethodInfo>& infos,
                                         const bool& isPub) override {
        Add("UnregisterMethod", isPub, [&](Call& c) { c.entityIds = KeysOf(infos); });
    }
    void RegisterFieldInfoToMaintaind(const BindingMap<types::FieldInfo>& infos,
                                      const bool& isPub) override {
        Add("RegisterField", isPub, [&](Call& c) { c.fields = infos; });
    }
    void UnregisterFieldInfoToMaintaind(const EntityBindingMap<types::FieldInfo>& infos,
                                        const bool& isPub) override {
        Add("UnregisterField", isPub, [&](Call& c) { c.entityIds = KeysOf(infos); });
    }
    void RegisterLatencyMode(const ModeHandler&, const BindingMap<types::EventInfo>& infos,
                             const bool& isPub) override {
        Add("RegisterLatencyMode", isPub, [&](Call& c) { c.events = infos; });
    }
    void RegisterLatencyQuery(const QueryHandler&, const std::shared_ptr<types::EventInfo>& info,
                              const DriverType& driver) override {
        Add("RegisterLatencyQuery", false, [&](Call& c) {
            c.queryInfo = info;
            c.queryDriver = driver;
        });
    }
    void RegisterE2EInfoToMaintaind(const std::vector<types::EventE2EConfigInfo>& e2e) override {
        Add("RegisterE2E", false, [&](Call& c) { c.e2e = e2e; });
    }
    types::ListenerDescriptor GetMaintaindClientListener() override {
        types::ListenerDescriptor descriptor;
        if (withListener_) {
            descriptor.listener = listener_;
            descriptor.kind = 2;
        }
        return descriptor;
    }

    // Hand out no listener, as the plug-in does without a usable threshold.
    void WithoutListener() { withListener_ = false; }
    const std::shared_ptr<Listener>& TimeoutListener() const { return listener_; }

    std::vector<Call> Calls() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return calls_;
    }
    // The calls of one operation, in order.
    std::vector<Call> CallsOf(const std::string& op) const {
        std::vector<Call> matching;
        for (auto& call : Calls()) {
            if (call.op == op) {
                matching.push_back(std::move(call));
            }
        }
        return matching;
    }
    std::vector<std::string> Ops() const {
        std::vector<std::string> ops;
        for (const auto& call : Calls()) {
            ops.push_back(call.op);
        }
        return ops;
    }
    void Clear() {
        std::lock_guard<std::mutex> lock(mutex_);
        calls_.clear();
    }

  private:
    template <class Map>
    static std::vector<uint32_t> KeysOf(const Map& infos) {
        std::vector<uint32_t> keys;
        for (const auto& entry : infos) {
            keys.push_back(entry.first);
        }
        return keys;
    }
    void Add(const std::string& op, bool isPub = false,
             const std::function<void(Call&)>& fill = nullptr) {
        Call call;
        call.op = op;
        call.isPub = isPub;
        if (fill) {
            fill(call);
        }
        std::lock_guard<std::mutex> lock(mutex_);
        calls_.push_back(std::move(call));
    }

    mutable std::mutex mutex_;
    std::vector<Call> calls_;
    std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
    std::atomic<bool> withListener_{true};
};

}  // namespace orx::test

#endif  // ORX_TESTS_UNIT_APP_RECORDING_MAINTAIND_H
