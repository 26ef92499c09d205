#ifndef ORX_TESTS_UNIT_APP_RECORDING_MAINTAIND_H
#define ORX_TESTS_UNIT_APP_RECORDING_MAINTAIND_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "vorx/vcc/orx_maintaind_interface.h"
#include "vorx/vcc/register_dfx_interface.h"

namespace orx::test {

// A maintenance interface that records every call the core makes, in order, for the tests to
// read. Registered with RegisterDfxInterface like the plug-in's client. Thread-safe.
class RecordingMaintaind : public vorx::vcc::OrxMaintaindInterface {
  public:
    using DriverType = vorx::vcc::api::types::DriverType;
    using EventMap = BindingMap<vorx::vcc::api::types::EventInfo>;
    using MethodMap = BindingMap<vorx::vcc::api::types::MethodInfo>;
    using FieldMap = BindingMap<vorx::vcc::api::types::FieldInfo>;
    using ModeHandler = std::function<void(const vorx::vcc::api::types::LatencyAnalysisMode&)>;
    using QueryHandler = std::function<vorx::vcc::api::types::LatencyResult()>;

    // One call: its operation name and what it carried.
    struct Call {
        std::string
            op;  // "InitializeAll", "RegisterNodePid", "RegisterEvent", "UnregisterEvent"...
        bool isPub{false};
        uint16_t serviceId{0};
        std::vector<uint32_t> entityIds;  // withdrawals: the keys of the outer map
        EventMap events;
        MethodMap methods;
        FieldMap fields;
        std::vector<vorx::vcc::api::types::EventE2EConfigInfo> e2e;
        ModeHandler modeHandler;
        QueryHandler queryHandler;
        std::shared_ptr<vorx::vcc::api::types::EventInfo> queryInfo;
        DriverType queryDriver{DriverType::PROLOC};

        static Call Of(std::string name, bool pub = false) {
            Call call;
            call.op = std::move(name);
            call.isPub = pub;
            return call;
        }
    };

    // A sample-timeout listener that records its notices.
    class Listener : public vorx::vcc::api::types::SubscriberListener {
      public:
        void OnSampleTimeout(const vorx::vcc::api::types::ListenerTimeoutInfo& info,
                             DriverType driverType) override {
            {
                std::lock_guard<std::mutex> lock(mutex_);
                notices_.push_back({info, driverType});
            }
            changed_.notify_all();
        }
        std::vector<std::pair<vorx::vcc::api::types::ListenerTimeoutInfo, DriverType>> Notices()
            const {
            std::lock_guard<std::mutex> lock(mutex_);
            return notices_;
        }
        bool WaitForNotices(size_t count, std::chrono::milliseconds timeout) const {
            std::unique_lock<std::mutex> lock(mutex_);
            return changed_.wait_for(lock, timeout, [&] { return notices_.size() >= count; });
        }

      private:
        mutable std::mutex mutex_;
        mutable std::condition_variable changed_;
        std::vector<std::pair<vorx::vcc::api::types::ListenerTimeoutInfo, DriverType>> notices_;
    };

    // Makes one and registers it as the process's maintenance interface.
    static std::shared_ptr<RecordingMaintaind> Install() {
        auto recorder = std::make_shared<RecordingMaintaind>();
        vorx::vcc::RegisterDfxInterface::RegisterOrxMaintaindInterface(recorder);
        return recorder;
    }

    void InitializeAll() override { Add(Call::Of("InitializeAll")); }
    void RegisterNodePid(const uint16_t& serviceId) override {
        Call call = Call::Of("RegisterNodePid");
        call.serviceId = serviceId;
        Add(std::move(call));
    }
    void RegisterNodePid(const std::string& /*serviceName*/) override {
        Add(Call::Of("RegisterNodePidByName"));
    }
    void RegisterEventInfoToMaintaind(const EventMap& infos, const bool& isPub) override {
        Call call = Call::Of("RegisterEvent", isPub);
        call.events = infos;
        Add(std::move(call));
    }
    void UnregisterEventInfoToMaintaind(
        const EntityBindingMap<vorx::vcc::api::types::EventInfo>& infos,
        const bool& isPub) override {
        Call call = Call::Of("UnregisterEvent", isPub);
        for (const auto& [id, map] : infos) {
            call.entityIds.push_back(id);
            call.events.insert(map.begin(), map.end());
        }
        Add(std::move(call));
    }
    void RegisterMethodInfoToMaintaind(const MethodMap& infos, const bool& isPub) override {
        Call call = Call::Of("RegisterMethod", isPub);
        call.methods = infos;
        Add(std::move(call));
    }
    void UnregisterMethodInfoToMaintaind(
        const EntityBindingMap<vorx::vcc::api::types::MethodInfo>& infos,
        const bool& isPub) override {
        Call call = Call::Of("UnregisterMethod", isPub);
        for (const auto& [id, map] : infos) {
            call.entityIds.push_back(id);
        }
        Add(std::move(call));
    }
    void RegisterFieldInfoToMaintaind(const FieldMap& infos, const bool& isPub) override {
        Call call = Call::Of("RegisterField", isPub);
        call.fields = infos;
        Add(std::move(call));
    }
    void UnregisterFieldInfoToMaintaind(
        const EntityBindingMap<vorx::vcc::api::types::FieldInfo>& infos,
        const bool& isPub) override {
        Call call = Call::Of("UnregisterField", isPub);
        for (const auto& [id, map] : infos) {
            call.entityIds.push_back(id);
        }
        Add(std::move(call));
    }
    void RegisterLatencyMode(const ModeHandler& handler, const EventMap& infos,
                             const bool& isPub) override {
        Call call = Call::Of("RegisterLatencyMode", isPub);
        call.modeHandler = handler;
        call.events = infos;
        Add(std::move(call));
    }
    void RegisterLatencyQuery(const QueryHandler& handler,
                              const std::shared_ptr<vorx::vcc::api::types::EventInfo>& info,
                              const DriverType& driverType) override {
        Call call = Call::Of("RegisterLatencyQuery");
        call.queryHandler = handler;
        call.queryInfo = info;
        call.queryDriver = driverType;
        Add(std::move(call));
    }
    void RegisterE2EInfoToMaintaind(
        const std::vector<vorx::vcc::api::types::EventE2EConfigInfo>& configs) override {
        Call call = Call::Of("RegisterE2E");
        call.e2e = configs;
        Add(std::move(call));
    }
    vorx::vcc::api::types::ListenerDescriptor GetMaintaindClientListener() override {
        vorx::vcc::api::types::ListenerDescriptor descriptor;
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
    void Add(Call call) {
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
