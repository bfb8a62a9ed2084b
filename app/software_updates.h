// How often newer versions of the program are looked for, and the commands to do so.
#pragma once

#include <memory>
#include <string>

#include "platform/menu.h"
#include "platform/platform.h"
#include "shell/setting.h"
#include "shell/shell.h"

namespace marbelot {

// Main thread only; everything it is given outlives it.
class SoftwareUpdates {
  Platform& platform_;  // before the settings, which are made with it

 public:
  SoftwareUpdates(Platform& platform, Shell& shell, ActionTable& actions);

  // "start", "weekly", "biweekly", "monthly" or "never"; anything else means "start".
  Setting<std::string> updateFrequency{platform_.defaults, "updateFrequency", "start"};

  // Made and started when it is first asked for; kept then.
  Updater& updaterController();
  // Tells the updater how often to check. `atLaunch`: where that is at each start, it is now.
  void applyFrequency(bool atLaunch);

  // The submenu of the settings.
  std::shared_ptr<Menu> menu() const;

 private:
  void setUpdateFrequency(const std::string& value);

  Shell& shell_;
  std::unique_ptr<Updater> updaterController_;
  Task launchCheck_;
};

}  // namespace marbelot
