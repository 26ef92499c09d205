// What child_process.cpp and run_to_end.cpp prepare before they fork.
#ifndef ORX_TEST_SRC_ENVIRONMENT_H
#define ORX_TEST_SRC_ENVIRONMENT_H

#include <map>
#include <string>
#include <vector>

#include "orx/test/child_process.h"

extern char** environ;

namespace orx::test {

// "NAME=value" entries of this process's environment with `changes` applied.
inline std::vector<std::string> EnvironmentWith(const EnvChanges& changes) {
    std::map<std::string, std::string> all;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const size_t equals = text.find('=');
        all[text.substr(0, equals)] = equals == std::string::npos ? "" : text.substr(equals + 1);
    }
    for (const auto& [name, value] : changes) {
        if (value.empty()) {
            all.erase(name);
        } else {
            all[name] = value;
        }
    }
    std::vector<std::string> entries;
    for (const auto& [name, value] : all) {
        entries.push_back(name + "=" + value);
    }
    return entries;
}

// A null-terminated char* array over strings it owns, as exec functions take it.
class CStrings {
  public:
    explicit CStrings(std::vector<std::string> texts) : texts_(std::move(texts)) {
        for (std::string& text : texts_) {
            pointers_.push_back(text.data());
        }
        pointers_.push_back(nullptr);
    }
    char* const* Get() { return pointers_.data(); }

  private:
    std::vector<std::string> texts_;
    std::vector<char*> pointers_;
};

}  // namespace orx::test

#endif  // ORX_TEST_SRC_ENVIRONMENT_H
