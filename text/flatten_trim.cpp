#include "text/flatten_trim.h"

#include <algorithm>

#include "platform/ascii.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::string_view ellipsis = "…", openQuote = "“", closeQuote = "”", returnSign = "⏎";
constexpr std::size_t limitOfOneLine = 36, limitOfEachLine = 14;  // characters

// Index of the first LF or CR at or after `from`, or the size. The window grows from small, so that
// neither of the two searches runs far past what the other finds.
std::size_t lineBreakByte(std::string_view text, std::size_t from) {
  for (std::size_t window = 256; from < text.size(); window *= 2) {
    const std::string_view piece = text.substr(from, window);
    const std::size_t lf = piece.find('\n');
    const std::size_t cr = piece.substr(0, lf).find('\r');
    if (cr != std::string_view::npos) return from + cr;
    if (lf != std::string_view::npos) return from + lf;
    from += piece.size();
  }
  return text.size();
}

// As above, passing over every CR LF. `from` must not lie within one.
std::size_t lineBreakCharacter(std::string_view text, std::size_t from) {
  for (;;) {
    const std::size_t at = lineBreakByte(text, from);
    if (!text.substr(at).starts_with("\r\n")) return at;
    from = at + 2;
  }
}

// Calls visit(line) for each line that flattening keeps, until it returns false.
template <typename Visit>
void forEachFlattenedLine(std::string_view text, Visit visit) {
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = lineBreakCharacter(text, start);
    const std::string_view line = text::trimmedBlanks(text.substr(start, end - start));
    if (!line.empty() && !visit(line)) return;
    start = end + 1;
  }
}

// Occurrences of `byte`. Blocks of a fixed size, so that the compiler makes vectors of the loop.
std::size_t countBytes(std::string_view text, char byte) {
  constexpr std::size_t block = 64;
  std::size_t count = 0;
  for (; text.size() >= block; text.remove_prefix(block)) {
    unsigned char found = 0;
    for (std::size_t i = 0; i < block; ++i) {
      found = static_cast<unsigned char>(found + (text[i] == byte));
    }
    count += found;
  }
  return count + static_cast<std::size_t>(std::count(text.begin(), text.end(), byte));
}

bool isBlankCharacter(std::string_view character) {
  for (std::size_t at = 0; at < character.size();) {
    const text::Scalar scalar = text::scalarAt(character, at);
    if (!text::isBlank(scalar.value)) return false;
    at += scalar.bytes;
  }
  return true;
}

// A blank with a combining mark on it is a character to keep, hence characters and not scalars. Two
// bytes of ASCII never form one (an LF is not in a line).
std::string_view withoutLeadingBlanks(std::string_view line) {
  while (!line.empty()) {
    std::size_t bytes = 1;
    if (line.size() > 1 && isAscii(line[0]) && isAscii(line[1])) {
      if (line[0] != ' ' && line[0] != '\t') break;
    } else {
      if (isAscii(line[0]) && line[0] != ' ' && line[0] != '\t') break;
      bytes = text::prefixBytes(line, 1);
      if (!isBlankCharacter(line.substr(0, bytes))) break;
    }
    line.remove_prefix(bytes);
  }
  return line;
}

std::string_view withoutTrailingBlanks(std::string_view line) {
  while (!line.empty()) {
    std::size_t bytes = 1;
    const char last = line.back();
    if (isAscii(last)) {
      if (last != ' ' && last != '\t') break;
      if (line.size() == 1 || isAscii(line[line.size() - 2])) {
        line.remove_suffix(1);
        continue;
      }
    } else if (!text::isBlank(text::scalarBefore(line, line.size()).value)) {
      break;  // spares most lines in other scripts the search for their last character
    }
    bytes = text::suffixBytes(line, 1);
    if (!isBlankCharacter(line.substr(line.size() - bytes))) break;
    line.remove_suffix(bytes);
  }
  return line;
}

std::string withReturnSigns(std::string_view text) {
  std::string result;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = lineBreakByte(text, start);
    result.append(text, start, end - start);
    if (end == text.size()) break;
    result += returnSign;
    start = end + (text.substr(end).starts_with("\r\n") ? 2 : 1);
  }
  return result;
}

