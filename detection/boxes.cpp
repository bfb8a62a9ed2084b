#include "detection/boxes.h"

#include <algorithm>
#include <string>

#include "platform/ascii.h"

namespace marbelot::detection {
namespace {

// How many of the last bytes of `before` are the longest of the phrases that it ends with.
template <typename Phrases>
std::size_t endingLength(std::string_view before, const Phrases& phrases) {
  std::size_t length = 0;
  for (const std::string_view phrase : phrases) {
    if (before.ends_with(phrase)) length = std::max(length, phrase.size());
  }
  const bool inside =
      length > 0 && length < before.size() && isAlnum(before[before.size() - length - 1]);
  return inside ? 0 : length;
}

// The bytes of "RR 2", "HC 68" or "Unit 2050", which a box's number alone does not tell, at the
// end.
std::size_t routeLength(std::string_view before) {
  std::string_view rest = before;
  while (rest.ends_with(' ') || rest.ends_with(',')) rest.remove_suffix(1);
  const std::size_t behind = rest.size();
  while (!rest.empty() && isDigit(rest.back())) rest.remove_suffix(1);
  if (rest.size() == behind || !rest.ends_with(' ')) return 0;
  constexpr std::string_view routes[] = {"rr ", "r.r. ", "r r ", "rural route ", "rte ",
                                         "hc ", "hcr ",  "psc ", "cmr ",         "unit "};
  const std::size_t length = endingLength(rest, routes);
  return length == 0 ? 0 : before.size() - rest.size() + length;
}

// A quick look at the last letters of "box", "bag", "postfach" and "bp".
bool mayFollowBox(std::string_view text, std::size_t digit, std::size_t floor) {
  std::size_t end = digit;
  if (end > floor && text[end - 1] == '#') --end;
  if (end < floor + 4 || text[end - 1] != ' ') return false;
  const char last[] = {lower(text[end - 4]), lower(text[end - 3]), lower(text[end - 2])};
  const std::string_view word(last, sizeof last);
  return word == "box" || word == "bag" || word == "ach" || word.ends_with("bp");
}

}  // namespace

Range boxAt(std::string_view text, std::size_t digit, std::size_t floor) {
  if (!mayFollowBox(text, digit, floor)) return {};
  const std::size_t from = digit - std::min<std::size_t>(digit - floor, 40);
  std::string before(text.substr(from, digit - from));
  for (char& c : before) c = lower(c);
  if (before.ends_with('#')) before.pop_back();
  constexpr std::string_view boxes[] = {
      "po box ",  "p.o. box ", "p.o.box ",     "p. o. box ",  "p o box ",  "post office box ",
      "gpo box ", "pobox ",    "private bag ", "locked bag ", "postfach ", "bp "};
  std::size_t length = endingLength(before, boxes);
  if (length == 0 && before.ends_with("box ")) {
    const std::string_view further = std::string_view(before).substr(0, before.size() - 4);
    const std::size_t route = routeLength(further);
    if (route > 0) length = route + 4;
  }
  if (length == 0) return {};
  const std::size_t start = from + before.size() - length;
  std::size_t end = digit;
  // German boxes are written in pairs: "12 34 56".
  while (isDigit(byteAt(text, end)) ||
         (byteAt(text, end) == ' ' && end - digit < 8 && isDigit(byteAt(text, end + 1)) &&
          isDigit(byteAt(text, end + 2)) && !isDigit(byteAt(text, end + 3)))) {
    ++end;
  }
  if (isAlpha(byteAt(text, end)) && !isAlnum(byteAt(text, end + 1))) ++end;
  return {start, end - start};
}

}  // namespace marbelot::detection
