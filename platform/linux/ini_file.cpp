#include "platform/linux/ini_file.h"

#include <algorithm>

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

}  // namespace marbelot
