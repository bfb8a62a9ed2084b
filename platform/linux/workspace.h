// Handing files and links to the desktop's other programs.
#pragma once

#include <QString>

#include "platform/linux/link_applications.h"
#include "platform/linux/session_bus.h"
#include "platform/platform.h"

namespace marbelot {

class DesktopWorkspace : public Workspace {
 public:
  // `withheld`: variables of our environment that are not for the programs that we start.
  DesktopWorkspace(MainQueue& queue, const SessionBus& bus, std::vector<std::string> withheld = {})
      : queue_(queue), bus_(bus), withheld_(std::move(withheld)), applications_(queue) {}
  void openPath(const std::string& path) override;
  using Workspace::openUrl;
  void openUrl(const std::string& url, const std::string& application) override;
  void findApplications(const std::string& url,
                        std::function<void(std::vector<LinkApplication>)> found) override {
    applications_.find(url.substr(0, url.find(':')), std::move(found));
  }
  void openPrivacySettings(const std::string& folder,
                           std::function<void(const std::string&)> advise) override;
  void addNote(const SharedText& text,
               std::function<void(const std::optional<std::string>& problem)> done) override;
  void reveal(const std::string& path) override;
  [[nodiscard]] Task trash(std::vector<std::string> paths, std::function<void()> done) override;

 private:
  void askFileManager(const QString& method, const std::string& path,
                      std::function<void(bool done)> answered);

  MainQueue& queue_;
  const SessionBus& bus_;
  const std::vector<std::string> withheld_;
  LinkApplications applications_;
  Task examining_;
};

}  // namespace marbelot
