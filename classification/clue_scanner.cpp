// Reads a text once and counts the clues in it.
#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "classification/language_clues.h"
#include "classification/line_reader.h"
#include "classification/line_shapes.h"

namespace marbelot {
namespace {

// More of the same says little more.
constexpr int kCountsAtMost = 3;

// What a table of literals is worth: beyond doubt, unless another language is.
constexpr int kTable = 19;

// A clue taken apart: what it begins with finds it, the rest is compared.
struct CompiledClue {
  std::string_view head;
  std::string_view rest;
  bool atLineStart;
  bool atLineEnd;
  bool headIsName;  // any name will do
  const Clue* clue;
};

class ClueIndex {
 public:
  ClueIndex() {
    for (const auto table : {compiledClues(), scriptingClues(), markupClues()}) {
      for (const Clue& clue : table) add(clue);
    }
  }

  const std::vector<CompiledClue>& clues() const { return clues_; }
  // Those that begin with any name; anywhere, and at the start of a line only.
  const std::vector<std::size_t>& anyName() const { return anyName_; }
  const std::vector<std::size_t>& anyFirstName() const { return anyFirstName_; }
  const std::vector<std::size_t>& at(char c) const {
    return byByte_[static_cast<unsigned char>(c) & 0x7F];
  }
  const std::vector<std::size_t>* at(std::string_view word) const {
    const auto found = byWord_.find(word);
    return found == byWord_.end() ? nullptr : &found->second;
  }

 private:
  void add(const Clue& clue) {
    CompiledClue compiled{{}, clue.pattern, false, false, false, &clue};
    std::string_view& rest = compiled.rest;
    if (rest.size() > 1 && rest.front() == '^') {
      compiled.atLineStart = true;
      rest.remove_prefix(1);
    }
    if (rest.size() > 1 && rest.back() == '$') {
      compiled.atLineEnd = true;
      rest.remove_suffix(1);
    }
    const std::size_t position = clues_.size();
    if (rest.front() == '%') {
      compiled.headIsName = true;
      rest.remove_prefix(1);
      (compiled.atLineStart ? anyFirstName_ : anyName_).push_back(position);
    } else if (isName(rest.front())) {
      compiled.head = rest.substr(0, skipName(rest, 0));
      rest.remove_prefix(compiled.head.size());
      byWord_[compiled.head].push_back(position);
    } else {
      byByte_[static_cast<unsigned char>(rest.front())].push_back(position);
    }
    clues_.push_back(compiled);
  }

  std::vector<CompiledClue> clues_;
  std::unordered_map<std::string_view, std::vector<std::size_t>> byWord_;
  std::array<std::vector<std::size_t>, 128> byByte_;
  std::vector<std::size_t> anyName_, anyFirstName_;
};

constexpr std::size_t kAnywhere = static_cast<std::size_t>(-1);

// Whether `pattern` stands at `at`, and ends at `end` unless it may end anywhere.
bool matches(std::string_view pattern, std::string_view line, std::size_t at, std::size_t end) {
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    switch (pattern[i]) {
      case '%': {
        const std::size_t nameEnd = skipName(line, at);
        if (nameEnd == at) return false;
        at = nameEnd;
        break;
      }
      case ' ':
        if (at >= line.size() || !isBlank(line[at])) return false;
        at = skipBlanks(line, at);
        break;
      case '`': {
        const std::size_t start = at;
        while (at < line.size() && (isName(line[at]) || line[at] == '.')) ++at;
        if (at == start) return false;
        break;
      }
      case '~':
        at = skipBlanks(line, at);
        break;
      default:
        if (at >= line.size() || line[at] != pattern[i]) return false;
        ++at;
        // A clue that ends with a word ends where the word does.
        if (i + 1 == pattern.size() && isName(pattern[i]) && at < line.size() && isName(line[at])) {
          return false;
        }
    }
  }
  return end == kAnywhere || at == end || at == line.size();
}

class ClueScanner {
 public:
  explicit ClueScanner(std::string_view text)
      : index_(sharedIndex()), counts_(index_.clues().size()), text_(text) {}

