// How a text is kept in a Qt document, and how the very same text is got back from it.
//
// Qt knows one kind of line break and lays out a line as a whole. So each break of the document has
// the kind that it stands for in its format: another break than the text's ordinary one, or none at
// all where an over-long line was cut. A format belongs to its character, so cutting, undoing and
// whatever else happens to the text carry it along, and no position lies between the two. Two
// characters that Qt takes for structure of its own have another one in their place, which tells by
// its format, too.
#pragma once

#include <QString>
#include <QTextBlock>
#include <QTextCursor>
#include <string>
#include <string_view>

namespace marbelot {

class DocumentText {
 public:
  // What is put in next goes to that position of the document.
  void startAt(const QTextBlock& block, int position) { column_ = position - block.position(); }

  // Puts the next piece of a text in, about `bytes` of it, replacing what the cursor has selected.
  // Returns the piece, which is taken off the start of the text.
  std::string_view insert(std::string_view& text, std::size_t bytes, QTextCursor& at);

  // The breaks that are put in from now on do not change what the former ones stand for.
  void settle() {
    if (ordinary_ == Kind::none) ordinary_ = Kind::lf;
  }

  // Appends what the document has between the two positions.
  void append(const QTextDocument& document, int start, int end, std::string& text) const;

  // An ordinary break, whatever stands around it.
  static void breakLine(QTextCursor& at);
  // The block goes on with the line of the one before it.
  static bool continuesLine(const QTextBlock& block);

 private:
  enum class Kind : char { none, lf, crLf, cr, paragraph, join, standIn };
  static Kind kindOf(const QTextFormat& format);
  static QTextCharFormat formatOf(Kind kind);
  void endLine(Kind kind, QString& run, QTextCursor& at);
  void appendLine(const QTextBlock& block, int from, int to, std::string& text) const;
  void appendBreak(const QTextBlock& after, std::string& text) const;

  Kind ordinary_ = Kind::none;  // the first break of the text; none before it is known
  bool special_ = false;        // anything was put in that is not what it looks like
  int column_ = 0;              // UTF-16 units since the last break
};

}  // namespace marbelot
