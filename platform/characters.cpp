// Characters as a user counts them: extended grapheme clusters, https://unicode.org/reports/tr29/.
// The properties are ICU's. The rules are here because ICU's break iterator, at 30 to 70 MB/s,
// would be felt on large texts, and would have to be kept per thread; the tests hold them against
// it.
#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/uvernum.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <limits>

#include "platform/text.h"
#include "platform/utf8.h"

namespace marbelot::text {
namespace {

// What a scalar does to the boundaries beside it.
enum class Kind : std::uint8_t {
  unknown,
  other,
  control,
  extend,
  linkingExtend,  // an extend that may stand between a virama and its consonants
  virama,
  zwj,
  spacingMark,
  prepend,
  pictographic,
  consonant,  // of a script in which a virama makes conjuncts
  regionalIndicator,
  hangulL,
  hangulV,
  hangulT,
  hangulLV,
  hangulLVT,
};

enum class Conjunct { none, consonant, linker, extend };

Conjunct conjunctOf(UChar32 c) {
#if U_ICU_VERSION_MAJOR_NUM >= 76
  switch (u_getIntPropertyValue(c, UCHAR_INDIC_CONJUNCT_BREAK)) {
    case U_INCB_CONSONANT:
      return Conjunct::consonant;
    case U_INCB_LINKER:
      return Conjunct::linker;
    case U_INCB_EXTEND:
      return Conjunct::extend;
    default:
      return Conjunct::none;
  }
#else
  // Before the property existed, ICU spelt it out so.
  const int category = u_getIntPropertyValue(c, UCHAR_INDIC_SYLLABIC_CATEGORY);
  if (category == U_INSC_CONSONANT || category == U_INSC_VIRAMA) {
    UErrorCode error = U_ZERO_ERROR;
    switch (uscript_getScript(c, &error)) {
      case USCRIPT_BENGALI:
      case USCRIPT_DEVANAGARI:
      case USCRIPT_GUJARATI:
      case USCRIPT_MALAYALAM:
      case USCRIPT_ORIYA:
      case USCRIPT_TELUGU:
        return category == U_INSC_VIRAMA ? Conjunct::linker : Conjunct::consonant;
      default:
        break;
    }
  }
  return u_getCombiningClass(c) != 0 ? Conjunct::extend : Conjunct::none;
#endif
}

Kind kindFromIcu(UChar32 c) {
  switch (u_getIntPropertyValue(c, UCHAR_GRAPHEME_CLUSTER_BREAK)) {
    case U_GCB_CONTROL:
    case U_GCB_CR:
    case U_GCB_LF:
      return Kind::control;
    case U_GCB_EXTEND:
      switch (conjunctOf(c)) {
        case Conjunct::linker:
          return Kind::virama;
        case Conjunct::extend:
          return Kind::linkingExtend;
        default:
          return Kind::extend;
      }
    case U_GCB_ZWJ:
      return Kind::zwj;
    case U_GCB_SPACING_MARK:
      return Kind::spacingMark;
    case U_GCB_PREPEND:
      return Kind::prepend;
    case U_GCB_REGIONAL_INDICATOR:
      return Kind::regionalIndicator;
    case U_GCB_L:
      return Kind::hangulL;
    case U_GCB_V:
      return Kind::hangulV;
    case U_GCB_T:
      return Kind::hangulT;
    case U_GCB_LV:
      return Kind::hangulLV;
    case U_GCB_LVT:
      return Kind::hangulLVT;
    default:
      if (u_hasBinaryProperty(c, UCHAR_EXTENDED_PICTOGRAPHIC)) return Kind::pictographic;
      return conjunctOf(c) == Conjunct::consonant ? Kind::consonant : Kind::other;
  }
}

Kind kindOf(char32_t c) {
  // Filled as scalars are met, so that starting up costs nothing. Threads that meet the same one
  // at once write the same value.
  static std::array<std::atomic<Kind>, 0x20000> known{};
  if (c >= known.size()) return kindFromIcu(static_cast<UChar32>(c));
  Kind kind = known[c].load(std::memory_order_relaxed);
  if (kind == Kind::unknown) {
    kind = kindFromIcu(static_cast<UChar32>(c));
    known[c].store(kind, std::memory_order_relaxed);
  }
  return kind;
}

bool isExtend(Kind kind) {
  return kind == Kind::extend || kind == Kind::linkingExtend || kind == Kind::virama;
}

bool isAttached(Kind kind) {
  return isExtend(kind) || kind == Kind::zwj || kind == Kind::spacingMark;
}

bool mayStandInConjunct(Kind kind) {
  return kind == Kind::linkingExtend || kind == Kind::virama || kind == Kind::zwj;
}

// Rules GB6 to GB8.
bool hangulJoins(Kind before, Kind next) {
  switch (before) {
    case Kind::hangulL:
      return next == Kind::hangulL || next == Kind::hangulV || next == Kind::hangulLV ||
             next == Kind::hangulLVT;
    case Kind::hangulLV:
    case Kind::hangulV:
      return next == Kind::hangulV || next == Kind::hangulT;
    case Kind::hangulLVT:
    case Kind::hangulT:
      return next == Kind::hangulT;
    default:
      return false;
  }
}

// One character in the making: takes scalars for as long as they belong to it.
class Cluster {
 public:
  explicit Cluster(Kind first) { take(first); }

