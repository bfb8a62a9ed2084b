#include "image/image_export.h"

#include <algorithm>

#include "image/image_tag.h"
#include "platform/files.h"
#include "platform/text.h"
#include "shell/pending_copy.h"

namespace marbelot {
namespace {

constexpr std::size_t rememberedFolders = 5;
// Two wordings, of saving and of tags.
constexpr const char* nothingToSave = "No image on clipboard";
constexpr const char* nothingToTag = "No image on the clipboard";
constexpr const char* cannotEncode = "Couldn't encode the image";

std::string shownName(const std::string& path) {
  return text::sanitized(files::lastComponent(path));
}

}  // namespace

ImageExport::ImageExport(Platform& platform, Shell& shell, ActionTable& actions,
                         HistoryImage historyImage, Overtaken overtaken,
                         std::function<std::string()> archiveFolder)
    : platform_(platform),
      shell_(shell),
      overtaken_(std::move(overtaken)),
      archiveFolder_(std::move(archiveFolder)) {
  actions.addOn<std::string>("saveClipImageTo:", [this](const std::string& folder) {
    if (folder.empty()) return;
    save(folder, [this, folder](const std::string& path) { tellSaved(folder, path); });
  });
  actions.add("chooseAndSaveClipImage", [this](const MenuItem&) { chooseAndSaveClipImage(); });
  actions.add("revealCurrentClipImage", [this](const MenuItem&) {
    save(archiveFolder_(), [this](const std::string& path) { platform_.workspace.reveal(path); });
  });
  actions.add("copyCurrentClipImagePath", [this](const MenuItem&) { copyCurrentClipImagePath(); });
  actions.add("copyClipboardImageAsTag", [this](const MenuItem&) {
    const PasteboardContents contents = platform_.pasteboard.contents();
    contents.image ? copyAsTag(*contents.image, contents.concealed) : shell_.notify(nothingToTag);
  });
  actions.add("copyClipHistoryImageAsTag:",
              [this, historyImage = std::move(historyImage)](const MenuItem& sender) {
                if (const auto image = historyImage(sender)) copyAsTag(*image, false);
              });
}

void ImageExport::addSaveItems(Menu& menu) const {
  const auto addFolder = [&](const std::string& name, const std::string& folder) {
    menu.add("Save image to " + name, "saveClipImageTo:", folder);
  };
  addFolder("Desktop", files::desktopFolder());
  addFolder("Downloads", files::downloadsFolder());
  addFolder("Pictures/Marbelot", files::join(files::picturesFolder(), "Marbelot"));
  for (const std::string& folder : *favoriteSaveDirs) addFolder(shownName(folder), folder);
  menu.add("Save image to folder…", "chooseAndSaveClipImage");
  menu.add("Reveal in Finder", "revealCurrentClipImage");
  menu.add("Copy image file path", "copyCurrentClipImagePath");
}

void ImageExport::save(const std::string& folder, Saved saved) {
  const auto image = platform_.pasteboard.contents().image;
  if (!image) return shell_.notify(nothingToSave);
  running_.run(
      platform_.queue,
      [folder, base = "Clipboard " + text::fileTimestamp(platform_.queue.now()), image = *image] {
        files::makeFolder(folder);
        return writeImageFile(folder, base, image);
      },
      [this, saved = std::move(saved)](const std::optional<ImageFile>& file) {
        file ? saved(file->path) : shell_.notify(nothingToSave);
      });
}

void ImageExport::tellSaved(const std::string& folder, const std::string& path) {
  shell_.notify("Saved to " + shownName(folder) + "/" + shownName(path));
}

void ImageExport::chooseAndSaveClipImage() {
  if (!platform_.pasteboard.contents().image) return shell_.notify(nothingToSave);
  platform_.dialogs.chooseFolder(
      {"saveFolder", "Save Here", "Choose a folder to save the clipboard image into"},
      [this](const std::string& folder) {
        save(folder, [this, folder](const std::string& path) {
          tellSaved(folder, path);
          shell_.flashStatusIcon();
          remember(folder);
        });
      });
}

void ImageExport::remember(const std::string& folder) {
  std::vector<std::string> folders = *favoriteSaveDirs;
  std::erase(folders, folder);
  folders.insert(folders.begin(), folder);
  folders.resize(std::min(folders.size(), rememberedFolders));
  favoriteSaveDirs = std::move(folders);
}

void ImageExport::copyCurrentClipImagePath() {
  const std::string folder = archiveFolder_();
  save(folder,
       [this, folder, copy = PendingCopy(platform_.pasteboard, shell_)](const std::string& path) {
         if (copy.isOvertaken()) return tellSaved(folder, path);
         shell_.confirmCopy(shell_.copyWithoutRecording(share(text::sanitized(path))),
                            "Copied file path");
       });
}

void ImageExport::copyAsTag(const Image& image, bool concealed) {
  running_.run(
      platform_.queue, [image] { return imageTag(image); },
      [this, concealed,
       copy = PendingCopy(platform_.pasteboard, shell_)](std::optional<std::string> made) {
        if (!made) return shell_.notify(cannotEncode);
        const SharedText tag = share(*std::move(made));
        const std::string message = "Copied <img> tag (base64)";
        if (copy.keepIfOvertaken(tag, concealed, message, overtaken_)) return;
        copy.write(tag, concealed, message);
      });
}

}  // namespace marbelot
