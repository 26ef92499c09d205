#include "application_error_domain.h"

#include <map>
#include <memory>

#include "orx/sync/mutex.h"

namespace vorx::vcc {
namespace {

class ApplicationErrorDomain final : public ara::core::ErrorDomain {
  public:
    ApplicationErrorDomain(IdType id, std::string name) : ErrorDomain(id), name_(std::move(name)) {}
    ~ApplicationErrorDomain() = default;

    const char* Name() const override { return name_.c_str(); }
    const char* Message(CodeType /*code*/) const override { return "application error"; }

  private:
    const std::string name_;
};

}  // namespace

const ara::core::ErrorDomain& GetApplicationErrorDomain(uint64_t id, const std::string& name) {
    // Never destroyed: error codes may be read during static destruction.
    static auto* const mutex = new orx::sync::Mutex();
    static auto* const domains = new std::map<uint64_t, std::unique_ptr<ApplicationErrorDomain>>();
    orx::sync::MutexLock lock(*mutex);
    auto& domain = (*domains)[id];
    if (!domain) {
        domain = std::make_unique<ApplicationErrorDomain>(id, name);
    }
    return *domain;
}

}  // namespace vorx::vcc
