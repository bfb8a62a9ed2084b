#include "platform/linux/file_list.h"

#include <charconv>

namespace marbelot {

std::string pathOfFileUrl(std::string_view url) {
  constexpr std::string_view scheme = "file://";
  const std::size_t start = url.find('/', scheme.size());  // behind the name of the host
  if (!url.starts_with(scheme) || start == std::string_view::npos) return {};
  std::string path;
  for (std::size_t at = start; at < url.size(); ++at) {
    unsigned byte = 0;
    const char* digits = url.data() + at + 1;
    if (url[at] == '%' && at + 2 < url.size() &&
        std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
      path += static_cast<char>(byte);
      at += 2;
    } else {
      path += url[at];
    }
  }
  return path;
}

std::string firstFile(std::string_view list) {
  while (!list.empty()) {
    const std::size_t end = std::min(list.find_first_of("\r\n"), list.size());
    if (std::string path = pathOfFileUrl(list.substr(0, end)); !path.empty()) return path;
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return {};
}

}  // namespace marbelot
