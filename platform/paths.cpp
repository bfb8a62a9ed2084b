// Paths as strings; nothing here asks the file system.
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

bool isImageName(const std::string& name) {
  const std::string extension = lowercasedExtension(name);
  return extension == "png" || extension == "jpg" || extension == "jpeg" || extension == "tiff" ||
         extension == "heic";
}

std::string expandingTilde(const std::string& path) {
  if (path == "~" || path.starts_with("~/")) return homeFolder() + path.substr(1);
  return path;
}

}  // namespace marbelot::files
