// The desktop's applications, by their desktop files, and what they open.
#pragma once

#include <string>
#include <vector>

namespace marbelot {

struct DesktopApplication {
  std::string id;    // of the desktop file, e.g. "firefox.desktop"
  std::string name;  // in the user's language
  std::string icon;  // its name in the icon theme, or a file's path; may be empty
  bool isDefault = false;
};

// Those that can open links of the scheme, the default one first, each name once, this program
// never. Reads files: not for the main thread.
std::vector<DesktopApplication> applicationsForScheme(const std::string& scheme);

// Starts the application with the link; the default one when `id` is empty. The program gets none
// of the environment variables in `withheld`. False when there is none or it cannot be started.
// Takes its time: not for the main thread.
bool launchWithUrl(const std::string& url, const std::string& id,
                   const std::vector<std::string>& withheld);
// The same for a file and the default application for its kind.
bool launchWithFile(const std::string& path, const std::vector<std::string>& withheld);

}  // namespace marbelot