// The quoted preview of transform(text), where the transform of any start of the text is a start of
// its transform. So a start that shows more than `limit` characters shows enough: where a character
// ends depends on nothing beyond the scalar that follows it.
template <typename Transform>
std::string previewOf(std::string_view text, std::size_t limit, Transform transform) {
  limit = std::min(limit, text.size());
  for (std::size_t bytes = 4 * limit + 64;; bytes *= 2) {
    std::size_t cut = std::min(bytes, text.size());
    while (cut > 0 && cut < text.size() && text::isContinuation(text[cut])) --cut;
    const std::string shown = withReturnSigns(transform(text.substr(0, cut)));
    const std::size_t visible = text::prefixBytes(shown, limit);
    const bool whole = cut == text.size(), cuts = visible < shown.size();
    if (!whole && !cuts) continue;
    if (shown.empty()) return "(empty)";
    std::string result(openQuote);
    result.append(shown, 0, visible);
    if (cuts) result += ellipsis;
    return result += closeQuote;
  }
}

}  // namespace

bool hasLineBreak(std::string_view text) {
  const auto isBreak = [text](std::size_t at) {
    if (text[at] == '\n') return at == 0 || text[at - 1] != '\r';
    return text[at] == '\r' && !text.substr(at + 1).starts_with('\n');
  };
  if (text.empty()) return false;
  if (isBreak(0)) return true;
  // Blocks with a byte on either side, because a text full of CR LF is looked at to its end.
  constexpr std::size_t block = 64;
  std::size_t at = 1;
  for (; text.size() - at > block; at += block) {
    const char* s = text.data() + at;
    unsigned char found = 0;
    for (std::size_t i = 0; i < block; ++i) {
      const bool lf = (s[i] == '\n') & (s[i - 1] != '\r');
      const bool cr = (s[i] == '\r') & (s[i + 1] != '\n');
      found = static_cast<unsigned char>(found | lf | cr);
    }
    if (found) return true;
  }
  for (; at < text.size(); ++at) {
    if (isBreak(at)) return true;
  }
  return false;
}

std::string flatten(std::string_view text, std::string_view separator) {
  std::string result;
  std::size_t extra = 0;
  if (separator.size() > 1) {
    extra = (countBytes(text, '\n') + countBytes(text, '\r')) * (separator.size() - 1);
  }
  result.reserve(text.size() + extra);
  bool first = true;
  forEachFlattenedLine(text, [&](std::string_view line) {
    if (!first) result += separator;
    first = false;
    result += line;
    return true;
  });
  return result;
}

std::string trim(std::string_view text, std::string_view mode) {
  const bool left = mode != "right", right = mode != "left";
  std::string result;
  result.reserve(text.size());
  for (std::size_t start = 0;;) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    std::string_view line = text.substr(start, end - start);
    if (left) line = withoutLeadingBlanks(line);
    if (right) line = withoutTrailingBlanks(line);
    result += line;
    if (end == text.size()) return result;
    result += '\n';
    start = end + 1;
  }
}

FlattenHead flattenHead(std::string_view text) {
  FlattenHead head;
  forEachFlattenedLine(text, [&](std::string_view line) {
    if (head.first.empty()) {
      head.first = line;
    } else if (head.second.empty()) {
      head.second = line;
    } else {
      head.more = true;
    }
    return !head.more;
  });
  return head;
}

std::string flattenPreview(const FlattenHead& head, std::string_view separator) {
  if (head.second.empty()) return quotedPreview(head.first, limitOfOneLine);
  std::string result(openQuote);
  if (text::prefixBytes(head.first, limitOfEachLine) < head.first.size()) {
    const std::size_t bytes = text::suffixBytes(head.first, limitOfEachLine);
    result += ellipsis;
    result += head.first.substr(head.first.size() - bytes);
  } else {
    result += head.first;
  }
  result += separator;
  const std::size_t bytes = text::prefixBytes(head.second, limitOfEachLine);
  result += head.second.substr(0, bytes);
  if (bytes < head.second.size()) result += ellipsis;
  if (head.more) result.append(" ").append(ellipsis);
  return result += closeQuote;
}

std::string flattenPreview(std::string_view text, std::string_view separator) {
  return flattenPreview(flattenHead(text), separator);
}

std::string quotedPreview(std::string_view text, std::size_t limit) {
  return previewOf(text, limit, [](std::string_view start) { return start; });
}

std::string trimPreview(std::string_view text, std::string_view mode, std::size_t limit) {
  // Trimming a line that was cut short may drop blanks that stay in the whole line, never others.
  return previewOf(text, limit, [mode](std::string_view start) { return trim(start, mode); });
}

std::size_t lineCount(std::string_view text) { return countBytes(text, '\n') + 1; }

std::string viewerTitle(std::size_t characters, std::size_t lines) {
  return "Clipboard — " + std::to_string(characters) + " chars, " + std::to_string(lines) +
         (lines == 1 ? " line" : " lines");
}

}  // namespace marbelot
