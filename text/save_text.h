// Saving a text as a file of its own, where the user wants it.
#pragma once

#include <string>
#include <string_view>

#include "platform/platform.h"
#include "shell/shell.h"

namespace marbelot {

// The name that a save panel proposes for a text called `base`, which may be any text: of one that
// is empty, "Clipboard " and `timestamp`. Fit for a file system; secrets are masked.
std::string textFileName(std::string_view base, const std::string& timestamp);

// Main thread only; everything it is given outlives it. The file is written in the background.
class TextSaving {
 public:
  TextSaving(Platform& platform, Shell& shell) : platform_(platform), shell_(shell) {}
  TextSaving(const TextSaving&) = delete;
  TextSaving& operator=(const TextSaving&) = delete;

  // Asks where, writes the text there as UTF-8, and tells how that went.
  void save(const SharedText& text, std::string_view base);
  // At the end of the application: waits for what is being written.
  void finishSaving(std::chrono::steady_clock::time_point deadline) { writing_.finish(deadline); }

 private:
  void write(const SharedText& text, const std::string& path);

  Platform& platform_;
  Shell& shell_;
  Tasks writing_;
};

}  // namespace marbelot
