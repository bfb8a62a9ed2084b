// Handing files and links to the desktop's other programs.
#pragma once

#include "platform/platform.h"

namespace marbelot {

class DesktopWorkspace : public Workspace {
 public:
  void openPath(const std::string& path) override;
  void openUrl(const std::string& url) override;
  void openPrivacySettings(const std::string& folder) override;
  void reveal(const std::string& path) override;
  bool trash(const std::string& path) override;
};

}  // namespace marbelot
