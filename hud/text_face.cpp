#include "hud/text_face.h"

#include <algorithm>
#include <array>

#include "platform/text.h"
#include "text/flatten_trim.h"
#include "text/masked_title.h"

namespace marbelot {
namespace {

// Counting the characters of more would be felt.
constexpr std::size_t countedBytes = std::size_t{256} << 10;
// More than any panel has room for.
constexpr std::size_t shownBytes = std::size_t{16} << 10;
constexpr const char* tab = "    ";

std::string categoryName(const TextAnalysis& analysis) {
  constexpr std::array<std::string_view, clipCategoryCount> names{
      "API key", "Password", "Link",        "Email", "Phone number", "Address",
      "Number",  "Terminal", "Source code", "Text",  "Image"};
  if (!analysis.language.empty()) return analysis.language + " code";
  return std::string(names[static_cast<std::size_t>(analysis.category)]);
}

std::string counted(std::size_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string amount(std::string_view text) {
  if (text.size() > countedBytes) return byteCountTitle(text.size());
  const std::size_t lines = lineCount(text::trimmedBlanksAndNewlines(text));
  const std::string characters = counted(text::characterCount(text), "character", "characters");
  return lines > 1 ? counted(lines, "line", "lines") + ", " + characters : characters;
}

std::string_view withoutLineEnd(std::string_view line) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    lines.push_back(withoutLineEnd(text.substr(at, end - at)));
    at = end + 1;
  }
  return lines;
}

std::size_t indentation(std::string_view line) {
  return std::min(line.find_first_not_of(" \t"), line.size());
}

// Blanks that all lines begin with, blank lines around it and tabs say nothing in a panel.
std::string tidied(std::string_view text) {
  std::vector<std::string_view> lines = linesOf(text);
  const auto isBlank = [](std::string_view line) { return text::isAllBlank(line); };
  while (!lines.empty() && isBlank(lines.back())) lines.pop_back();
  while (!lines.empty() && isBlank(lines.front())) lines.erase(lines.begin());
  std::size_t common = std::string_view::npos;
  for (const std::string_view line : lines)
    if (!isBlank(line)) common = std::min(common, indentation(line));
  std::string result;
  for (const std::string_view line : lines) {
    if (!result.empty() || line.data() != lines.front().data()) result += '\n';
    for (const char c : line.substr(std::min(common, line.size())))
      c == '\t' ? result += tab : result += c;
  }
  return result;
}

// Bytes of the most characters of `line` that fit; at least one.
std::size_t fittingBytes(std::string_view line, const Font& font, double width,
                         const Measure& measure) {
  const auto fits = [&](std::size_t bytes) {
    return measure(std::string(line.substr(0, bytes)), font) <= width;
  };
  // No character is narrower than a tenth of the font's size, as a rule.
  const std::size_t most = static_cast<std::size_t>(width / font.size * 10) + 1;
  std::size_t low = 1, high = most;  // in characters
  const std::size_t whole = text::prefixBytes(line, most);
  if (whole == line.size() && fits(whole)) return whole;
  while (low < high) {
    const std::size_t middle = (low + high + 1) / 2;
    const std::size_t bytes = text::prefixBytes(line, middle);
    if (bytes < line.size() && fits(bytes)) {
      low = middle;
    } else {
      high = middle - 1;
    }
  }
  return text::prefixBytes(line, low);
}

std::string elided(std::string line, const Font& font, double width, const Measure& measure) {
  while (!line.empty() && measure(line + "…", font) > width)
    line.resize(line.size() - text::suffixBytes(line, 1));
  while (line.ends_with(' ')) line.pop_back();
  return line + "…";
}

}  // namespace

std::vector<std::string> wrapped(std::string_view text, const Font& font, FaceRoom room,
                                 const Measure& measure) {
  std::vector<std::string> result;
  for (const std::string_view paragraph : linesOf(text)) {
    const std::string line = text::shownTitle(paragraph);
    std::string_view rest = line;
    do {
      if (result.size() == room.lines) {
        if (!result.empty())
          result.back() = elided(std::move(result.back()), font, room.width, measure);
        return result;
      }
      std::size_t bytes = fittingBytes(rest, font, room.width, measure);
      if (bytes < rest.size() && rest[bytes] != ' ') {
        const std::size_t blank = rest.substr(0, bytes).find_last_of(' ');
        // A line that would be left nearly empty is filled with a part of the word.
        if (blank != rest.npos && blank > bytes / 3) bytes = blank;
      }
      result.emplace_back(rest.substr(0, bytes));
      rest.remove_prefix(bytes);
      while (rest.starts_with(' ')) rest.remove_prefix(1);
    } while (!rest.empty());
  }
  return result;
}

bool startsRightToLeft(std::string_view line) {
  for (std::size_t at = 0; at < line.size();) {
    const auto [value, bytes] = text::scalarAt(line, at);
    at += bytes;
    if (!text::isLetter(value)) continue;
    return (value >= 0x590 && value <= 0x8FF) || (value >= 0xFB1D && value <= 0xFDFF) ||
           (value >= 0xFE70 && value <= 0xFEFF) || (value >= 0x10800 && value <= 0x10FFF) ||
           (value >= 0x1E800 && value <= 0x1EFFF);
  }
  return false;
}

TextFace textFace(const SharedText& text, const TextAnalysis& analysis, FaceRoom room,
                  const Measure& measure) {
  TextFace face;
  const bool isCode =
      analysis.category == ClipCategory::code || analysis.category == ClipCategory::terminal;
  face.font = {.size = isCode ? 12.0 : 13.0, .monospaced = isCode};
  face.heading = analysis.provisional ? byteCountTitle(text->size())
                                      : categoryName(analysis) + " — " + amount(*text);
  std::string masked = maskedWindow(*text);
  if (masked.size() > shownBytes) masked.resize(text::prefixBytes(masked, shownBytes / 4));
  if (titleWindow(*text).size() < text->size()) masked += "…";
  face.lines = wrapped(tidied(masked), face.font, room, measure);
  return face;
}

}  // namespace marbelot
