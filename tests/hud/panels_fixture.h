// The whole application's panels over services in memory.
#pragma once

#include <gtest/gtest.h>

#include <cstring>

#include "app/app_delegate.h"
#include "platform/image_codec.h"
#include "platform/memory/memory_platform.h"
#include "tests/support/recorded_painter.h"
#include "tests/support/temporary_home.h"

namespace marbelot {

class PanelsTest : public testing::Test {
 protected:
  PanelsTest() { launch(); }
  // Images are being saved.
  ~PanelsTest() override { end(); }

  void launch() {
    end();
    application_ = std::make_unique<AppDelegate>(desk_.platform);
    application_->applicationDidFinishLaunching();
    desk_.queue.drain();
  }
  void end() {
    desk_.queue.drain();
    desk_.queue.ending = true;
    application_.reset();
    desk_.queue.ending = false;
  }
  static Image picture(int width, int height, std::uint8_t mark = 200) {
    Bitmap bitmap = *Bitmap::make(width, height);
    for (int y = 0; y < height; ++y) std::memset(bitmap.row(y), 255, std::size_t{4} * width);
    std::memset(bitmap.row(0), mark, 3);
    return Image::fromPixels(std::make_shared<const Bitmap>(std::move(bitmap)));
  }
  void copy(const std::string& text) {
    desk_.pasteboard.copyElsewhere(text, true);
    desk_.queue.drain();
  }
  void copy(const Image& image) {
    PasteboardContents contents;
    contents.image = image;
    desk_.pasteboard.copyElsewhere(contents, true);
    desk_.queue.drain();
  }
  void perform(const std::string& action, Represented represented = {}) {
    MenuItem sender;
    sender.action = action;
    sender.represented = std::move(represented);
    desk_.statusItem.delegate->menuItemChosen(sender);
    desk_.queue.drain();
  }
  // The first item of the history whose title has `part` in it, however deep.
  MenuItemRef inMenu(const std::string& part) {
    desk_.statusItem.open();
    MenuItemRef found;
    const auto look = [&](const auto& self, const Menu& menu) -> void {
      for (const MenuItemRef& item : menu.items) {
        if (!found && item->title.find(part) != std::string::npos) found = item;
        if (!found && item->submenu) self(self, *item->submenu);
      }
    };
    look(look, *memory::itemAt(*desk_.statusItem.menu, {"Clipboard history"})->submenu);
    return found;
  }
  // The window of that kind if it can be seen.
  memory::MemoryWindow* shown(const std::string& id) {
    for (memory::MemoryWindow* window : desk_.windows.live)
      if (window->description.id == id && window->shown && !window->fading) return window;
    return nullptr;
  }
  // What its canvas draws.
  static RecordedPainter face(memory::MemoryWindow* window, const std::string& view = "face") {
    const View* found = window ? window->find(view) : nullptr;
    const auto* canvas = found ? std::get_if<Canvas>(&found->content) : nullptr;
    return canvas ? drawn(*canvas->delegate, found->frame.size()) : RecordedPainter();
  }
  static CanvasDelegate& canvas(memory::MemoryWindow* window, const std::string& view = "face") {
    return *std::get<Canvas>(window->find(view)->content).delegate;
  }
  void press(memory::MemoryWindow* window, const std::string& id) {
    ASSERT_TRUE(window && window->press(id)) << id;
    desk_.queue.advance(0);
    desk_.queue.drain();
  }
  static void click(CanvasDelegate& canvas) {
    canvas.mouseDown({{5, 5}});
    canvas.mouseUp({{5, 5}});
  }
  static std::string specs(memory::MemoryWindow* window) {
    std::string all;
    for (const View& view : std::get<Canvas>(window->find("face")->content).views)
      all += view.id + " ";
    return all;
  }
  std::string clipboardSize() {
    const auto image = desk_.pasteboard.contents().image;
    return image ? std::to_string(image->width()) + "x" + std::to_string(image->height()) : "none";
  }
  std::string last() const { return desk_.notices.last(); }

  TemporaryHome home_;
  memory::MemoryPlatform desk_;
  std::unique_ptr<AppDelegate> application_;
};

}  // namespace marbelot
