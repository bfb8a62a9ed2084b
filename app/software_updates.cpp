#include "app/software_updates.h"

#include <algorithm>
#include <array>

namespace marbelot {
namespace {

constexpr double day = 86400;  // seconds
constexpr double launchCheckSeconds = 3;

struct Frequency {
  const char* value;
  const char* title;
  double interval;  // between automatic checks, in seconds; 0: there are none
};
constexpr std::array<Frequency, 5> frequencies{{{"start", "On app start", 0},
                                                {"weekly", "Every week", 7 * day},
                                                {"biweekly", "Every 2 weeks", 14 * day},
                                                {"monthly", "Monthly", 30 * day},
                                                {"never", "Never", 0}}};

const Frequency& frequencyFor(const std::string& value) {
  const auto found =
      std::find_if(frequencies.begin(), frequencies.end(),
                   [&](const Frequency& frequency) { return frequency.value == value; });
  return found == frequencies.end() ? frequencies.front() : *found;
}

}  // namespace

SoftwareUpdates::SoftwareUpdates(Platform& platform, Shell& shell, ActionTable& actions)
    : platform_(platform), shell_(shell) {
  actions.add("checkForUpdates",
              [this](const MenuItem&) { updaterController().checkForUpdates(); });
  actions.addOn<std::string>("setUpdateFrequency:",
                             [this](const std::string& value) { setUpdateFrequency(value); });
}

Updater& SoftwareUpdates::updaterController() {
  if (!updaterController_) updaterController_ = platform_.updates.startUpdater();
  return *updaterController_;
}

void SoftwareUpdates::applyFrequency(bool atLaunch) {
  Updater& updater = updaterController();
  const Frequency& frequency = frequencyFor(updateFrequency);
  const bool atStart = &frequency == &frequencies.front();
  launchCheck_.cancel();
  if (frequency.interval > 0) {
    updater.setUpdateCheckInterval(frequency.interval);
    updater.setAutomaticallyChecksForUpdates(true);
    return;
  }
  updater.setAutomaticallyChecksForUpdates(false);
  if (atStart && atLaunch) {
    launchCheck_ = platform_.queue.after(
        launchCheckSeconds, [this] { updaterController().checkForUpdatesInBackground(); });
  }
}

std::shared_ptr<Menu> SoftwareUpdates::menu() const {
  auto menu = std::make_shared<Menu>();
  menu->add("Check now…", "checkForUpdates");
  menu->addSeparator();
  for (const Frequency& frequency : frequencies) {
    menu->add(frequency.title, "setUpdateFrequency:", std::string(frequency.value))->checked =
        &frequency == &frequencyFor(updateFrequency);
  }
  return menu;
}

void SoftwareUpdates::setUpdateFrequency(const std::string& value) {
  updateFrequency = value;
  applyFrequency(value == frequencies.front().value);
  shell_.rebuildMenu();
}

}  // namespace marbelot
