// What features ask of the application, noted; notices go to the desktop in memory.
#pragma once

#include <string>

#include "platform/memory/memory_platform.h"
#include "shell/shell.h"

namespace marbelot {

struct RecordedShell : Shell {
  memory::MemoryPlatform desk;
  int flashes = 0, rebuilds = 0;

  void notify(const std::string& message) override { desk.notices.post("", message); }
  void flashStatusIcon() override { ++flashes; }
  void rebuildMenu() override { ++rebuilds; }
  bool copyWithoutRecording(SharedText, bool) override { return false; }
  bool copyWithoutRecording(const Image&, bool) override { return false; }
};

}  // namespace marbelot
