#include "updates/version.h"

#include <algorithm>
#include <vector>

#include "platform/ascii.h"

namespace marbelot {
namespace {

enum class Kind { number, letters, separator };

struct Part {
  Kind kind;
  std::string_view text;
};

Kind kindOf(char c) {
  if (isDigit(c)) return Kind::number;
  return isAlpha(c) || !isAscii(c) ? Kind::letters : Kind::separator;
}

// Separators only divide.
std::vector<Part> partsOf(std::string_view version) {
  std::vector<Part> parts;
  for (std::size_t at = 0; at < version.size();) {
    const Kind kind = kindOf(version[at]);
    std::size_t end = at + 1;
    while (end < version.size() && kindOf(version[end]) == kind) ++end;
    if (kind != Kind::separator) parts.push_back({kind, version.substr(at, end - at)});
    at = end;
  }
  return parts;
}

std::weak_ordering compareNumbers(std::string_view a, std::string_view b) {
  const auto significant = [](std::string_view digits) {
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
  };
  a = significant(a);
  b = significant(b);
  if (a.size() != b.size()) return a.size() <=> b.size();
  return a.compare(b) <=> 0;
}

}  // namespace

std::weak_ordering compareVersions(std::string_view a, std::string_view b) {
  const auto partsA = partsOf(a), partsB = partsOf(b);
  constexpr Part zero{Kind::number, "0"};
  for (std::size_t i = 0; i < std::max(partsA.size(), partsB.size()); ++i) {
    const Part& one = i < partsA.size() ? partsA[i] : zero;
    const Part& other = i < partsB.size() ? partsB[i] : zero;
    // Letters are older than a number, and than the end.
    if (one.kind != other.kind)
      return one.kind == Kind::letters ? std::weak_ordering::less : std::weak_ordering::greater;
    const std::weak_ordering order = one.kind == Kind::number
                                         ? compareNumbers(one.text, other.text)
                                         : std::weak_ordering(one.text <=> other.text);
    if (order != 0) return order;
  }
  return std::weak_ordering::equivalent;
}

}  // namespace marbelot
