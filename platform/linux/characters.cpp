// Characters as a user counts them. ICU's break iterator knows all the rules and walks at some
// 70 MB/s, so it is asked only about the few characters whose extent takes more than a look at the
// next scalar: flags, emoji joined into one, Hangul letters, Indic conjuncts.
#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>

#include "platform/text.h"

namespace marbelot::text {
namespace {

// What a scalar does to the character boundaries beside it (UAX #29).
enum class Joining : std::uint8_t {
  none,      // never joins another `none`, so between two of them is always a boundary
  control,   // joins nothing; CR LF is looked after where it matters
  extends,   // belongs to what precedes it, unless that is a control
  entangled  // depends on more than its neighbour
};

Joining joiningFromIcu(UChar32 c) {
  switch (u_getIntPropertyValue(c, UCHAR_GRAPHEME_CLUSTER_BREAK)) {
    case U_GCB_OTHER:
    case U_GCB_LV:  // a whole syllable only joins the Hangul letters beside it
    case U_GCB_LVT:
      return Joining::none;
    case U_GCB_CONTROL:
    case U_GCB_CR:
    case U_GCB_LF:
      return Joining::control;
    case U_GCB_SPACING_MARK:
      return Joining::extends;
    case U_GCB_EXTEND:
      break;
    default:
      return Joining::entangled;
  }
  switch (u_getIntPropertyValue(c, UCHAR_INDIC_SYLLABIC_CATEGORY)) {
    case U_INSC_VIRAMA:  // may tie the next consonant to the previous one
    case U_INSC_INVISIBLE_STACKER:
    case U_INSC_PURE_KILLER:
      return Joining::entangled;
    default:
      return Joining::extends;
  }
}

Joining joiningOf(char32_t c) {
  if (c < 0x300) {
    const bool control = c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0xAD;
    return control ? Joining::control : Joining::none;
  }
  // Most of the world's text, spared the property lookup: Greek and Cyrillic letters, ideographs,
  // Hangul syllables.
  if ((c >= 0x370 && c < 0x483) || (c >= 0x4E00 && c < 0xA000) || (c >= 0xAC00 && c < 0xD7A4)) {
    return Joining::none;
  }
  return joiningFromIcu(static_cast<UChar32>(c));
}

bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

struct CloseIterator {
  void operator()(UBreakIterator* iterator) const { ubrk_close(iterator); }
};

UBreakIterator* characterIterator() {
  thread_local const std::unique_ptr<UBreakIterator, CloseIterator> iterator = [] {
    UErrorCode error = U_ZERO_ERROR;
    std::unique_ptr<UBreakIterator, CloseIterator> opened(
        ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &error));
    if (U_FAILURE(error)) opened.reset();
    return opened;
  }();
  return iterator.get();
}

// Walks a text character by character, forwards.
class Characters {
 public:
  explicit Characters(std::string_view text) : text_(text) {}

  // The end of the character that starts at `at` (must be < size).
  std::size_t endOf(std::size_t at) {
    Scalar scalar = scalarAt(text_, at);
    std::size_t end = at + scalar.bytes;
    if (end == text_.size()) return end;
    if (scalar.value < 0x80 && isAscii(text_[end])) {
      return end + (scalar.value == '\r' && text_[end] == '\n');
    }
    switch (joiningOf(scalar.value)) {
      case Joining::control:
        return end;
      case Joining::entangled:
        return endFromIcu(at);
      default:
        break;
    }
    for (; end < text_.size(); end += scalar.bytes) {
      if (isAscii(text_[end])) break;
      scalar = scalarAt(text_, end);
      const Joining joining = joiningOf(scalar.value);
      if (joining == Joining::entangled) return endFromIcu(at);
      if (joining != Joining::extends) break;
    }
    return end;
  }

 private:
  std::size_t endFromIcu(std::size_t at) {
    UBreakIterator* const iterator = characterIterator();
    if (!iterator) return at + scalarAt(text_, at).bytes;
    if (!open_ || at - base_ >= kWindow / 2) {
      base_ = at;
      const std::size_t window = std::min(text_.size() - base_, kWindow);
      UErrorCode error = U_ZERO_ERROR;
      UText bytes = UTEXT_INITIALIZER;
      utext_openUTF8(&bytes, text_.data() + base_, static_cast<std::int64_t>(window), &error);
      ubrk_setUText(iterator, &bytes, &error);
      utext_close(&bytes);
      open_ = U_SUCCESS(error);
      if (!open_) return at + scalarAt(text_, at).bytes;
    }
    const std::int32_t end = ubrk_following(iterator, static_cast<std::int32_t>(at - base_));
    return end == UBRK_DONE ? text_.size() : base_ + static_cast<std::size_t>(end);
  }

  static constexpr std::size_t kWindow = std::numeric_limits<std::int32_t>::max();

  std::string_view text_;
  std::size_t base_ = 0;  // where the iterator's text starts
  bool open_ = false;
};

struct Walked {
  std::size_t bytes;
  std::size_t characters;
};

// Goes over characters from the start until `limit` of them have been passed.
Walked walk(std::string_view text, std::size_t limit) {
  constexpr std::size_t kBlock = 64;
  Characters characters(text);
  std::size_t at = 0, count = 0, retry = 0;
  while (at < text.size() && count < limit) {
    // A block of ASCII with one more byte to look ahead at: a character ends after each byte but a
    // CR before an LF. Fixed trip counts, so that the compiler makes vectors of the loop. Staying
    // strictly below the limit leaves the end of a CR LF that the block cuts to the next step.
    if (at >= retry && text.size() - at > kBlock && limit - count > kBlock) {
      const char* s = text.data() + at;
      unsigned char high = static_cast<unsigned char>(s[kBlock]), pairs = 0;
      for (std::size_t i = 0; i < kBlock; ++i) {
        high = static_cast<unsigned char>(high | static_cast<unsigned char>(s[i]));
        pairs = static_cast<unsigned char>(pairs + ((s[i] == '\r') & (s[i + 1] == '\n')));
      }
      if (high < 0x80) {
        at += kBlock;
        count += kBlock - pairs;
        continue;
      }
      retry = at + kBlock;
    }
    at = characters.endOf(at);
    ++count;
  }
  return {at, count};
}

// Whether a character surely starts with `next` when it follows `previous`.
bool surelyApart(char32_t previous, char32_t next) {
  if (previous == '\r' && next == '\n') return false;
  const Joining before = joiningOf(previous), after = joiningOf(next);
  if (before == Joining::control || after == Joining::control) return true;
  if (after != Joining::none) return false;
  // Marks may stand between a virama and its consonant; those scripts start at U+0900.
  return before == Joining::none || (before == Joining::extends && next < 0x900);
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