  ClueScores scan(Comments comments) {
    LineReader reader(text_);
    while (const auto line = reader.next()) readLine(*line);
    if (comments == Comments::readWhenMost && scores_.lines * 3 < scores_.commentLines) {
      const std::vector<std::string_view> examples = std::exchange(comments_, {});
      for (const std::string_view example : examples) readLine(example);
    }
    for (std::size_t i = 0; i < counts_.size(); ++i) {
      const int count = std::min<int>(counts_[i], kCountsAtMost);
      if (count == 0) continue;
      for (const ClueWeight& weight : index_.clues()[i].clue->weights) {
        scores_.points[static_cast<std::size_t>(weight.language)] += weight.points * count;
      }
    }
    scores_.isTable = literals_ >= 3 && literals_ * 4 >= scores_.lines * 3;
    if (scores_.isTable) addTable();
    return scores_;
  }

 private:
  // Tables of strings and names look alike in most languages: what else is there tells which it
  // is, and where there is nothing else most are from Python.
  void addTable() {
    const auto* best = std::max_element(scores_.points.begin(), scores_.points.end());
    auto language = static_cast<Language>(best - scores_.points.begin());
    if (scores_.of(Language::javaScript) == *best) language = Language::javaScript;
    const bool describes = language == Language::html || language == Language::css ||
                           language == Language::json || language == Language::sql ||
                           language == Language::shell;
    add(*best > 0 && !describes ? language : Language::python, kTable);
  }

  static const ClueIndex& sharedIndex() {
    static const ClueIndex index;
    return index;
  }

  void readLine(std::string_view line) {
    const std::size_t start = skipBlanks(line, 0);
    std::size_t end = line.size();
    while (end > start && isBlank(line[end - 1])) --end;
    line = line.substr(start, end - start);
    if (line.empty()) return;
    if (!closer_.empty()) {
      ++scores_.commentLines;
      if (line.find(closer_) != line.npos) closer_ = {};
      return;
    }
    if (endsBlockComment(line)) {
      discardLines();
      ++scores_.commentLines;
      return;
    }
    if (isComment(line)) {
      ++scores_.commentLines;
      const std::size_t marker = line.find_first_not_of("/#*!");
      if (closer_.empty() && marker != line.npos && marker > 0) {
        comments_.push_back(line.substr(marker));
      }
      return;
    }
    readCode(line, start);
  }

  // Copies begin and end anywhere: a comment may have no start or no end.
  bool isComment(std::string_view line) {
    if (line.starts_with("//")) return true;
    if (line.starts_with("/*")) {
      if (line.find("*/", 2) == line.npos) closer_ = "*/";
      return true;
    }
    if (line.front() == '*' && (line.size() == 1 || isBlank(line[1]) || line[1] == '/')) {
      return line.back() != '{' && line.back() != ',';
    }
    if (line.starts_with("-- ")) return true;
    if (line.front() == '#') return line.size() == 1 || isHashComment(line);
    return isLongString(line, "\"\"\"") || isLongString(line, "'''");
  }

  // The end of a comment that began before the piece; a time table's "*/5" ends none.
  bool endsBlockComment(std::string_view line) {
    if (metBlockComment_) return false;
    const std::size_t open = line.find("/*");
    metBlockComment_ = open != line.npos;
    if (!line.ends_with("*/") || (metBlockComment_ && open + 2 < line.size())) return false;
    metBlockComment_ = true;
    return true;
  }

  // What was read so far turns out to be a comment.
  void discardLines() {
    scores_.commentLines += scores_.lines;
    scores_.lines = scores_.proseLines = scores_.foreignLines = scores_.endedLines = 0;
    scores_.taggedLines = literals_ = 0;
  }

