// Tells the comments of a source from its code, whatever language it is in. Copies begin and end
// anywhere: a comment may have no start or no end.
#pragma once

#include <string_view>
#include <vector>

namespace marbelot {

class CommentReader {
 public:
  enum class Line {
    code,
    comment,
    longString,      // documentation in quotes
    endOfComment,    // which began before the text: all lines so far belong to it
    endOfLongString  // the same
  };

  explicit CommentReader(std::string_view text) : text_(text) {}

  // The lines in their order, without blanks at their ends; not empty.
  Line read(std::string_view line);

  // What stands behind the marks of line comments.
  const std::vector<std::string_view>& examples() const { return examples_; }

 private:
  bool endsBlockComment(std::string_view line);
  bool isComment(std::string_view line);
  Line readLongString(std::string_view line, std::string_view quotes);
  bool endsLongString(std::string_view quotes) const;
  bool isOdd(std::string_view quotes) const;

  std::string_view text_;
  std::vector<std::string_view> examples_;
  std::string_view closer_;  // what ends the comment or the long string that is open
  bool metLongString_ = false, metBlockComment_ = false;
};

}  // namespace marbelot
