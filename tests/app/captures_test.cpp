// Captures and their history in the application over services in memory, with real files.

#include "platform/text.h"
#include "tests/app/app_fixture.h"
#include "tests/support/png.h"
#include "tests/support/screenshot_mark.h"

namespace marbelot {
namespace {

using memory::itemAt;
using Words = std::vector<std::string>;

class CapturesTest : public ApplicationTest {
 protected:
  CapturesTest() { std::filesystem::create_directory(home_ / "Desktop"); }
  // As it is once everything that opening it asks for has arrived.
  const Menu& menu() override {
    ApplicationTest::menu();
    desktop_.queue.drain();
    desktop_.queue.advance(0);
    return *desktop_.statusItem.menu;
  }
  Titles titles(const Menu& shown) {
    Titles all;
    for (const MenuItemRef& item : shown.items) all.push_back(item->separator ? "-" : item->title);
    return all;
  }
  Titles captures() { return titles(*itemAt(menu(), {"Capture history"})->submenu); }
  void perform(const std::string& action, const std::string& object) {
    EXPECT_EQ(desktop_.application.ask("InvokeActionOn", {action, object}), "");
    desktop_.queue.drain();
  }
  // The last capture ends with a picture of that width, or with none.
  void end(unsigned width, const std::string& problem = {}) {
    const auto capture = desktop_.screenCapture.captures.back();
    capture.end(width ? png(width) : nullptr, problem);
    desktop_.queue.drain();
  }
  Words asked() const { return desktop_.screenCapture.captures.back().arguments; }
  std::size_t started() const { return desktop_.screenCapture.captures.size(); }
  bool isAlive(std::size_t index) const { return desktop_.screenCapture.captures[index].isAlive(); }
  int clipboardWidth() {
    const auto image = desktop_.pasteboard.contents().image;
    return image ? image->width() : 0;
  }
  std::string save(const std::string& name, int minutesAgo, const std::string& bytes = *png(1)) {
    const std::string path = folder_ + "/" + name;
    writeFile(path, bytes);
    std::filesystem::last_write_time(
        path, std::filesystem::file_time_type::clock::now() - std::chrono::minutes(minutesAgo));
    return path;
  }

