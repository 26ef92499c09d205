// Outcome of one call to maintaind's tools service, with the message the user gets.
#pragma once

#include <string>
#include <utility>

namespace orx::orxmaint {

class CallOutcome {
  public:
    enum class Kind {
        kOk,
        kNotReachable,  // the service was not found in time
        kNoReply,       // found, but no reply in time
        kFailed,        // the core reported an error for the request
    };

    static CallOutcome Ok() { return CallOutcome(Kind::kOk, ""); }
    static CallOutcome NotReachable(std::string message) {
        return CallOutcome(Kind::kNotReachable, std::move(message));
    }
    static CallOutcome NoReply(std::string message) {
        return CallOutcome(Kind::kNoReply, std::move(message));
    }
    static CallOutcome Failed(std::string message) {
        return CallOutcome(Kind::kFailed, std::move(message));
    }

    bool ok() const { return kind_ == Kind::kOk; }
    Kind kind() const { return kind_; }
    // Readable text for the user; empty when ok.
    const std::string& message() const { return message_; }

  private:
    CallOutcome(Kind kind, std::string message) : kind_(kind), message_(std::move(message)) {}

    Kind kind_;
    std::string message_;
};

}  // namespace orx::orxmaint
