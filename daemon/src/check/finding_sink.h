// Where the rules put what they find: one comparison of a provider with a consumer (or one side
// alone, for orphans) shares the entity and the two parties, and each rule adds the member it
// compared, both values and what goes wrong at run time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "check/value_text.h"
#include "orx/maintaind/tools/check.h"

namespace orx::maintaind::daemon::check {

enum class Severity : uint8_t {
    kError,
    kWarning,
    kInfo,
};

const char* SeverityName(Severity severity);

class FindingSink {
  public:
    // Every finding starts as a copy of `base` (entity and parties, values empty) and is appended
    // to `out`. Both must outlive the sink.
    FindingSink(const tools::CheckFinding& base, std::vector<tools::CheckFinding>& out)
        : base_(base), out_(out) {}

    // The binding ("DDS", "SOMEIP" or "" for the entity as a whole) and the part of a field
    // ("notifier.", "getter.", "setter." or "") that the following findings are about.
    void Scope(const char* binding, const char* part) {
        binding_ = binding;
        part_ = part;
    }

    void Add(Severity severity, const char* check, const std::string& member,
             std::string providerValue, std::string consumerValue, const char* message);

    // Adds a finding when the two values differ; values are written with ValueText.
    template <class T>
    void AddIfDiffer(Severity severity, const char* check, const std::string& member,
                     const T& provider, const T& consumer, const char* message);

  private:
    const tools::CheckFinding& base_;
    std::vector<tools::CheckFinding>& out_;
    const char* binding_ = "";
    const char* part_ = "";
};

template <class T>
void FindingSink::AddIfDiffer(Severity severity, const char* check, const std::string& member,
                              const T& provider, const T& consumer, const char* message) {
    if (!(provider == consumer)) {
        Add(severity, check, member, ValueText(provider), ValueText(consumer), message);
    }
}

}  // namespace orx::maintaind::daemon::check
