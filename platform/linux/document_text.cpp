#include "platform/linux/document_text.h"

#include <algorithm>

#include "platform/text.h"

namespace marbelot {
namespace {

// A line is laid out as a whole, which takes a few milliseconds at this length (UTF-16 units).
constexpr int longestLine = 4096;
// A line without a place to part it is parted anywhere.
constexpr int longestSearch = longestLine + 256;

constexpr QChar frameBegin{0xFDD0}, frameEnd{0xFDD1};
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

}  // namespace

void DocumentText::endLine(Mark kind, QString& piece) {
  if (ordinary_ == Mark::count && kind != Mark::join && kind != Mark::paragraph) ordinary_ = kind;
  if (kind != ordinary_) piece += QChar(first_ + static_cast<char16_t>(kind));
  piece += u'\n';
  column_ = 0;
}

bool DocumentText::take(std::string_view& text, std::size_t bytes, QString& piece) {
  std::size_t end = std::min(bytes, text.size());
  while (end < text.size() && text::isContinuation(text[end])) ++end;
  if (end < text.size() && text[end] == '\n') ++end;
  const std::string_view head = text.substr(0, end);
  text.remove_prefix(end);

  QString decoded = QString::fromUtf8(head.data(), static_cast<qsizetype>(head.size()));
  // Qt takes it for a sign of the encoding, not for a character.
  if (head.starts_with(byteOrderMark)) decoded.prepend(QChar::ByteOrderMark);
  piece.clear();
  piece.reserve(decoded.size() + decoded.size() / 16);
  bool served = true;
  for (qsizetype i = 0; i < decoded.size(); ++i) {
    const QChar c = decoded[i];
    if (c == u'\n') {
      endLine(Mark::lf, piece);
    } else if (c == u'\r') {
      const bool pair = i + 1 < decoded.size() && decoded[i + 1] == u'\n';
      endLine(pair ? Mark::crLf : Mark::cr, piece);
      i += pair;
    } else if (c == QChar::ParagraphSeparator) {
      endLine(Mark::paragraph, piece);
    } else {
      served = served && !isMark(c);
      if (column_ >= longestLine && !c.isLowSurrogate() &&
          (!c.isMark() || column_ >= longestSearch))
        endLine(Mark::join, piece);
      const Mark stand = c == frameBegin ? Mark::frameBegin
                         : c == frameEnd ? Mark::frameEnd
                                         : Mark::count;
      piece += stand == Mark::count ? c : QChar(first_ + static_cast<char16_t>(stand));
      ++column_;
    }
  }
  return served;
}

void DocumentText::append(const QTextBlock& block, int from, int to, std::string& text) const {
  const QString line = block.text();
  const int end = std::min(to, static_cast<int>(line.size()));
  const auto isAnyMark = [this](QChar c) { return isMark(c); };
  if (std::none_of(line.begin(), line.end(), isAnyMark)) {
    const QByteArray utf8 = QStringView(line).mid(from, end - from).toUtf8();
    text.append(utf8.data(), static_cast<std::size_t>(utf8.size()));
  } else {
    QString plain;
    for (int i = from; i < end; ++i) {
      const Mark mark = kindOf(line[i]);
      if (mark == Mark::count) plain += line[i];
      if (mark == Mark::frameBegin) plain += frameBegin;
      if (mark == Mark::frameEnd) plain += frameEnd;
    }
    const QByteArray utf8 = plain.toUtf8();
    text.append(utf8.data(), static_cast<std::size_t>(utf8.size()));
  }
  if (to <= line.size()) return;

  // Of several, which is what joining lines leaves, the last one was nearest to this break.
  Mark kind = ordinary_;
  for (const QChar c : line)
    if (const Mark mark = kindOf(c); mark < Mark::frameBegin) kind = mark;
  switch (kind) {
    case Mark::join:
      break;
    case Mark::crLf:
      text += "\r\n";
      break;
    case Mark::cr:
      text += '\r';
      break;
    case Mark::paragraph:
      text += "\u2029";
      break;
    default:
      text += '\n';
  }
}

}  // namespace marbelot
