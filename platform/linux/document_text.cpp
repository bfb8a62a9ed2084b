#include "platform/linux/document_text.h"

#include <algorithm>

#include "platform/text.h"

namespace marbelot {
namespace {

// A line is laid out as a whole, which takes a few milliseconds at this length (UTF-16 units).
constexpr int longestLine = 4096;
// A line without a place to part it is parted anywhere.
constexpr int longestSearch = longestLine + 256;

constexpr int kindProperty = QTextFormat::UserProperty;
constexpr QChar frameBegin{0xFDD0}, frameEnd{0xFDD1};
// Unassigned characters that show as nothing.
constexpr QChar frameBeginStandIn{0xFFF0}, frameEndStandIn{0xFFF1};
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool looksLikeStandIn(QChar c) { return c == frameBeginStandIn || c == frameEndStandIn; }

void appendUtf8(QStringView line, std::string& text) {
  const QByteArray utf8 = line.toUtf8();
  text.append(utf8.data(), static_cast<std::size_t>(utf8.size()));
}

void flush(QString& run, QTextCursor& at) {
  if (run.isEmpty()) return;
  // With a format of its own: the one found there may be a break's.
  at.insertText(run, QTextCharFormat());
  run.clear();
}

}  // namespace

DocumentText::Kind DocumentText::kindOf(const QTextFormat& format) {
  return static_cast<Kind>(format.intProperty(kindProperty));
}

QTextCharFormat DocumentText::formatOf(Kind kind) {
  QTextCharFormat format;
  format.setProperty(kindProperty, static_cast<int>(kind));
  return format;
}

void DocumentText::breakLine(QTextCursor& at) {
  at.insertBlock(QTextBlockFormat(), QTextCharFormat());
}

// The format before a block is that of the break.
bool DocumentText::continuesLine(const QTextBlock& block) {
  return block.position() > 0 && kindOf(block.charFormat()) == Kind::join;
}

void DocumentText::endLine(Kind kind, QString& run, QTextCursor& at) {
  column_ = 0;
  if (ordinary_ == Kind::none && kind != Kind::join && kind != Kind::paragraph) ordinary_ = kind;
  if (kind == ordinary_) {
    run += u'\n';
    return;
  }
  special_ = true;
  flush(run, at);
  at.insertBlock(QTextBlockFormat(), formatOf(kind));
}

std::string_view DocumentText::insert(std::string_view& text, std::size_t bytes, QTextCursor& at) {
  std::size_t end = std::min(bytes, text.size());
  while (end < text.size() && text::isContinuation(text[end])) ++end;
  if (end < text.size() && text[end] == '\n') ++end;
  const std::string_view head = text.substr(0, end);
  text.remove_prefix(end);

  QString decoded = QString::fromUtf8(head.data(), static_cast<qsizetype>(head.size()));
  // Qt takes it for a sign of the encoding, not for a character.
  if (head.starts_with(byteOrderMark)) decoded.prepend(QChar::ByteOrderMark);
  QString run;
  run.reserve(decoded.size());
  for (qsizetype i = 0; i < decoded.size(); ++i) {
    const QChar c = decoded[i];
    if (c == u'\n') {
      endLine(Kind::lf, run, at);
    } else if (c == u'\r') {
      const bool pair = i + 1 < decoded.size() && decoded[i + 1] == u'\n';
      endLine(pair ? Kind::crLf : Kind::cr, run, at);
      i += pair;
    } else if (c == QChar::ParagraphSeparator) {
      endLine(Kind::paragraph, run, at);
    } else {
      if (column_ >= longestLine && !c.isLowSurrogate() &&
          (!c.isMark() || column_ >= longestSearch))
        endLine(Kind::join, run, at);
      ++column_;
      if (c == frameBegin || c == frameEnd) {
        special_ = true;
        flush(run, at);
        at.insertText(QString(c == frameBegin ? frameBeginStandIn : frameEndStandIn),
                      formatOf(Kind::standIn));
      } else {
        run += c;
      }
    }
  }
  flush(run, at);
  return head;
}

void DocumentText::append(const QTextDocument& document, int start, int end,
                          std::string& text) const {
  if (start >= end) return;
  text.reserve(text.size() + static_cast<std::size_t>(end - start));
  for (QTextBlock block = document.findBlock(start); block.isValid() && block.position() < end;) {
    const int at = block.position();
    appendLine(block, std::max(start - at, 0), std::min(end - at, block.length() - 1), text);
    const bool whole = end >= at + block.length();
    block = block.next();
    if (whole && block.isValid()) appendBreak(block, text);
  }
}

void DocumentText::appendLine(const QTextBlock& block, int from, int to, std::string& text) const {
  if (from >= to) return;
  QString line = block.text();
  if (special_ && std::any_of(line.cbegin() + from, line.cbegin() + to, looksLikeStandIn)) {
    for (auto part = block.begin(); !part.atEnd(); ++part) {
      const QTextFragment fragment = part.fragment();
      if (kindOf(fragment.charFormat()) != Kind::standIn) continue;
      const int at = fragment.position() - block.position();
      for (int i = at; i < at + fragment.length(); ++i) {
        if (line[i] == frameBeginStandIn) line[i] = frameBegin;
        if (line[i] == frameEndStandIn) line[i] = frameEnd;
      }
    }
  }
  appendUtf8(QStringView(line).mid(from, to - from), text);
}

void DocumentText::appendBreak(const QTextBlock& after, std::string& text) const {
  Kind kind = special_ ? kindOf(after.charFormat()) : Kind::none;
  // What is typed beside a stand-in has its format.
  if (kind == Kind::none || kind == Kind::standIn) kind = ordinary_;
  switch (kind) {
    case Kind::join:
      break;
    case Kind::crLf:
      text += "\r\n";
      break;
    case Kind::cr:
      text += '\r';
      break;
    case Kind::paragraph:
      text += "\u2029";
      break;
    default:
      text += '\n';
  }
}

}  // namespace marbelot
