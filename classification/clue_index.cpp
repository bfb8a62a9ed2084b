#include "classification/clue_index.h"

#include "classification/line_shapes.h"

namespace marbelot {
namespace {

// Takes what one character of a pattern stands for off the line; false where it does not stand.
bool take(char c, std::string_view line, std::size_t& at) {
  const std::size_t start = at;
  switch (c) {
    case '%':
      at = skipName(line, at);
      return at > start;
    case '`':
      while (at < line.size() && (isName(line[at]) || line[at] == '.')) ++at;
      return at > start;
    case ' ':
      at = skipBlanks(line, at);
      return at > start;
    case '~':
      at = skipBlanks(line, at);
      return true;
    default:
      return at < line.size() && line[at++] == c;
  }
}

}  // namespace

ClueIndex::ClueIndex() {
  for (const Clue& clue : languageClues()) add(clue.pattern);
}

const ClueIndex& ClueIndex::shared() {
  static const ClueIndex index;
  return index;
}

void ClueIndex::add(std::string_view pattern) {
  const std::size_t place = clues_.size();
  CompiledClue clue{pattern, false, false, false};
  std::string_view& rest = clue.rest;
  if (rest.size() > 1 && rest.front() == '^') {
    clue.atLineStart = true;
    rest.remove_prefix(1);
  }
  if (rest.size() > 1 && rest.back() == '$') {
    clue.atLineEnd = true;
    rest.remove_suffix(1);
  }
  if (rest.front() == '%') {
    rest.remove_prefix(1);
    (clue.atLineStart ? anyFirstName_ : anyName_).push_back(place);
  } else if (isName(rest.front())) {
    const std::string_view word = rest.substr(0, skipName(rest, 0));
    rest.remove_prefix(word.size());
    byWord_[word].push_back(place);
  } else {
    clue.isMark = true;
    byMark_[static_cast<unsigned char>(rest.front())].push_back(place);
  }
  clues_.push_back(clue);
}

const ClueIndex::Places& ClueIndex::word(std::string_view word) const {
  const auto found = byWord_.find(word);
  return found == byWord_.end() ? none_ : found->second;
}

bool matches(const CompiledClue& clue, std::string_view line, std::size_t at, std::size_t codeEnd) {
  for (const char c : clue.rest) {
    if (!take(c, line, at)) return false;
  }
  // A clue that ends with a word ends where the word does.
  const bool endsWord = !clue.rest.empty() && isName(clue.rest.back());
  if (endsWord && at < line.size() && isName(line[at])) return false;
  return !clue.atLineEnd || at == codeEnd || at == line.size();
}

}  // namespace marbelot
