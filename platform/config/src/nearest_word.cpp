#include "ara/kelda/common/orxConfigParser/nearest_word.h"

#include <algorithm>
#include <cctype>

namespace ara::kelda::common::orxConfigParser {
namespace {

char Lower(char c) {
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

// Levenshtein distance, letters compared without case.
size_t Distance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t above = row[j];
            const size_t replace = diagonal + (Lower(a[i - 1]) == Lower(b[j - 1]) ? 0 : 1);
            row[j] = std::min({above + 1, row[j - 1] + 1, replace});
            diagonal = above;
        }
    }
    return row[b.size()];
}

}  // namespace

std::string NearestWord(const std::string& word, const std::vector<std::string>& candidates) {
    const size_t allowed = std::max<size_t>(2, word.size() / 3);
    std::string best;
    size_t bestDistance = allowed + 1;
    for (const auto& candidate : candidates) {
        const size_t distance = Distance(word, candidate);
        if (distance < bestDistance) {
            best = candidate;
            bestDistance = distance;
        }
    }
    return best;
}

}  // namespace ara::kelda::common::orxConfigParser
