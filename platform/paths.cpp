// Paths as strings; nothing here asks the file system.
#include <pwd.h>

#include <algorithm>
#include <vector>

#include "platform/ascii.h"
#include "platform/files.h"

namespace marbelot::files {

std::string join(const std::string& folder, const std::string& name) {
  if (folder.empty()) return name;
  return folder.back() == '/' ? folder + name : folder + "/" + name;
}

std::string lastComponent(const std::string& path) {
  const std::size_t last = path.find_last_not_of('/');
  if (last == std::string::npos) return path.substr(0, 1);
  const std::size_t slash = path.rfind('/', last);
  const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
  return path.substr(start, last + 1 - start);
}

std::string lowercasedExtension(const std::string& name) {
  const std::size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot == 0) return {};
  std::string extension = name.substr(dot + 1);
  // Extensions that mean anything are ASCII, and a folder may have very many files.
  for (char& c : extension) c = lower(c);
  return extension;
}

bool hasHiddenName(const std::string& path) { return lastComponent(path).starts_with('.'); }

bool isImageName(const std::string& name) {
  const std::string extension = lowercasedExtension(name);
  return extension == "png" || extension == "jpg" || extension == "jpeg" || extension == "tiff" ||
         extension == "heic";
}

namespace {

// Empty when there is no such user.
std::string homeOf(const std::string& user) {
  std::vector<char> buffer(1 << 14);
  passwd entry{};
  passwd* found = nullptr;
  getpwnam_r(user.c_str(), &entry, buffer.data(), buffer.size(), &found);
  return found ? found->pw_dir : "";
}

}  // namespace

std::string expandingTilde(const std::string& path) {
  if (!path.starts_with('~')) return path;
  const std::size_t end = std::min(path.find('/'), path.size());
  const std::string home = end == 1 ? homeFolder() : homeOf(path.substr(1, end - 1));
  return home.empty() ? path : home + path.substr(end);
}

}  // namespace marbelot::files