  bool takes(Kind next) {
    if (!joins(next)) return false;
    take(next);
    return true;
  }

  // Whether no ASCII can belong to it (but the LF of a CR LF, which is not for this class).
  bool endsBeforeAscii() const { return last_ != Kind::prepend; }

 private:
  bool joins(Kind next) const {
    if (last_ == Kind::control || next == Kind::control) return false;  // GB4, GB5
    if (isAttached(next) || last_ == Kind::prepend) return true;        // GB9, GB9a, GB9b
    switch (next) {
      case Kind::other:
        return false;
      case Kind::consonant:  // GB9c
        return conjunct_ && linked_;
      case Kind::pictographic:  // GB11
        return pictographic_ && last_ == Kind::zwj;
      case Kind::regionalIndicator:  // GB12, GB13
        return halfFlag_;
      default:
        return hangulJoins(last_, next);
    }
  }

  void take(Kind next) {
    pictographic_ = next == Kind::pictographic ||
                    (pictographic_ && last_ != Kind::zwj && (isExtend(next) || next == Kind::zwj));
    conjunct_ = next == Kind::consonant || (conjunct_ && mayStandInConjunct(next));
    linked_ = conjunct_ && next != Kind::consonant && (linked_ || next == Kind::virama);
    halfFlag_ = next == Kind::regionalIndicator && !halfFlag_;
    last_ = next;
  }

  Kind last_ = Kind::unknown;
  bool pictographic_ = false;  // so far "pictographic extend*", perhaps with a ZWJ after it
  bool conjunct_ = false;      // so far a consonant and what may follow it in a conjunct
  bool linked_ = false;        // ... a virama among it
  bool halfFlag_ = false;
};

struct Walked {
  std::size_t bytes;
  std::size_t characters;
};

// Goes over characters from the start until `limit` of them have been passed.
Walked walk(std::string_view text, std::size_t limit) {
  constexpr std::size_t block = 64;
  if (text.empty() || limit == 0) return {0, 0};
  const Scalar first = scalarAt(text, 0);
  Cluster cluster(kindOf(first.value));
  std::size_t at = first.bytes, count = 0, retry = 0;  // `count` leaves out the one in the making
  while (at < text.size()) {
    // In a block of ASCII a character starts at each byte but an LF after a CR. A fixed trip count,
    // so that the compiler makes vectors of the loop.
    if (at >= retry && text.size() - at >= block && limit - count > block &&
        cluster.endsBeforeAscii()) {
      const char* s = text.data() + at;
      unsigned char high = 0, pairs = 0;
      for (std::size_t i = 0; i < block; ++i) {
        high = static_cast<unsigned char>(high | static_cast<unsigned char>(s[i]));
        const bool pair = (s[i] == '\n') & (s[i - 1] == '\r');
        pairs = static_cast<unsigned char>(pairs + pair);
      }
      if (high < 0x80) {
        at += block;
        count += block - pairs;
        cluster = Cluster(kindOf(static_cast<unsigned char>(text[at - 1])));
        continue;
      }
      retry = at + block;
    }
    const std::size_t start = at;
    const UChar32 c = decode(text, at);
    if (c == '\n' && text[start - 1] == '\r') continue;
    const Kind kind = c < 0 ? Kind::other : kindOf(static_cast<char32_t>(c));
    if (cluster.takes(kind)) continue;
    if (++count == limit) return {start, count};
    cluster = Cluster(kind);
  }
  return {at, count + 1};
}

// Whether a character starts with `next` after `previous`, whatever came before them.
bool surelyApart(char32_t previous, char32_t next) {
  if (previous == '\r' && next == '\n') return false;
  const Kind before = kindOf(previous), after = kindOf(next);
  if (before == Kind::control || after == Kind::control) return true;
  if (before == Kind::prepend || isAttached(after)) return false;
  switch (after) {
    case Kind::consonant:
      return !mayStandInConjunct(before);
    case Kind::pictographic:
      return before != Kind::zwj;
    case Kind::regionalIndicator:
      return before != Kind::regionalIndicator;
    default:
      return !hangulJoins(before, after);
  }
}

// The last place before `end` (must be > 0) that is a boundary whatever precedes it.
std::size_t sureBoundaryBefore(std::string_view text, std::size_t end) {
  Scalar next = scalarBefore(text, end);
  std::size_t at = end - next.bytes;
  while (at > 0) {
    const Scalar previous = scalarBefore(text, at);
    if (surelyApart(previous.value, next.value)) break;
    next = previous;
    at -= previous.bytes;
  }
  return at;
}

}  // namespace

std::size_t characterCount(std::string_view text) {
  return walk(text, std::numeric_limits<std::size_t>::max()).characters;
}

std::size_t prefixBytes(std::string_view text, std::size_t count) {
  return walk(text, count).bytes;
}

std::size_t suffixBytes(std::string_view text, std::size_t count) {
  std::size_t start = text.size();
  while (start > 0 && count > 0) {
    const std::size_t sure = sureBoundaryBefore(text, start);
    const std::string_view stretch = text.substr(sure, start - sure);
    const std::size_t characters = characterCount(stretch);
    if (characters > count) return text.size() - sure - prefixBytes(stretch, characters - count);
    count -= characters;
    start = sure;
  }
  return text.size() - start;
}

}  // namespace marbelot::text
