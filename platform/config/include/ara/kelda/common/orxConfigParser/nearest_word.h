#ifndef ARA_KELDA_COMMON_ORXCONFIGPARSER_NEAREST_WORD_H
#define ARA_KELDA_COMMON_ORXCONFIGPARSER_NEAREST_WORD_H

#include <string>
#include <vector>

#include "ara/kelda/common/orxConfigParser/export.h"

namespace ara::kelda::common::orxConfigParser {

// The word of `candidates` closest to `word` (edit distance, case ignored) when it is close
// enough to be a likely misspelling (at most 2 edits, or a third of the word's length for long
// words); "" when none is. Used for "did you mean" hints. Pure; never throws toward the caller
// except for memory.
ORX_CONFIG_EXPORT std::string NearestWord(const std::string& word,
                                          const std::vector<std::string>& candidates);

}  // namespace ara::kelda::common::orxConfigParser

#endif  // ARA_KELDA_COMMON_ORXCONFIGPARSER_NEAREST_WORD_H
