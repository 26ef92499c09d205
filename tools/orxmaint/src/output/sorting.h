// The order lists are shown in: by application, then process, then service and name, the
// offering side before the using side. The daemon sends its lists in this order already; sorting
// again keeps the output stable whatever a daemon sends.
#pragma once

#include <algorithm>
#include <tuple>
#include <vector>

#include "orx/maintaind/tools/entries.h"

namespace orx::orxmaint {

inline auto SortKey(const maintaind::tools::NodeEntry& e) {
    return std::tie(e.appName, e.pid);
}
inline auto SortKey(const maintaind::tools::EventEntry& e) {
    return std::make_tuple(std::cref(e.appName), e.pid, std::cref(e.serviceName),
                           std::cref(e.eventName), !e.isPub);
}
inline auto SortKey(const maintaind::tools::MethodEntry& e) {
    return std::make_tuple(std::cref(e.appName), e.pid, std::cref(e.serviceName),
                           std::cref(e.methodName), !e.isPub);
}
inline auto SortKey(const maintaind::tools::FieldEntry& e) {
    return std::make_tuple(std::cref(e.appName), e.pid, std::cref(e.serviceName),
                           std::cref(e.fieldName), !e.isPub);
}
inline auto SortKey(const maintaind::tools::E2EEntry& e) {
    return std::make_tuple(std::cref(e.appName), e.pid, std::cref(e.config.eventName), !e.isPub,
                           std::cref(e.binding));
}
inline auto SortKey(const maintaind::tools::DataTypeEntry& e) {
    return std::tie(e.dataTypeName);
}
inline auto SortKey(const maintaind::tools::SampleTimeoutEntry& e) {
    return std::tie(e.appName, e.listenerName);
}

// Pointers to `entries` in display order; the entries themselves stay where they are.
template <class Entry>
std::vector<const Entry*> Sorted(const std::vector<Entry>& entries) {
    std::vector<const Entry*> sorted;
    sorted.reserve(entries.size());
    for (const Entry& entry : entries) {
        sorted.push_back(&entry);
    }
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Entry* a, const Entry* b) { return SortKey(*a) < SortKey(*b); });
    return sorted;
}

}  // namespace orx::orxmaint
