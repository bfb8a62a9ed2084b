#include "detection/phone_filter.h"

#include <algorithm>
#include <optional>
#include <string>

#include "detection/tokens.h"
#include "platform/ascii.h"
#include "platform/text.h"

namespace marbelot::detection {
namespace {

// The length of one dash or blank that may stand in a phone number, and the ASCII it stands for.
struct Mark {
  char kind = '\0';
  std::size_t bytes = 0;
};

Mark markAt(std::string_view text, std::size_t at) {
  const char c = byteAt(text, at);
  if (c == ' ' || c == '-' || c == '.' || c == '/') return {c, 1};
  if (isAscii(c)) return {};
  if (c == '\xC2' && byteAt(text, at + 1) == '\xA0') return {' ', 2};  // no-break space
  const std::string_view three = text.substr(at, 3);
  if (three == "\u2010" || three == "\u2011" || three == "\u2013") return {'-', 3};
  if (three == "\u2009" || three == "\u202F") return {' ', 3};
  return {};
}

// Skips what may stand between two groups; '\0' when something else does.
char readSeparator(std::string_view text, std::size_t& at) {
  char kind = '\0';
  if (byteAt(text, at) == ')') {
    kind = '(';
    ++at;
  }
  // Three marks at most: " - ".
  for (int i = 0; i < 3; ++i) {
    const Mark mark = markAt(text, at);
    if (mark.bytes == 0) break;
    if (mark.kind == ' ' && kind == ' ') break;
    if (kind == '\0' || kind == ' ') kind = mark.kind;
    at += mark.bytes;
  }
  if (byteAt(text, at) == '(') {
    ++at;
    kind = '(';
  }
  return kind != '\0' && isDigit(byteAt(text, at)) ? kind : '\0';
}

std::string_view groupText(std::string_view text, const Stretch& stretch, std::size_t i) {
  return text.substr(stretch.groups[i].start, stretch.groups[i].length);
}

std::string digitsOf(std::string_view text, const Stretch& stretch) {
  std::string digits;
  for (std::size_t i = 0; i < stretch.count; ++i) digits += groupText(text, stretch, i);
  return digits;
}

int number(std::string_view digits) {
  int value = 0;
  for (const char c : digits.substr(0, 6)) value = value * 10 + (c - '0');
  return value;
}

// Whether groups i, i+1 and i+2 are a date.
bool isDate(std::string_view text, const Stretch& stretch, std::size_t i) {
  const char separator = stretch.groups[i + 1].separator;
  if (separator != stretch.groups[i + 2].separator || separator == '(') return false;
  const std::string_view a = groupText(text, stretch, i);
  const std::string_view b = groupText(text, stretch, i + 1);
  const std::string_view c = groupText(text, stretch, i + 2);
  const auto isYear = [](std::string_view y) {
    return y.size() == 4 && number(y) >= 1000 && number(y) < 2200;
  };
  const auto fits = [](std::string_view g, int most) {
    return g.size() <= 2 && number(g) >= 1 && number(g) <= most;
  };
  if (isYear(a)) return fits(b, 12) && fits(c, 31);
  return (fits(a, 31) && fits(b, 12) && isYear(c)) || (fits(a, 12) && fits(b, 31) && isYear(c));
}

bool hasForeignShape(std::string_view text, const Stretch& stretch) {
  std::size_t dots = 0;
  std::size_t slashes = 0;
  bool octets = stretch.count == 4;
  bool thousands = stretch.count > 1;
  bool single = false;
  for (std::size_t i = 0; i < stretch.count; ++i) {
    const Stretch::Group& group = stretch.groups[i];
    dots += group.separator == '.';
    slashes += group.separator == '/';
    octets = octets && group.length <= 3 && number(groupText(text, stretch, i)) <= 255;
    single = single || group.length == 1;
    thousands = thousands && (i == 0 ? group.length <= 3 : group.length == 3);
    if (i + 2 < stretch.count && isDate(text, stretch, i)) return true;
  }
  const bool trunk = text[stretch.groups[0].start] == '0';
  if (slashes > 1) return true;
  if (dots > 0) {
    if (octets && dots == 3) return true;  // 192.168.100.200
    if (single) return true;               // 10.0.19041.1
    if (dots == 1 && stretch.count == 2 && !trunk) return true;
    if (thousands && dots + 1 == stretch.count && !trunk) return true;
  }
  // A book: 978-3-16-148410-0, 0-306-40615-2.
  const std::string_view first = groupText(text, stretch, 0);
  if (stretch.digits == 13 && (first.starts_with("978") || first.starts_with("979"))) return true;
  if (stretch.count > 2 && stretch.groups[stretch.count - 1].length == 1) return true;
  if (stretch.count == 1) return stretch.digits > 12 || (stretch.digits != 10 && !trunk);
  return stretch.digits > 15 && !first.starts_with("00") && !first.starts_with("011");
}

// Whether the word announces a number to dial.
bool isPhoneWord(const std::string& word) {
  static const WordSet phones(
      "tel telephone telefon phone fon mobile mobil cell handy fax call ruf dial ring whatsapp");
  return phones.has(word);
}

// Whether the words before say what the number counts, and it is no telephone.
bool isIntroducedAsOther(std::string_view text, std::size_t start) {
  static const WordSet others(
      "order orders invoice isbn issn ref reference id account acct tracking ticket case serial "
      "sku part version build vat iban card pin bestellung rechnung kunde commande facture siret "
      "upc ean imei doi pmid issue bug article timestamp epoch amount sum total");
  std::size_t at = start;
  for (int words = 0; words < 3 && at > 0; ++words) {
    const std::size_t bound = start - std::min<std::size_t>(start, 48);
    while (at > bound && isAscii(text[at - 1]) && !isAlpha(text[at - 1]) && text[at - 1] != '\n') {
      --at;
    }
    std::string word;
    while (at > bound && isAlpha(text[at - 1])) word += lower(text[--at]);
    std::reverse(word.begin(), word.end());
    if (word.empty() || isPhoneWord(word)) return false;
    if (others.has(word)) return true;
  }
  return false;
}

bool isCurrency(char32_t c) { return c == '$' || (c >= 0xA2 && c <= 0xA5) || c == 0x20AC; }

// Whether what stands before the mark at `at` lets a number begin behind it: "Tel.:+49 30",
// "電話:03-1234", but a single group only behind a plus or a word for telephones.
bool maySeparate(std::string_view text, std::size_t at, const Stretch& stretch) {
  const char mark = text[at];
  if (stretch.plus && (mark == ':' || mark == ',' || mark == '=')) return true;
  const std::size_t end = at - (mark == ':' && at > 0 && text[at - 1] == '.');
  if (end == 0 || !text::isLetter(text::scalarBefore(text, end).value)) return false;
  if (stretch.count > 1) return true;
  const std::size_t word = wordStart(text, end, 0);
  return mark == ':' && isPhoneWord(tokenAt(text, word).lower);
}

bool startsFreely(std::string_view text, const Stretch& stretch) {
  if (stretch.start == 0) return true;
  const char32_t before = text::scalarBefore(text, stretch.start).value;
  if (text::isNumber(before) || isCurrency(before)) return false;
  if (text::isLetter(before)) return before >= 0x2E80;  // scripts without spaces
  constexpr std::u32string_view glue = U"#_\\-%&@^~*+";
  if (glue.find(before) != std::u32string_view::npos) return false;
  constexpr std::u32string_view afterWords = U".,:/=";
  if (afterWords.find(before) != std::u32string_view::npos) {
    return maySeparate(text, stretch.start - 1, stretch);
  }
  if (before == ' ' && stretch.start > 1 && !stretch.plus) {
    const char32_t further = text::scalarBefore(text, stretch.start - 1).value;
    if (isCurrency(further) || further == '#') return false;
  }
  return true;
}

bool endsFreely(std::string_view text, std::size_t end) {
  if (end >= text.size()) return true;
  const char32_t after = text::scalarAt(text, end).value;
  if (text::isNumber(after) || isCurrency(after)) return false;
  if (text::isLetter(after)) return after == 'x' || after >= 0x2E80;
  constexpr std::u32string_view glue = U"_%=@+*^°";
  if (glue.find(after) != std::u32string_view::npos) return false;
  const char next = byteAt(text, end + 1);
  constexpr std::string_view join = ".,:/-";
  if (after < 0x80 && join.find(static_cast<char>(after)) != std::string_view::npos) {
    return !isDigit(next) && !(after == '-' && isAlpha(next)) && !(after == '/' && isAlpha(next));
  }
  const std::string_view rest = text.substr(end, 4);
  return !(after == ' ' && (rest.starts_with(" %") || rest.starts_with(" €") || rest == " EUR" ||
                            rest == " USD" || rest == " GBP"));
}

void shorten(Stretch& stretch, std::size_t count) {
  for (; stretch.count > count; --stretch.count) {
    stretch.digits -= stretch.groups[stretch.count - 1].length;
  }
}

}  // namespace

Stretch readStretch(std::string_view text, std::size_t digit, std::size_t floor) {
  Stretch stretch;
  stretch.start = digit;
  const auto take = [&](char c) {
    const bool there = stretch.start > floor && text[stretch.start - 1] == c;
    stretch.start -= there;
    return there;
  };
  stretch.plus = take('+');
  if (take('(') && !stretch.plus) stretch.plus = take('+');

  std::size_t at = digit;
  char separator = '\0';
  do {
    std::size_t end = at;
    while (end < text.size() && isDigit(text[end]) && end - at <= Stretch::mostDigits) ++end;
    const bool full = stretch.count == Stretch::mostGroups ||
                      (stretch.count > 0 && stretch.digits + (end - at) > Stretch::mostDigits);
    if (full) {
      // Rather between two numbers than inside the second.
      std::size_t whole = stretch.count;
      while (whole > 0 && separator != ' ') separator = stretch.groups[--whole].separator;
      if (whole > 0) shorten(stretch, whole);
      break;
    }
    stretch.groups[stretch.count++] = {at, end - at, separator};
    stretch.digits += end - at;
    at = end;
    separator = readSeparator(text, at);
  } while (separator != '\0');
  return stretch;
}

std::size_t fewDigitsEnd(std::string_view text, std::size_t digit) {
  std::size_t digits = 0;
  std::size_t marks = 0;
  for (std::size_t at = digit; at < text.size(); ++at) {
    const char c = text[at];
    if (isDigit(c)) {
      if (++digits == 7) return 0;
      marks = 0;
    } else if ((isAscii(c) && std::string_view(" -.()/").find(c) == std::string_view::npos) ||
               ++marks > 6) {
      return at;
    }
  }
  return text.size();
}

bool isPlausible(std::string_view text, const Stretch& stretch) {
  if (stretch.digits < 7 || stretch.digits > Stretch::mostDigits) return false;
  if (!startsFreely(text, stretch) || !endsFreely(text, stretch.end())) return false;
  if (stretch.plus) return stretch.digits <= 16 && text[stretch.groups[0].start] != '0';
  return !hasForeignShape(text, stretch) && !isIntroducedAsOther(text, stretch.start);
}

std::size_t lastOfColumn(const Stretch& stretch, bool northAmerican) {
  constexpr std::size_t fewest = 3;
  const std::size_t most = northAmerican ? 2 : 1;
  std::size_t count = 0;
  while (count < stretch.count && stretch.groups[count].length <= most) ++count;
  return !stretch.plus && count >= fewest ? stretch.groups[count - 1].start : 0;
}

std::size_t resumption(std::string_view text, const Stretch& stretch) {
  const auto* const last = stretch.groups.begin() + stretch.count;
  const auto singles = std::count_if(stretch.groups.begin(), last,
                                     [](const Stretch::Group& group) { return group.length == 1; });
  const auto* const next = std::find_if(
      stretch.groups.begin() + 1, std::max(last, stretch.groups.begin() + 1),
      [](const Stretch::Group& group) { return group.separator == ' ' || group.separator == '('; });
  // Columns of single digits hold no numbers to dial.
  if (singles < 3 && next < last) return next->start;
  std::size_t end = stretch.end();
  while (end < text.size() && isDigit(text[end])) ++end;
  return end;
}

bool isNationalFormat(std::string_view text, const Stretch& stretch, bool northAmerican) {
  const auto& groups = stretch.groups;
  if (stretch.plus || stretch.count < 2) return false;
  const bool bracket = text[stretch.start] == '(' && groups[1].separator == '(';
  const char first = text[groups[0].start];
  const auto dashed = [&](std::size_t i) { return groups[i].separator == '-'; };
  if (northAmerican) {
    return stretch.count == 3 && groups[0].length == 3 && groups[1].length == 3 &&
           groups[2].length == 4 && first >= '2' && (bracket || dashed(1)) && dashed(2);
  }
  // The trunk prefix is dialled before the code of the area.
  if (first != '0' || groups[0].length < 3 || stretch.digits < 10 || stretch.digits > 11) {
    return false;
  }
  return bracket || (stretch.count == 3 && dashed(1) && dashed(2));
}

bool isNorthAmerican(const std::string& region) {
  static const WordSet regions(
      "US CA AG AI AS BB BM BS DM DO GD GU JM KN KY LC MP MS PR SX TC TT VC VG VI");
  return regions.has(region);
}

bool cutToNorthAmerican(std::string_view text, Stretch& stretch) {
  const std::size_t wanted = text[stretch.groups[0].start] == '1' ? 11 : 10;
  std::size_t digits = 0;
  for (std::size_t i = 0; i < stretch.count && digits < wanted; ++i) {
    digits += stretch.groups[i].length;
    if (digits != wanted) continue;
    const char after = i + 1 < stretch.count ? stretch.groups[i + 1].separator : ' ';
    stretch.count = i + 1;
    stretch.digits = wanted;
    const std::string number = digitsOf(text, stretch).substr(wanted - 10);
    // The codes of areas and exchanges start with 2 to 9.
    return (after == ' ' || after == '(') && number[0] >= '2' && number[3] >= '2';
  }
  return false;
}

bool cutToNational(Stretch& stretch) {
  // No national number is longer than eleven digits where it is dialled with a leading zero.
  constexpr std::size_t longest = 11;
  if (stretch.plus || stretch.digits <= longest) return false;
  std::size_t digits = 0;
  std::size_t fitting = 0;
  for (std::size_t i = 0; i + 1 < stretch.count; ++i) {
    digits += stretch.groups[i].length;
    if (digits > longest) break;
    if (stretch.groups[i + 1].separator == ' ' && digits >= 7) fitting = i + 1;
  }
  if (fitting == 0) return false;
  shorten(stretch, fitting);
  return true;
}

}  // namespace marbelot::detection
