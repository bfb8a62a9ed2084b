// Reads a text once and counts the clues in it.
#include <algorithm>
#include <string_view>

#include "classification/clue_index.h"
#include "classification/comment_reader.h"
#include "classification/language_clues.h"
#include "classification/line_reader.h"
#include "classification/line_shapes.h"

namespace marbelot {
namespace {

constexpr std::uint8_t countsAtMost = 3;

void countOne(std::uint8_t& count) { count = std::min<std::uint8_t>(count + 1, countsAtMost); }

// Where a comment ends that fills the rest of the line behind the blanks at `at`.
bool beginsComment(std::string_view line, std::size_t at) {
  const std::string_view rest = line.substr(skipBlanks(line, at));
  if (rest.starts_with("// ") || rest.starts_with("# ") || rest.starts_with("/* ")) return true;
  const bool endsColumn = std::string_view(",;)").find(line[at - 1]) != std::string_view::npos;
  return endsColumn && rest.starts_with("-- ");
}

// Neither an apostrophe nor the name of a lifetime does.
bool opensString(std::string_view line, std::size_t at) {
  if (line[at] == '"') return true;
  if (line[at] != '\'') return false;
  const char before = at > 0 ? line[at - 1] : ' ';
  return !isName(before) && before != '&' && before != '<';
}

bool opensColonBlock(std::string_view line) {
  if (line.back() != ':') return false;
  const std::string_view word = line.substr(0, skipName(line, 0));
  for (const std::string_view opener : {"if", "elif", "else", "for", "while", "def", "class",
                                        "with", "try", "except", "finally", "async", "match"}) {
    if (word == opener) return true;
  }
  return false;
}

class ClueScanner {
 public:
  explicit ClueScanner(std::string_view text) : comments_(text) {
    counts_.clues.resize(index_.size());
    LineReader reader(text);
    while (const auto line = reader.next()) readLine(*line);
    if (counts_.lines * 3 >= counts_.commentLines) return;
    const std::vector<std::string_view> examples = comments_.examples();
    for (const std::string_view example : examples) readLine(example);
  }

  const ClueCounts& counts() const { return counts_; }

 private:
  void readLine(std::string_view line) {
    const std::size_t indent = skipBlanks(line, 0);
    std::size_t end = line.size();
    while (end > indent && isBlank(line[end - 1])) --end;
    line = line.substr(indent, end - indent);
    if (line.empty()) return;
    const CommentReader::Line kind = comments_.read(line);
    if (kind == CommentReader::Line::code) return readCode(line, indent);
    if (kind == CommentReader::Line::longString || kind == CommentReader::Line::endOfLongString) {
      codeEnd_ = line.size();
      countMarks(line, 0);
    }
    if (kind == CommentReader::Line::endOfComment || kind == CommentReader::Line::endOfLongString) {
      discardLines();
    }
    ++counts_.commentLines;
  }

  // What was read so far turns out to be a comment.
  void discardLines() {
    counts_.commentLines += counts_.lines;
    counts_.lines = counts_.proseLines = counts_.foreignLines = counts_.taggedLines = 0;
  }

  void readCode(std::string_view line, std::size_t indent) {
    ++counts_.lines;
    if (line.front() == '<' || line.back() == '>') ++counts_.taggedLines;
    if (isForeign(line)) ++counts_.foreignLines;
    readShapes(line, indent);
    readClues(line);
  }

  void readShapes(std::string_view line, std::size_t indent) {
    if (colonIndent_ != noIndent && indent >= colonIndent_ + 2) {
      countShape(indent % 4 == 0 ? Shape::fourDeepBlock : Shape::colonBlock);
    }
    colonIndent_ = opensColonBlock(line) ? indent : noIndent;
    if (isBareStatement(line)) countShape(Shape::bareStatement);
    if (isSelector(line)) countShape(Shape::selector);
    if (holdsPascalCall(line)) countShape(Shape::pascalCall);
  }

  void readClues(std::string_view line) {
    codeEnd_ = endOfCode(line);
    metStartClue_ = false;
    std::size_t words = 0, marks = 0;
    bool noMoreQuotes[2] = {false, false};
    for (std::size_t at = 0; at < line.size();) {
      const char c = line[at];
      if (isName(c)) {
        if (!isDigit(c)) ++words;
        at = countWord(line, at);
      } else if (isBlank(c)) {
        if (beginsComment(line, at)) break;
        at = skipBlanks(line, at);
      } else {
        countMarks(line, at);
        if (std::string_view("{}()[];=<>$&|*+_\\@#:/").find(c) != std::string_view::npos) ++marks;
        at = opensString(line, at) ? skipString(line, at, noMoreQuotes[c == '"']) : at + 1;
      }
    }
    if (words >= 5 && marks * 8 <= words && !metStartClue_) ++counts_.proseLines;
  }

  // Returns what follows the string, or its quote when nothing closes it.
  static std::size_t skipString(std::string_view line, std::size_t at, bool& noMore) {
    const std::size_t close = noMore ? line.npos : closingQuote(line, at);
    noMore = close == line.npos;
    return noMore ? at + 1 : close + 1;
  }

  // Returns the end of the word.
  std::size_t countWord(std::string_view line, std::size_t at) {
    const std::size_t end = skipName(line, at);
    count(index_.word(line.substr(at, end - at)), line, end, at == 0);
    count(index_.anyName(), line, end, at == 0);
    if (at == 0) count(index_.anyFirstName(), line, end, true);
    return end;
  }

  void countMarks(std::string_view line, std::size_t at) {
    if (static_cast<unsigned char>(line[at]) < 0x80)
      count(index_.mark(line[at]), line, at, at == 0);
  }

  void count(const ClueIndex::Places& places, std::string_view line, std::size_t at, bool isFirst) {
    for (const std::size_t place : places) {
      const CompiledClue& clue = index_[place];
      if (clue.atLineStart && !isFirst) continue;
      if (!matches(clue, line, at, codeEnd_)) continue;
      countOne(counts_.clues[place]);
      metStartClue_ = metStartClue_ || clue.atLineStart;
    }
  }

  void countShape(Shape shape) { countOne(counts_.shapes[static_cast<std::size_t>(shape)]); }

  static constexpr std::size_t noIndent = static_cast<std::size_t>(-1);

  const ClueIndex& index_ = ClueIndex::shared();
  CommentReader comments_;
  ClueCounts counts_;
  std::size_t codeEnd_ = 0;             // of the line that is read, before a comment
  std::size_t colonIndent_ = noIndent;  // of the last line, if it ended in a colon
  bool metStartClue_ = false;           // on this line
};

void add(ClueScores& scores, const ClueWeights& weights, int count) {
  for (const ClueWeight& weight : weights) {
    scores[static_cast<std::size_t>(weight.language)] += weight.points * count;
  }
}

}  // namespace

ClueCounts countClues(std::string_view text) { return ClueScanner(text).counts(); }

ClueScores weighClues(const ClueCounts& counts, std::size_t without) {
  ClueScores scores{};
  for (std::size_t i = 0; i < counts.clues.size(); ++i) {
    if (counts.clues[i] > 0 && i != without)
      add(scores, languageClues()[i].weights, counts.clues[i]);
  }
  for (const ShapeClue& clue : shapeClues()) {
    add(scores, clue.weights, counts.shapes[static_cast<std::size_t>(clue.shape)]);
  }
  return scores;
}

}  // namespace marbelot
