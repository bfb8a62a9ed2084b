// The user's folders as xdg-user-dirs has them, and where screenshot tools save.

#include <libintl.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "platform/files.h"
#include "platform/linux/file_list.h"
#include "platform/linux/ini_file.h"
#include "platform/linux/user_defaults.h"
#include "platform/text.h"

namespace marbelot::files {
namespace {

std::string configFolder() {
  const char* configured = std::getenv("XDG_CONFIG_HOME");
  return configured && *configured ? configured : join(homeFolder(), ".config");
}

std::string expandingHome(const std::string& path) {
  return path.starts_with("$HOME") ? homeFolder() + path.substr(5) : path;
}

// A folder of xdg-user-dirs, whose file holds lines such as XDG_DESKTOP_DIR="$HOME/Desktop".
std::optional<std::string> configuredFolder(std::string_view key) {
  const auto value = iniValue(join(configFolder(), "user-dirs.dirs"), "", key);
  if (!value) return std::nullopt;
  std::string folder = expandingHome(*value);
  // One that points at the home folder itself means "there is none".
  if (!folder.starts_with('/') || folder == homeFolder() || folder == homeFolder() + "/")
    return std::nullopt;
  return folder;
}

// A path or a file URL, either of which may begin with $HOME.
std::string pathFrom(const std::string& setting) {
  constexpr std::string_view scheme = "file://";
  if (!setting.starts_with(scheme)) return expandingHome(setting);
  return pathOfFileUrl(std::string(scheme) + expandingHome(setting.substr(scheme.size())));
}

// What the screenshot tools' own settings say.
std::optional<std::string> toolsSetting() {
  constexpr struct {
    const char* file;
    const char* section;
    const char* key;
    bool isQts = false;
  } settings[] = {
      {"spectaclerc", "ImageSave", "imageSaveLocation"},
      {"spectaclerc", "Save", "defaultSaveLocation"},
      {"flameshot/flameshot.ini", "General", "savePath", true},
      {"xfce4/xfce4-screenshooter", "", "screenshot_dir"},
      {"ksnip/ksnip.conf", "Application", "SaveDirectory", true},
  };
  for (const auto& [file, section, key, isQts] : settings) {
    if (const auto value = iniValue(join(configFolder(), file), section, key))
      return pathFrom(isQts ? withoutQtEscapes(*value) : *value);
  }
  return std::nullopt;
}

// Whether the session is of the desktop: "ubuntu:GNOME", "X-Cinnamon".
bool desktopIs(std::string_view name) {
  const char* value = std::getenv("XDG_CURRENT_DESKTOP");
  const std::string names = ":" + std::string(value ? value : "") + ":";
  return names.find(":" + std::string(name) + ":") != std::string::npos;
}

// The name that a program's catalogue gives to the folder, wherever the program is installed.
std::string translatedName(const char* program) {
  constexpr const char* name = "Screenshots";
  bind_textdomain_codeset(program, "UTF-8");
  const char* configured = std::getenv("XDG_DATA_DIRS");
  std::string_view left = configured && *configured ? configured : "/usr/local/share:/usr/share";
  while (!left.empty()) {
    const std::size_t end = std::min(left.find(':'), left.size());
    bindtextdomain(program, join(std::string(left.substr(0, end)), "locale").c_str());
    if (const std::string translated = dgettext(program, name); translated != name)
      return translated;
    left.remove_prefix(std::min(end + 1, left.size()));
  }
  return name;
}

// The language stays the same as long as the program runs, and the lookups cost something.
const std::array<std::string, 3>& screenshotsNames() {
  static const std::array<std::string, 3> names = {translatedName("gnome-shell"),
                                                   translatedName("spectacle"), "Screenshots"};
  return names;
}

}  // namespace

std::string desktopFolder() {
  return configuredFolder("XDG_DESKTOP_DIR").value_or(join(homeFolder(), "Desktop"));
}

std::string downloadsFolder() {
  return configuredFolder("XDG_DOWNLOAD_DIR").value_or(join(homeFolder(), "Downloads"));
}

std::string documentsFolder() {
  return configuredFolder("XDG_DOCUMENTS_DIR").value_or(join(homeFolder(), "Documents"));
}

std::string picturesFolder() {
  return configuredFolder("XDG_PICTURES_DIR").value_or(join(homeFolder(), "Pictures"));
}

std::optional<std::string> screenshotLocation() {
  if (const SharedText set = readDefaultsText(defaultsPath("com.apple.screencapture"), "location"))
    return *set;
  return toolsSetting();
}

std::vector<std::string> usualScreenshotFolders() {
  std::vector<std::string> folders;
  const auto add = [&](std::string folder) {
    if (std::find(folders.begin(), folders.end(), folder) == folders.end())
      folders.push_back(std::move(folder));
  };
  // GLib's programs take the home folder where no folder for pictures is set.
  const bool hasPictures = configuredFolder("XDG_PICTURES_DIR").has_value();
  // GNOME's shell and Spectacle name a folder in the user's language and make it when they need it;
  // their older versions save among the pictures.
  if (desktopIs("GNOME") || desktopIs("KDE")) {
    for (const std::string& name : screenshotsNames()) add(join(picturesFolder(), name));
    if (!hasPictures && desktopIs("GNOME"))
      for (const std::string& name : screenshotsNames()) add(join(homeFolder(), name));
    add(picturesFolder());
  }
  // xfce4-screenshooter and gnome-screenshot. MATE's tool saves on the desktop.
  if (desktopIs("XFCE") || desktopIs("X-Cinnamon") || desktopIs("Cinnamon")) {
    add(picturesFolder());
    if (!hasPictures) add(homeFolder());
  }
  return folders;
}

}  // namespace marbelot::files
