// A history over services in memory, with files in a folder of its own.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "clipboard/clipboard_history.h"
#include "platform/files.h"
#include "platform/memory/memory_platform.h"
#include "tests/support/png.h"

namespace marbelot {

class MemoryShell : public Shell {
 public:
  explicit MemoryShell(memory::MemoryPlatform& desktop) : desktop_(desktop) {}
  void notify(const std::string& message) override { desktop_.notices.post("", message); }
  void flashStatusIcon() override { ++flashes; }
  void rebuildMenu() override { ++rebuilds; }
  bool copyWithoutRecording(SharedText text, bool concealed) override {
    return history->copyWithoutRecording(text, concealed);
  }
  bool copyWithoutRecording(const Image& image, bool concealed) override {
    return history->copyWithoutRecording(image, concealed);
  }
  int flashes = 0;
  int rebuilds = 0;
  ClipboardHistory* history = nullptr;

 private:
  memory::MemoryPlatform& desktop_;
};

class HistoryTest : public testing::Test {
 protected:
  HistoryTest() {
    static const std::string base = testing::TempDir();  // before TMPDIR is changed below
    std::string folder = base + "historyXXXXXX";
    folder_ = mkdtemp(folder.data());
    setenv("TMPDIR", folder_.c_str(), 1);
    setenv("HOME", folder_.c_str(), 1);
    setenv("TZ", "UTC", 1);
    shell.history = &history;
    history.startClipPoller();
  }
  ~HistoryTest() override {
    std::filesystem::permissions(folder_, std::filesystem::perms::owner_all);
    std::filesystem::remove_all(folder_);
  }

  void poll() { desktop.queue.advance(0.6); }
  void copy(const std::string& text) {
    desktop.pasteboard.copyElsewhere(text);
    poll();
  }
  void copyImage(SharedBytes bytes) {
    PasteboardContents contents;
    contents.image = Image::fromBytes(std::move(bytes));
    ASSERT_TRUE(contents.image);
    desktop.pasteboard.copyElsewhere(std::move(contents));
    desktop.queue.advance(0.6);
  }
  std::vector<std::string> texts() const {
    std::vector<std::string> all;
    for (const ClipItem& item : history.clipHistory)
      all.push_back(item.kind.text() ? *item.kind.text() : "image");
    return all;
  }
  void perform(const std::string& action, Represented represented = {}) {
    MenuItem sender;
    sender.action = action;
    sender.represented = std::move(represented);
    EXPECT_TRUE(actions.perform(sender)) << action;
  }
  std::string stored(std::size_t index, std::string_view key) const {
    const Value::List* list = desktop.defaults.stored.at("clipTextHistory").asList();
    if (!list || index >= list->size()) return "(no entry)";
    const Value* field = find(*(*list)[index].asDictionary(), key);
    return field && field->asText() ? *field->asText() : "(no text)";
  }

  memory::MemoryPlatform desktop;
  double& now = desktop.queue.wall.emplace(1732183267.25);  // 2024-11-21 10:01:07 UTC
  MemoryShell shell{desktop};
  ActionTable actions;
  ActionTable others;  // of a second history
  ClipboardHistory history{desktop.platform, shell, actions};
  std::string folder_;
};

}  // namespace marbelot
