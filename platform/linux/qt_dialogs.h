// Alerts and panels.
#pragma once

#include "platform/linux/picture_cache.h"
#include "platform/linux/session_bus.h"
#include "platform/window.h"

namespace marbelot {

class QtDialogs : public Dialogs {
 public:
  QtDialogs(SessionBus& bus, PictureCache& pictures) : bus_(bus), pictures_(pictures) {}
  void present(Alert alert, std::function<void(AlertAnswer)> answered) override;
  void saveFile(FilePanel panel, std::function<void(const std::string& path)> chosen) override;
  void chooseFolder(FolderPanel panel,
                    std::function<void(const std::string& folder)> chosen) override;

 private:
  void whenPossible(std::function<void()> work);

  SessionBus& bus_;
  PictureCache& pictures_;
};

}  // namespace marbelot
