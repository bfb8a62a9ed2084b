#include "platform/linux/desktop_entries.h"

#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/files.h"
#include "platform/linux/ini_file.h"
#include "platform/locale.h"
#include "platform/text.h"

namespace marbelot {
namespace {

std::string environment(const char* name, const std::string& otherwise) {
  const char* value = std::getenv(name);
  return value && *value ? value : otherwise;
}

std::vector<std::string> applicationFolders() {
  const std::string share = files::join(files::homeFolder(), ".local/share");
  const std::string all = environment("XDG_DATA_HOME", share) + ":" +
                          environment("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
  std::vector<std::string> folders;
  for (std::size_t at = 0; at < all.size();) {
    const std::size_t end = std::min(all.find(':', at), all.size());
    folders.push_back(files::join(all.substr(at, end - at), "applications"));
    at = end + 1;
  }
  return folders;
}

std::optional<std::string> nameIn(const std::string& entry) {
  const std::string& language = locale::language();
  for (const std::string& key : {"Name[" + language + "_" + locale::region() + "]",
                                 "Name[" + language + "]", std::string("Name")})
    if (auto name = iniValue(entry, "Desktop Entry", key)) return name;
  return std::nullopt;
}

}  // namespace

DesktopEntry entryOfClass(const std::string& windowClass) {
  if (windowClass.find('/') != windowClass.npos) return {windowClass, {}};
  for (const std::string& folder : applicationFolders()) {
    for (const std::string& name : {windowClass, text::lowercased(text::sanitized(windowClass))}) {
      const std::string entry = files::join(folder, name + ".desktop");
      if (!files::exists(entry)) continue;
      if (auto shown = nameIn(entry))
        return {*shown, iniValue(entry, "Desktop Entry", "Icon").value_or("")};
    }
  }
  return {windowClass, {}};
}

}  // namespace marbelot
