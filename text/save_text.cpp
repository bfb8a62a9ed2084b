#include "text/save_text.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/files.h"
#include "platform/text.h"
#include "text/masked_title.h"

namespace marbelot {
namespace {

constexpr std::size_t longestName = 200;  // bytes; file systems take 255

std::string_view beginning(std::string_view text) {
  text = text::trimmedBlanksAndNewlines(text);
  std::size_t characters = longestName;
  std::size_t bytes = 0;
  while ((bytes = text::prefixBytes(text, characters)) > longestName) --characters;
  return text.substr(0, bytes);
}

}  // namespace

std::string textFileName(std::string_view base, const std::string& timestamp) {
  // The panel shows it, and so does every file manager later.
  std::string name = text::shownTitle(beginning(maskedWindow(base)));
  std::replace(name.begin(), name.end(), '/', '-');
  name = text::trimmedBlanksAndNewlines(name);
  return (name.empty() ? "Clipboard " + timestamp : name) + ".txt";
}

void TextSaving::save(const SharedText& text, std::string_view base) {
  FilePanel panel;
  panel.id = "saveText";
  panel.folder = files::documentsFolder();
  panel.name = textFileName(base, text::fileTimestamp(platform_.queue.now()));
  panel.extension = "txt";
  panel.kind = "Plain text";
  platform_.dialogs.saveFile(std::move(panel),
                             [this, text](const std::string& path) { write(text, path); });
}

void TextSaving::write(const SharedText& text, const std::string& path) {
  writing_.run(
      platform_.queue, [text, path] { return files::replace(path, *text); },
      [this, path](bool written) {
        shell_.notify(written ? "Saved " + text::sanitized(files::lastComponent(path))
                              : "Couldn't save that file");
      });
}

}  // namespace marbelot