  const std::string folder_ = home_ / "Pictures/Marbelot";
};

TEST_F(CapturesTest, EachCommandAsksForItsPictureAndAnnouncesIt) {
  launch();
  const struct {
    Words path, arguments;
    const char* message;
  } commands[] = {
      {{"Capture screenshot", "Area (drag a rectangle)"}, {"-i"}, "Captured: Area selection"},
      {{"Capture screenshot", "Window", "Click a window…"}, {"-i", "-w"}, "Captured: Window"},
      {{"Capture screenshot", "Full screen"}, {"-x"}, "Captured: Full screen"}};
  unsigned width = 100;
  for (const auto& command : commands) {
    choose(command.path);
    EXPECT_EQ(asked(), command.arguments);
    end(++width);
    EXPECT_EQ(clipboardWidth(), static_cast<int>(width));
    EXPECT_EQ(desktop_.notices.last(), command.message);
    EXPECT_EQ(desktop_.notices.posted.back().title, "Screenshot copied to clipboard");
    EXPECT_EQ(desktop_.statusItem.symbols.back(), "checkmark.circle.fill");
    EXPECT_TRUE(itemAt(menu(), {"Copied this session: " + std::to_string(width - 100)}));
    const std::string name = files::lastComponent(desktop_.screenCapture.captures.back().path);
    EXPECT_TRUE(itemAt(menu(), {"Last: " + name}));
    EXPECT_TRUE(name.starts_with("Capture 2") && name.ends_with(".png") &&
                name.find(" at ") != name.npos);
    EXPECT_EQ(captures()[0], name);
  }
  EXPECT_TRUE(std::filesystem::is_directory(folder_));

  const std::size_t posted = desktop_.notices.posted.size();
  choose(commands[0].path);
  end(0);
  EXPECT_EQ(desktop_.notices.posted.size(), posted) << "given up";
  choose(commands[0].path);
  end(0, "install the tool");
  EXPECT_EQ(desktop_.notices.last(), "install the tool");
  EXPECT_TRUE(itemAt(menu(), {"Copied this session: 3"}));

  // What cannot be read is counted, and leaves the clipboard alone.
  choose(commands[2].path);
  desktop_.screenCapture.captures.back().end(share("no picture"));
  desktop_.queue.drain();
  EXPECT_EQ(clipboardWidth(), 103);
  EXPECT_EQ(desktop_.notices.last(), "Captured: Full screen");
  EXPECT_TRUE(itemAt(menu(), {"Copied this session: 4"}));
}

TEST_F(CapturesTest, TheNextCommandTakesThePlaceOfASelection) {
  launch();
  const Words area{"Capture screenshot", "Area (drag a rectangle)"};
  const Words screen{"Capture screenshot", "Full screen"};
  choose(area);
  choose(area);
  EXPECT_FALSE(isAlive(0));
  EXPECT_TRUE(isAlive(1));
  choose(screen);
  EXPECT_FALSE(isAlive(1)) << "its rectangle would be in the picture";
  choose(screen);
  EXPECT_TRUE(isAlive(2)) << "there is nothing left to choose";
  ASSERT_EQ(started(), 4U);
  EXPECT_NE(desktop_.screenCapture.captures[2].path, desktop_.screenCapture.captures[3].path)
      << "both of the same second";
  desktop_.screenCapture.captures[2].end(png(30));
  end(40);
  EXPECT_TRUE(itemAt(menu(), {"Copied this session: 2"}));
  EXPECT_EQ(captures().size(), 2U + 3) << "and the items below them";
  choose(area);
  const auto chosen = desktop_.screenCapture.captures.back();
  chosen.taken();
  choose(area);
  EXPECT_TRUE(chosen.isAlive()) << "its picture is being saved";
  end(50);
  chosen.end(png(60));
  desktop_.queue.drain();
  EXPECT_TRUE(itemAt(menu(), {"Copied this session: 4"}));
}

TEST_F(CapturesTest, TheCountdownTakesThreeSecondsAndIsGoneThen) {
  launch();
  choose({"Capture screenshot", "3-2-1 countdown"});
  EXPECT_TRUE(*desktop_.defaults.stored.at("countdownEnabled").asBool());
  EXPECT_EQ(titles(*itemAt(menu(), {"Capture screenshot"})->submenu),
            (Titles{"Area (drag a rectangle) — after 3-2-1", "Window", "Full screen — after 3-2-1",
                    "-", "3-2-1 countdown"}));
  EXPECT_TRUE(itemAt(menu(), {"Capture screenshot", "3-2-1 countdown"})->checked);

  choose({"Capture screenshot", "Full screen — after 3-2-1"});
  const auto* window = desktop_.windows.find("countdown");
  ASSERT_TRUE(window);
  for (const char* digit : {"3", "2", "1"}) {
    EXPECT_TRUE(window->shown);
    EXPECT_EQ(*window->text("countdownLabel"), digit);
    desktop_.queue.advance(1);
  }
  EXPECT_FALSE(window->shown);
  EXPECT_EQ(started(), 0U);
  desktop_.queue.advance(0.11);
  EXPECT_EQ(started(), 0U);
  desktop_.queue.advance(0.02);
  EXPECT_EQ(asked(), Words{"-x"});
  end(20);

  // Another command starts it anew, and only that one is carried out.
  choose({"Capture screenshot", "Full screen — after 3-2-1"});
  desktop_.queue.advance(2.5);
  choose({"Capture screenshot", "Area (drag a rectangle) — after 3-2-1"});
  EXPECT_EQ(*window->text("countdownLabel"), "3");
  desktop_.queue.advance(10);
  EXPECT_EQ(started(), 2U);
  EXPECT_EQ(asked(), Words{"-i"});
  EXPECT_EQ(desktop_.windows.find("countdown"), window) << "the one of before";
}

TEST_F(CapturesTest, ProgramsAreListedByNameAndTakenByTheirFrontWindow) {
  launch();
  EXPECT_EQ(titles(*itemAt(menu(), {"Capture screenshot", "Window"})->submenu),
            (Titles{"Click a window…", "-", "No other apps running"}));
  const Image icon = Image::fromPixels(std::make_shared<const Bitmap>(*Bitmap::makeClear(32, 32)));
  desktop_.screenCapture.applications = {
      {30, "zebra", icon}, {31, "Ärger", {}}, {32, "", {}}, {33, "Blue\nnote", {}}};
  const auto windows = itemAt(menu(), {"Capture screenshot", "Window"})->submenu;
  EXPECT_EQ(titles(*windows),
            (Titles{"Click a window…", "-", "Unknown", "Ärger", "Blue\nnote", "zebra"}));
  EXPECT_TRUE(windows->items.back()->image);

  desktop_.screenCapture.frontWindows[30] = 4711;
  choose({"Capture screenshot", "Window", "zebra"});
  EXPECT_EQ(desktop_.screenCapture.activated, std::vector<std::int64_t>{30});
  EXPECT_EQ(started(), 0U);
  desktop_.queue.advance(0.44);
  EXPECT_EQ(started(), 0U);
  desktop_.queue.advance(0.02);
  EXPECT_EQ(asked(), (Words{"-x", "-o", "-l", "4711"}));
  end(50);
  EXPECT_EQ(desktop_.notices.last(), "Captured: App window");

  choose({"Capture screenshot", "Window", "Ärger"});
  desktop_.queue.advance(0.5);
  EXPECT_EQ(asked(), (Words{"-i", "-w"})) << "it has no window on the screen";
  end(0);

  for (const char* notRunning : {"77", "zebra"}) perform("captureApp:", notRunning);
  desktop_.queue.advance(1);
  EXPECT_EQ(started(), 2U);
  EXPECT_EQ(desktop_.screenCapture.activated.size(), 2U);
}

TEST_F(CapturesTest, ACaptureInTheWatchedFolderIsCountedOnce) {
  std::filesystem::create_directories(folder_);
  std::filesystem::create_directory_symlink(folder_, home_ / "Shots");
  writeFile(home_ / "config/marbelot/com.apple.screencapture.json", R"({"location": "~/Shots"})");
  launch();
  choose({"Capture screenshot", "Full screen"});
  const auto capture = desktop_.screenCapture.captures.back();
  writeFile(capture.path, *png(60));
  markScreenshot(capture.path);  // as the system's own tool does
  desktop_.folderEvents.fire();
  desktop_.queue.advance(1);
  capture.finished("");
  desktop_.queue.drain();
  desktop_.folderEvents.fire();
  desktop_.queue.advance(2);
  EXPECT_TRUE(itemAt(menu(), {"Copied this session: 1"}));
  EXPECT_EQ(desktop_.notices.posted.size(), 1U);
  // Another program's screenshot in the same folder is copied as ever.
  const std::string other = save("Screenshot 1.png", 0, *png(70));
  markScreenshot(other);
  desktop_.folderEvents.fire();
  desktop_.queue.advance(2);
  EXPECT_TRUE(itemAt(menu(), {"Copied this session: 2"}));
}

TEST_F(CapturesTest, TheHistoryShowsTheNewestAndActsOnThem) {
  launch();
  EXPECT_EQ(captures(), (Titles{"No captures yet", "-", "Open captures folder", "Clear history…"}));
  for (int i = 0; i < 20; ++i) save("Capture " + std::to_string(i) + ".png", 20 + i);
  save(".hidden.png", 0);
  save("notes.txt", 0);
  std::filesystem::create_directory(folder_ + "/folder.png");
  const std::string newest = save("drawn.JPG", 1);

  desktop_.queue.holdBackground = true;  // a slow disk: what is known is shown meanwhile
  desktop_.statusItem.open();
  EXPECT_EQ(itemAt(*desktop_.statusItem.menu, {"Capture history"})->submenu->items[0]->title,
            "No captures yet");
  desktop_.queue.holdBackground = false;
  const Titles shown = captures();
  ASSERT_EQ(shown.size(), 15U + 3);
  EXPECT_EQ(shown[0], "drawn.JPG");
  EXPECT_EQ(shown[14], "Capture 13.png");

  EXPECT_EQ(titles(*itemAt(menu(), {"Capture history", "drawn.JPG"})->submenu),
            (Titles{"Copy to clipboard", "Open", "Reveal in Finder", "Delete", "Edit image"}));
  choose({"Capture history", "drawn.JPG", "Copy to clipboard"});
  EXPECT_EQ(desktop_.notices.last(), "Copied: drawn.JPG");
  save("drawn.JPG", 1, *png(9));
  EXPECT_EQ(pngBytes(*desktop_.pasteboard.contents().image)->compare(*png(1)), 0)
      << "as it was when it was copied";
  EXPECT_TRUE(itemAt(menu(), {"Copied this session: 0"}));
  choose({"Capture history", "drawn.JPG", "Open"});
  choose({"Capture history", "drawn.JPG", "Reveal in Finder"});
  choose({"Capture history", "drawn.JPG", "Delete"});
  choose({"Capture history", "Open captures folder"});
  EXPECT_EQ(desktop_.workspace.opened, (Titles{newest, folder_}));
  EXPECT_EQ(desktop_.workspace.revealed, Titles{newest});
  EXPECT_EQ(desktop_.workspace.trashed, Titles{newest});
  std::filesystem::remove(newest);
  EXPECT_EQ(captures()[0], "Capture 0.png");
  writeFile(newest, "no picture");
  perform("copyHistory:", newest);
  EXPECT_EQ(desktop_.notices.last(), "Couldn't read the image");

  choose({"Capture history", "Clear history…"});
  const Alert& alert = desktop_.dialogs.shown.back();
  EXPECT_EQ(alert.message, "Clear capture history?");
  EXPECT_EQ(alert.informative, "All Marbelot captures will be moved to the Trash.");
  EXPECT_EQ(alert.buttons, (Titles{"Move to Trash", "Cancel"}));
  desktop_.dialogs.answer(1);
  desktop_.queue.drain();
  EXPECT_EQ(desktop_.workspace.trashed.size(), 1U);
  choose({"Capture history", "Clear history…"});
  desktop_.dialogs.answer(0);
  desktop_.queue.drain();
  EXPECT_EQ(desktop_.workspace.trashed.size(), 1U + 21) << "not only what the menu shows";
}

}  // namespace
}  // namespace marbelot
