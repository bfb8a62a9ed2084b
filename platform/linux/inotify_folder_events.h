// Folder events by inotify.
#pragma once

#include "platform/platform.h"

namespace marbelot {

// A folder that is missing, moved away or not readable is waited for: the stream comes alive when
// it is there (again). When the path comes to mean another folder, that one is watched.
class InotifyFolderEvents : public FolderEvents {
 public:
  std::unique_ptr<FolderStream> watch(const std::string& folder,
                                      std::function<void()> changed) override;
};

}  // namespace marbelot
