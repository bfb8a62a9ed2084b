// The clipboard's picture as a file, as a file's path and as an HTML tag.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "image/image_file.h"
#include "platform/platform.h"
#include "shell/setting.h"
#include "shell/shell.h"

namespace marbelot {

// Main thread only; everything it is given outlives it. Files are made in the background.
class ImageExport {
  Platform& platform_;

 public:
  // The picture in the history entry that the sender was made for; none when it is no picture.
  using HistoryImage = std::function<std::optional<Image>(const MenuItem& sender)>;
  // Takes a tag that is not to replace a newer copy.
  using Overtaken = std::function<void(const SharedText& tag)>;

  // `archiveFolder` gives the folder of copied images.
  ImageExport(Platform& platform, Shell& shell, ActionTable& actions, HistoryImage historyImage,
              Overtaken overtaken, std::function<std::string()> archiveFolder);

  // Paths of the folders that the user chose, the last one first, without duplicates.
  Setting<std::vector<std::string>> favoriteSaveDirs{platform_.defaults, "favoriteSaveDirs"};

  // At the end of the application: waits for what is being written.
  void finishSaving(std::chrono::steady_clock::time_point deadline) { running_.finish(deadline); }

  // The items for the menus of pieces of content on the screen.
  void addSaveItems(Menu& menu) const;

 private:
  using Saved = std::function<void(const std::string& path)>;

  // Writes the clipboard's picture into the folder; tells the user when there is none or it fails.
  void save(const std::string& folder, Saved saved);
  void tellSaved(const std::string& folder, const std::string& path);
  void chooseAndSaveClipImage();
  void remember(const std::string& folder);
  void copyCurrentClipImagePath();
  void copyAsTag(const Image& image, bool concealed);

  Shell& shell_;
  const Overtaken overtaken_;
  const std::function<std::string()> archiveFolder_;
  Tasks running_;
};

}  // namespace marbelot
