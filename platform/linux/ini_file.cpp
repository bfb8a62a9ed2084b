#include "platform/linux/ini_file.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <charconv>

#include "platform/files.h"
#include "platform/text.h"

namespace marbelot {

std::optional<std::string> iniValue(const std::string& path, std::string_view section,
                                    std::string_view key) {
  const SharedBytes contents = files::read(path, 1 << 20);
  if (!contents) return std::nullopt;
  bool inside = section.empty();
  for (std::size_t at = 0; at < contents->size();) {
    const std::size_t end = std::min(contents->find('\n', at), contents->size());
    const std::string_view line =
        text::trimmedBlanksAndNewlines(std::string_view(*contents).substr(at, end - at));
    at = end + 1;
    if (line.starts_with('[')) {
      inside = section.empty() || line == "[" + std::string(section) + "]";
    } else if (inside && line.starts_with(key)) {
      std::string_view rest = text::trimmedBlanks(line.substr(key.size()));
      // KDE's mark of a value that names an environment variable.
      if (rest.starts_with("[$e]")) rest = text::trimmedBlanks(rest.substr(4));
      if (!rest.starts_with('=')) continue;
      rest = text::trimmedBlanks(rest.substr(1));
      if (rest.size() >= 2 && rest.starts_with('"') && rest.ends_with('"'))
        rest = rest.substr(1, rest.size() - 2);
      if (!rest.empty()) return std::string(rest);
    }
  }
  return std::nullopt;
}

std::string withoutQtEscapes(std::string_view value) {
  icu::UnicodeString units;
  for (std::size_t at = 0; at < value.size();) {
    const std::size_t plain = std::min(value.find('\\', at), value.size());
    units += icu::UnicodeString::fromUTF8(std::string(value.substr(at, plain - at)));
    if (plain == value.size()) break;
    at = plain + 1;
    unsigned unit = 0;
    const char* const digits = value.data() + at + 1;
    if (value.substr(at).starts_with('x')) {
      const auto end = std::from_chars(digits, value.data() + value.size(), unit, 16).ptr;
      units += static_cast<char16_t>(unit);
      at = static_cast<std::size_t>(end - value.data());
    } else if (at < value.size()) {
      units += static_cast<char16_t>(value[at++]);
    }
  }
  std::string text;
  return units.toUTF8String(text);
}

}  // namespace marbelot
