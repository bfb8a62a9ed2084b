#include <unicode/uchar.h>

#include "platform/text.h"

namespace marbelot::text {

WordRole wordRole(char32_t c) {
  const auto scalar = static_cast<UChar32>(c);
  const auto isA = [&](std::uint32_t categories) {
    return (U_MASK(u_charType(scalar)) & categories) != 0;
  };
  if (isA(U_GC_CF_MASK) || u_hasBinaryProperty(scalar, UCHAR_GRAPHEME_EXTEND)) {
    return WordRole::extender;
  }
  const bool word = isA(U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK) || u_isUAlphabetic(scalar);
  return word ? WordRole::word : WordRole::separator;
}

}  // namespace marbelot::text