  // Python's documentation. A piece may begin within it.
  bool isLongString(std::string_view line, std::string_view quotes) {
    const std::size_t open = line.find(quotes);
    if (open == line.npos) return false;
    if (open > 1) {
      const bool ends = !metLongString_ && open + quotes.size() == line.size() &&
                        (isName(line[open - 1]) || line[open - 1] == '.');
      if (ends) discardLines();
      metLongString_ = true;
      return ends;
    }
    codeEnd_ = line.size();
    count(line, 0, true);
    if (line.size() == quotes.size() && !metLongString_ && endsLongString(quotes)) {
      discardLines();
    } else if (line.find(quotes, open + quotes.size()) == line.npos) {
      closer_ = quotes;
    }
    metLongString_ = true;
    return true;
  }

  // Of quotes alone on their line, the first of the text. What they open follows a colon or an
  // assignment; where the next ones open a text on their line, these have closed one.
  bool endsLongString(std::string_view quotes) const {
    const std::size_t first = text_.find(quotes);
    const std::size_t before =
        text_.find_last_not_of(" \t\r\n", first == 0 ? text_.npos : first - 1);
    if (first > 0 && before < first) {
      return std::string_view(":=(,[\\").find(text_[before]) == std::string_view::npos;
    }
    const std::size_t next = text_.find(quotes, first + quotes.size());
    if (next != text_.npos && next + quotes.size() < text_.size()) {
      const char opened = text_[next + quotes.size()];
      if (isName(opened)) return true;
    }
    return isOdd(quotes);
  }

  bool isOdd(std::string_view quotes) const {
    bool odd = false;
    for (std::size_t at = text_.find(quotes); at != text_.npos;
         at = text_.find(quotes, at + quotes.size())) {
      odd = !odd;
    }
    return odd;
  }

  static bool isHashComment(std::string_view line) {
    if (line[1] == '!') return line.find('[') != 2;
    if (!isBlank(line[1])) return line[1] == '#' || line[1] == '-' || line[1] == '=';
    const std::string_view rest = line.substr(skipBlanks(line, 1));
    for (const std::string_view directive :
         {"include", "define", "if", "endif", "else", "undef", "pragma", "error"}) {
      if (rest.starts_with(directive)) return false;
    }
    return true;
  }

  void count(std::string_view line, std::size_t at, bool first) {
    const char c = line[at];
    if (static_cast<unsigned char>(c) >= 0x80) return;
    for (const std::size_t i : index_.at(c)) tryClue(i, line, at, at, first);
  }

  void tryClue(std::size_t i, std::string_view line, std::size_t at, std::size_t rest, bool first) {
    const CompiledClue& clue = index_.clues()[i];
    if (clue.atLineStart && !first) return;
    if (!clue.head.empty() || clue.headIsName) at = rest;
    if (!matches(clue.rest, line, at, clue.atLineEnd ? codeEnd_ : kAnywhere)) return;
    if (counts_[i] < kCountsAtMost) ++counts_[i];
    metStartClue_ = metStartClue_ || clue.atLineStart;
  }

