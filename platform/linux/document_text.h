// How a text is kept in a Qt document, and how the very same text is got back from it.
//
// Qt knows one kind of line break and lays out a line as a whole. So the document has, invisibly at
// the end of a line, a mark that says which break follows it when that is not the text's ordinary
// one, or that the line only goes on; over-long lines are cut in this way. The marks are characters
// among others, so cutting, pasting and undoing carry them along. Two characters that Qt takes for
// structure of its own have a mark in their place.
#pragma once

#include <QString>
#include <QTextBlock>
#include <string>
#include <string_view>

namespace marbelot {

class DocumentText {
 public:
  // The first of the characters that serve as marks: unassigned ones that show as nothing, and ones
  // of private use for a text that holds those.
  static constexpr char16_t invisibleMarks = 0xFFF0;
  static constexpr char16_t otherMarks = 0xF8D0;

  explicit DocumentText(char16_t firstMark = invisibleMarks) : first_(firstMark) {}

  // What is taken next goes to that position in a document of this form.
  void startAt(const QTextBlock& block, int position) { column_ = position - block.position(); }

  // The next piece of a text in document form, about `bytes` of it, taken off its start. False when
  // it holds a mark, so that these marks cannot serve the text; the piece is whole for all that.
  bool take(std::string_view& text, std::size_t bytes, QString& piece);

  // Appends what the characters `from` to `to` of the block stand for, and the break behind them if
  // `to` is beyond the block's last character.
  void append(const QTextBlock& block, int from, int to, std::string& text) const;

  enum class Mark : char16_t { join, lf, crLf, cr, paragraph, frameBegin, frameEnd, count };
  bool isMark(QChar c) const { return kindOf(c) < Mark::count; }
  bool isJoin(QChar c) const { return kindOf(c) == Mark::join; }

 private:
  Mark kindOf(QChar c) const {
    const auto offset = static_cast<char16_t>(c.unicode() - first_);
    return offset < static_cast<char16_t>(Mark::count) ? static_cast<Mark>(offset) : Mark::count;
  }
  void endLine(Mark kind, QString& piece);

  char16_t first_;
  Mark ordinary_ = Mark::count;  // the first break of the text; not known before that
  int column_ = 0;               // UTF-16 units since the last break
};

}  // namespace marbelot
