#include "classification/comment_reader.h"

#include "classification/line_shapes.h"

namespace marbelot {
namespace {

bool isHashComment(std::string_view line) {
  if (line.size() == 1) return true;
  if (line[1] == '!') return line.find('[') != 2;
  if (!isBlank(line[1])) return line[1] == '#' || line[1] == '-' || line[1] == '=';
  const std::string_view rest = line.substr(skipBlanks(line, 1));
  for (const std::string_view directive :
       {"include", "define", "if", "endif", "else", "undef", "pragma", "error"}) {
    if (rest.starts_with(directive)) return false;
  }
  return true;
}

}  // namespace

CommentReader::Line CommentReader::read(std::string_view line) {
  if (!closer_.empty()) {
    if (line.find(closer_) != line.npos) closer_ = {};
    return Line::comment;
  }
  if (endsBlockComment(line)) return Line::endOfComment;
  if (isComment(line)) {
    const std::size_t marker = line.find_first_not_of("/#*!");
    if (closer_.empty() && marker != line.npos && marker > 0) {
      examples_.push_back(line.substr(marker));
    }
    return Line::comment;
  }
  const Line kind = readLongString(line, "\"\"\"");
  return kind == Line::code ? readLongString(line, "'''") : kind;
}

bool CommentReader::isComment(std::string_view line) {
  if (line.starts_with("//")) return true;
  if (line.starts_with("/*")) {
    if (line.find("*/", 2) == line.npos) closer_ = "*/";
    return true;
  }
  if (line.front() == '*' && (line.size() == 1 || isBlank(line[1]) || line[1] == '/')) {
    return line.back() != '{' && line.back() != ',';
  }
  return line.starts_with("-- ") || (line.front() == '#' && isHashComment(line));
}

// A time table's "*/5" ends no comment.
bool CommentReader::endsBlockComment(std::string_view line) {
  if (metBlockComment_) return false;
  const std::size_t open = line.find("/*");
  metBlockComment_ = open != line.npos;
  if (!line.ends_with("*/") || (metBlockComment_ && open + 2 < line.size())) return false;
  metBlockComment_ = true;
  return true;
}

// Python's documentation. A piece may begin within it.
CommentReader::Line CommentReader::readLongString(std::string_view line, std::string_view quotes) {
  const std::size_t open = line.find(quotes);
  if (open == line.npos) return Line::code;
  const bool isFirst = !metLongString_;
  metLongString_ = true;
  if (open > 1) {
    const bool ends = isFirst && open + quotes.size() == line.size() &&
                      (isName(line[open - 1]) || line[open - 1] == '.');
    return ends ? Line::endOfLongString : Line::code;
  }
  if (line.size() == quotes.size() && isFirst && endsLongString(quotes)) {
    return Line::endOfLongString;
  }
  if (line.find(quotes, open + quotes.size()) == line.npos) closer_ = quotes;
  return Line::longString;
}

// Of quotes alone on their line, the first of the text. What they open follows a colon or an
// assignment; where the next ones open a text on their line, these have closed one.
bool CommentReader::endsLongString(std::string_view quotes) const {
  const std::size_t first = text_.find(quotes);
  const std::size_t before = text_.find_last_not_of(" \t\r\n", first == 0 ? text_.npos : first - 1);
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

bool CommentReader::isOdd(std::string_view quotes) const {
  bool odd = false;
  for (std::size_t at = text_.find(quotes); at != text_.npos;
       at = text_.find(quotes, at + quotes.size())) {
    odd = !odd;
  }
  return odd;
}

}  // namespace marbelot