  void readCode(std::string_view line, std::size_t indent) {
    ++scores_.lines;
    codeEnd_ = endOfCode(line);
    if (std::string_view(";{}").find(line[codeEnd_ - 1]) != std::string_view::npos) {
      ++scores_.endedLines;
    }
    if (isLiterals(line)) ++literals_;
    if (line.front() == '<' || line.back() == '>') ++scores_.taggedLines;
    if (colonIndent_ != kNoIndent && indent >= colonIndent_ + 2) addBlock(indent);
    colonIndent_ = opensColonBlock(line) ? indent : kNoIndent;
    metStartClue_ = false;
    std::size_t words = 0, marks = 0;
    bool noMoreQuotes[2] = {false, false};
    for (std::size_t at = 0; at < line.size();) {
      const char c = line[at];
      if (isName(c)) {
        const std::size_t end = skipName(line, at);
        const std::string_view word = line.substr(at, end - at);
        if (const auto* clues = index_.at(word)) {
          for (const std::size_t i : *clues) tryClue(i, line, at, end, at == 0);
        }
        for (const std::size_t i : index_.anyName()) tryClue(i, line, at, end, at == 0);
        if (at == 0) {
          for (const std::size_t i : index_.anyFirstName()) tryClue(i, line, at, end, true);
        }
        if (!isDigit(c)) ++words;
        at = end;
        continue;
      }
      if (isBlank(c)) {
        const std::size_t next = skipBlanks(line, at);
        const std::string_view rest = line.substr(next);
        const bool isDashed = std::string_view(",;)").find(line[at - 1]) != std::string_view::npos;
        if (isDashed && rest.starts_with("-- ")) break;
        if (rest.starts_with("// ") || rest.starts_with("# ") || rest.starts_with("/* ")) break;
        at = next;
        continue;
      }
      count(line, at, at == 0);
      if (opensString(line, at) && !noMoreQuotes[c == '"']) {
        const std::size_t close = closingQuote(line, at);
        noMoreQuotes[c == '"'] = close == line.npos;
        at = close == line.npos ? at + 1 : close + 1;
        continue;
      }
      if (std::string_view("{}()[];=<>$&|*+_\\@#:/").find(c) != std::string_view::npos) ++marks;
      ++at;
    }
    if (words >= 5 && marks * 8 <= words && !metStartClue_) ++scores_.proseLines;
    if (isBareStatement(line)) addBare();
    if (isSelector(line)) add(Language::css, selectors_++ < kCountsAtMost ? 4 : 0);
    if (holdsPascalCall(line) && pascalCalls_++ < kCountsAtMost) addPascalCall();
    if (isForeign(line)) ++scores_.foreignLines;
  }

  // Neither an apostrophe nor the name of a lifetime does.
  static bool opensString(std::string_view line, std::size_t at) {
    if (line[at] == '"') return true;
    if (line[at] != '\'') return false;
    const char before = at > 0 ? line[at - 1] : ' ';
    return !isName(before) && before != '&' && before != '<';
  }

  static bool opensColonBlock(std::string_view line) {
    if (line.back() != ':') return false;
    const std::string_view word = line.substr(0, skipName(line, 0));
    for (const std::string_view opener : {"if", "elif", "else", "for", "while", "def", "class",
                                          "with", "try", "except", "finally", "async", "match"}) {
      if (word == opener) return true;
    }
    return false;
  }

  void addBlock(std::size_t indent) {
    if (blocks_++ < kCountsAtMost) add(Language::python, indent % 4 == 0 ? 3 : 1);
  }

  void addBare() {
    if (bare_++ >= kCountsAtMost) return;
    add(Language::python, 1);
    add(Language::ruby, 1);
  }

  void addPascalCall() {
    add(Language::cSharp, 2);
    add(Language::go, 1);
    add(Language::java, -1);
    add(Language::javaScript, -1);
    add(Language::typeScript, -1);
  }

  void add(Language language, int points) {
    scores_.points[static_cast<std::size_t>(language)] += points;
  }

  static constexpr std::size_t kNoIndent = static_cast<std::size_t>(-1);

  const ClueIndex& index_;
  std::vector<std::uint8_t> counts_;
  std::string_view text_;
  ClueScores scores_;
  std::vector<std::string_view> comments_;  // without their markers
  std::string_view closer_;                 // what ends the comment or the long string that is open
  std::size_t codeEnd_ = 0;                 // of the line that is read, before a comment
  std::size_t literals_ = 0;                // lines of a table
  std::size_t colonIndent_ = kNoIndent;     // of the last line, if it ended in a colon
  int blocks_ = 0, bare_ = 0, selectors_ = 0, pascalCalls_ = 0;
  bool metLongString_ = false, metBlockComment_ = false;
  bool metStartClue_ = false;  // on this line
};

}  // namespace

ClueScores weighClues(std::string_view text, Comments comments) {
  return ClueScanner(text).scan(comments);
}

}  // namespace marbelot
