#ifndef ORX_ORXCM_CONFIG_VALID_UINT16_H
#define ORX_ORXCM_CONFIG_VALID_UINT16_H

#include <cstdint>
#include <string>

#include "orxmaintaind/orxcm_dfx_export.h"

namespace orx {
namespace orxcm {
namespace utils {

// Whether `text` names a 16-bit unsigned number. The text is read like std::stoi reads it
// (base 10, leading blanks skipped, reading stops at the first character that is not a digit):
// "12ab" counts as 12. True exactly when that number, taken as 32-bit unsigned, is at most 65535,
// so negative numbers are invalid. The caller's errno is left as it was.
// Throws std::invalid_argument ("stoi") when the text does not start with a number and
// std::out_of_range ("stoi") when the number does not fit a 32-bit int.
ORXCM_DFX_EXPORT bool ValidUint16(const std::string& text);

// As above; on true also stores the number in `value` (left untouched on false). Throws as
// above.
ORXCM_DFX_EXPORT bool ValidUint16(const std::string& text, uint16_t& value);

}  // namespace utils
}  // namespace orxcm
}  // namespace orx

#endif  // ORX_ORXCM_CONFIG_VALID_UINT16_H
