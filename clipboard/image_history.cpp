#include "clipboard/image_history.h"

#include <array>

namespace marbelot {

ImageHistory::ImageHistory(Platform& platform, Shell& shell, const ClipboardHistory& history)
    : history_(history), images_(platform.queue, [&shell] { shell.rebuildMenu(); }) {}

std::shared_ptr<Menu> ImageHistory::imageHistoryMenu() const {
  constexpr std::array<NewestImages::Choice, 5> choices{{{"Copy to clipboard", "copyHistory:"},
                                                         {"Reveal in Finder", "revealHistory:"},
                                                         {"Copy file path", "copyPath:"},
                                                         {"Open", "openHistory:"},
                                                         {"Delete", "deleteHistory:"}}};
  auto menu = images_.menu(history_.clipImagesFolder(), "No images yet", choices);
  menu->addSeparator();
  menu->add("Open copied-images folder", "openClipImagesFolder");
  menu->add("Open captures folder", "openCapturesFolder");
  return menu;
}

}  // namespace marbelot
