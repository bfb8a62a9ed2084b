// Handing files and links to the desktop's other programs.
#pragma once

#include <QString>

#include "platform/linux/session_bus.h"
#include "platform/platform.h"

namespace marbelot {

class DesktopWorkspace : public Workspace {
 public:
  DesktopWorkspace(MainQueue& queue, const SessionBus& bus) : queue_(queue), bus_(bus) {}
  void openPath(const std::string& path) override;
  void openUrl(const std::string& url) override;
  void openPrivacySettings(const std::string& folder,
                           std::function<void(const std::string&)> advise) override;
  void reveal(const std::string& path) override;
  bool trash(const std::string& path) override;

 private:
  void askFileManager(const QString& method, const std::string& path,
                      std::function<void(bool done)> answered);

  MainQueue& queue_;
  const SessionBus& bus_;
  Task examining_;
};

}  // namespace marbelot
