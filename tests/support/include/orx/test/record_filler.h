#ifndef ORX_TEST_RECORD_FILLER_H
#define ORX_TEST_RECORD_FILLER_H

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "orx/maintaind/record.h"

namespace orx::test {

// Fills every member of a maintenance record, nested records included, with distinct non-default
// values: numbers count up, texts say which number they got, sequences and maps get two entries.
// A fully populated record makes round-trip checks and size measurements meaningful.
class RecordFiller {
  public:
    template <class T>
    void Fill(T& value) {
        if constexpr (orx::maintaind::IsRecordV<T>) {
            orx::maintaind::VisitMembers(
                value, [this](auto /*name*/, auto& member) { this->Fill(member); });
        } else if constexpr (std::is_same_v<T, bool>) {
            value = (next_++ % 2) == 0;
        } else if constexpr (std::is_enum_v<T>) {
            value = static_cast<T>(next_++ % 2);
        } else if constexpr (std::is_arithmetic_v<T>) {
            value = static_cast<T>(next_++ % 100 + 1);
        } else if constexpr (std::is_same_v<T, std::string>) {
            value = "value-" + std::to_string(next_++);
        } else {
            FillContainer(value);
        }
    }

  private:
    template <class E>
    void FillContainer(std::vector<E>& values) {
        values.resize(2);
        for (auto& element : values) {
            Fill(element);
        }
    }

    template <class K, class V>
    void FillContainer(std::map<K, V>& values) {
        values.clear();
        for (int i = 0; i < 2; ++i) {
            K key{};
            if constexpr (std::is_enum_v<K> || std::is_arithmetic_v<K>) {
                key = static_cast<K>(i);
            } else {
                Fill(key);
            }
            Fill(values[key]);
        }
    }

    template <class E>
    void FillContainer(std::set<E>& values) {
        values.clear();
        for (int i = 0; i < 2; ++i) {
            E element{};
            Fill(element);
            values.insert(element);
        }
    }

    uint64_t next_{1};
};

// A copy of `T` with every member filled.
template <class T>
T FilledRecord() {
    T value{};
    RecordFiller().Fill(value);
    return value;
}

}  // namespace orx::test

#endif  // ORX_TEST_RECORD_FILLER_H
