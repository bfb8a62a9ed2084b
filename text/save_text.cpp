#include "text/save_text.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

#include "platform/files.h"
#include "platform/text.h"
#include "text/masked_title.h"

namespace marbelot {
namespace {

constexpr std::size_t longestName = 200;  // bytes; file systems take 255
constexpr auto endWait = std::chrono::seconds(5);

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
  const std::uint64_t id = ++lastWrite_;
  const auto ended = std::make_shared<std::promise<void>>();
  Writing& writing = writing_[id];
  writing.done = ended->get_future();
  writing.task = platform_.queue.inBackground(
      [text, path, ended] {
        const bool replaced = files::replace(path, *text);
        ended->set_value();
        return replaced;
      },
      [this, id, path](bool written) {
        const auto done = writing_.extract(id);
        shell_.notify(written ? "Saved " + text::sanitized(files::lastComponent(path))
                              : "Couldn't save that file");
      });
}

void TextSaving::finishSaving() {
  const auto deadline = std::chrono::steady_clock::now() + endWait;
  for (auto& [id, writing] : writing_) writing.done.wait_until(deadline);
  writing_.clear();
}

}  // namespace marbelot
