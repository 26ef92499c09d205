#include "ara/kelda/common/log/dlt.h"

#include <cctype>

#include "backend.h"

namespace ara::kelda::common::log {

std::string DltIdOf(std::string_view name) {
    std::string id;
    for (const char c : name) {
        if (id.size() == 4) {
            break;
        }
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            id.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
        }
    }
    return id.empty() ? "LOG" : id;
}

bool EnableDlt(const std::string& appId, LogLevel threshold) {
    return detail::Backend::Instance().EnableDlt(appId, threshold);
}

}  // namespace ara::kelda::common::log
