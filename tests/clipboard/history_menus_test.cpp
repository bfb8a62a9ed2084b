#include "clipboard/history_menus.h"

#include <set>

#include "capture/capture_history.h"
#include "clipboard/clip_preview.h"
#include "clipboard/image_history.h"
#include "tests/clipboard/history_fixture.h"

namespace marbelot {
namespace {

const std::string key = "ghp_abcdefghijklmnopqrstuv";

class HistoryMenusTest : public HistoryTest {
 protected:
  std::vector<std::string> titles(const Menu& menu) const {
    std::vector<std::string> all;
    for (const MenuItemRef& item : menu.items) all.push_back(item->separator ? "—" : item->title);
    return all;
  }
  MenuItemRef entry(std::size_t index) {
    return menus.clipboardHistoryMenu()->items.at(index + 1);  // after the filter
  }
  void choose(std::size_t index, const std::string& title) {
    const MenuItemRef item = memory::itemAt(*entry(index)->submenu, {title});
    ASSERT_TRUE(item) << title;
    EXPECT_TRUE(actions.perform(*item));
  }

  TextAnalyses analyses{desktop.queue};
  HistoryMenus menus{desktop.platform, shell, actions, history, analyses};
  CaptureHistory captures{desktop.platform, shell, actions};
  ImageHistory images{desktop.platform, shell, history};
  std::shared_ptr<Menu> listedImages() {
    images.refresh();
    desktop.queue.drain();
    return images.imageHistoryMenu();
  }
};

using Titles = std::vector<std::string>;

TEST_F(HistoryMenusTest, AnEmptyHistorySaysSo) {
  for (const auto& menu : {menus.clipboardHistoryMenu(), menus.clipboardByTypeMenu()}) {
    EXPECT_EQ(titles(*menu), Titles{"No clipboard history yet"});
    EXPECT_FALSE(menu->items[0]->enabled);
  }
}

TEST_F(HistoryMenusTest, EntriesAreMaskedFilteredAndGrouped) {
  copy("plain\r\ntext");
  copy("the key is " + key);
  copyImage(png(640));
  copy("import os\n\ndef main():\n    return os.name");

  EXPECT_EQ(
      titles(*menus.clipboardHistoryMenu()),
      (Titles{"Filter by type — All", "\U0001F9E9 Python “import os⏎⏎def main():⏎return os.name”",
              "\U0001F5BC Image 640 × 20", "\U0001F511 “the key is ghp_***stuv”",
              "\U0001F4DD “plain⏎text”", "—", "Clear clipboard history"}));
  EXPECT_EQ(titles(*menus.clipboardByTypeMenu()),
            (Titles{"\U0001F511 API keys", "\U0001F9E9 Source code", "\U0001F4DD Text",
                    "\U0001F5BC Images", "—", "Clear clipboard history"}));
  EXPECT_EQ(menuJson(*menus.clipboardHistoryMenu()).find(key), std::string::npos);
  EXPECT_EQ(menuJson(*menus.clipboardByTypeMenu()).find(key), std::string::npos);

  EXPECT_EQ(titles(*entry(2)->submenu), (Titles{"Copy to clipboard", "Reveal full value", "Edit…",
                                                "Save as canned response", "Delete"}));
  EXPECT_EQ(titles(*entry(3)->submenu),
            (Titles{"Copy to clipboard", "Edit…", "Save as canned response", "Delete"}));
  EXPECT_EQ(titles(*entry(1)->submenu),
            (Titles{"Copy to clipboard", "Scan text (OCR)…", "Copy as <img> tag (base64)",
                    "Reveal in Finder", "Copy file path", "Delete", "Edit image"}));
  EXPECT_EQ(std::get<std::int64_t>(entry(2)->represented), 2);
  EXPECT_EQ(std::get<SharedText>(entry(2)->payload->content), history.clipHistory[2].kind.text());

  const Titles filters = titles(*entry(-1)->submenu);
  EXPECT_EQ(filters.size(), 12u);
  EXPECT_EQ(filters[0], "All (4)");
  EXPECT_EQ(filters[1], "\U0001F511 API keys (1)");
  EXPECT_EQ(filters[2], "\U0001F512 Passwords (0)");
  EXPECT_EQ(filters[11], "\U0001F5BC Images (1)");

  perform("setClipTypeFilter:", std::int64_t{0});
  auto menu = menus.clipboardHistoryMenu();
  EXPECT_EQ(titles(*menu),
            (Titles{"Filter by type — API keys", "\U0001F511 “the key is ghp_***stuv”", "—",
                    "Clear clipboard history"}));
  EXPECT_EQ(std::get<std::int64_t>(menu->items[1]->represented), 2) << "index in the history";
  EXPECT_TRUE(menu->items[0]->submenu->items[1]->checked);
  EXPECT_FALSE(menu->items[0]->submenu->items[0]->checked);
  perform("setClipTypeFilter:", std::int64_t{1});
  EXPECT_EQ(titles(*menus.clipboardHistoryMenu()),
            (Titles{"Filter by type — Passwords", "—", "Clear clipboard history"}));
  for (const Represented& bad : {Represented(std::int64_t{12}), Represented(std::int64_t{-1}),
                                 Represented(std::string("0")), Represented(true), Represented()})
    perform("setClipTypeFilter:", bad);
  EXPECT_EQ(history.clipTypeFilter, ClipCategory::password);
  perform("setClipTypeFilter:", noClipTypeFilter);
  EXPECT_FALSE(history.clipTypeFilter);
}

TEST_F(HistoryMenusTest, TextsWithTheSameBeginningReadDifferently) {
  const std::string beginning(500, 'a'), end(500, 'z');
  const Titles alike = {beginning + "1",
                        beginning + "2",
                        beginning + "3" + end,
                        beginning + "4" + end,
                        "x",
                        "x ",
                        "x\n",
                        beginning + " " + key + " " + end,
                        beginning + " " + end,
                        beginning + "\n" + end};
  for (const std::string& text : alike) copy(text);
  copy("same");
  now += 1;
  copy("between");
  copy("same");
  std::set<std::string> seen;
  for (std::size_t i = 0; i < history.clipHistory.size(); ++i) {
    const std::string title = entry(i)->title;
    EXPECT_TRUE(seen.insert(title).second) << title;
    EXPECT_LE(text::characterCount(title), 80u) << title;
    EXPECT_EQ(title.find(key.substr(0, 12)), std::string::npos);
  }
}

TEST_F(HistoryMenusTest, TitlesNeverUndoTheMaskNorBreakTheMenu) {
  // The cut falls at every place of the secret and around it.
  for (std::size_t before = 0; before < 120; ++before) {
    const std::string title = analyse(std::string(before, 'a') + " " + key + " b").title;
    EXPECT_EQ(title.find("efgh"), std::string::npos) << title;
  }
  std::string marks = "e";
  for (int i = 0; i < 100'000; ++i) marks += "\u0301";
  EXPECT_LT(analyse(marks + marks).title.size(), 4096u) << "one character of 200 kB";
  EXPECT_EQ(analyse("a\tb\u202Ec\x01"
                    "d   e\n\t  f")
                .title,
            "“a bcd e⏎f”");
}

TEST_F(HistoryMenusTest, LargeTextsAreAnalysedInTheBackgroundAndShowNothingUntilThen) {
  int arrivals = 0;
  analyses.onArrival = [&] { ++arrivals; };
  desktop.queue.holdBackground = true;
  copy(key + std::string(1'200'000, ' ') + key);
  EXPECT_EQ(entry(0)->title, "\U0001F4DD Text, 1.2 MB");
  EXPECT_EQ(clipPreviewTitle(desktop.pasteboard.contents(), false, analyses), "Text, 1.2 MB");
  desktop.queue.holdBackground = false;
  desktop.queue.drain();
  EXPECT_EQ(arrivals, 1) << "one analysis, whoever asked";
  EXPECT_EQ(entry(0)->title, "\U0001F511 “ghp_***stuv … ghp_***stuv”");

  const std::weak_ptr known = analyses.of(history.clipHistory[0].kind.text());
  analyses.forgetGone();
  EXPECT_FALSE(known.expired());
  perform("clearClipHistory");
  (void)desktop.pasteboard.write(share(""));
  history.tick();
  analyses.forgetGone();
  EXPECT_TRUE(known.expired()) << "goes with its text";

  // Many short texts at once may not add up to a missed frame either.
  desktop.queue.holdBackground = true;
  for (int i = 0; i < 10; ++i) desktop.pasteboard.copyElsewhere(std::string(8000, char('a' + i)));
  history.tick();
  int provisional = 0;
  const auto menu = menus.clipboardHistoryMenu();
  for (const auto& item : menu->items)
    provisional += item->title.starts_with("\U0001F4DD Text, 8.0 kB");
  EXPECT_EQ(provisional, 6);
  desktop.queue.holdBackground = false;
  desktop.queue.advance(0);
  EXPECT_EQ(arrivals, 7);
}

TEST_F(HistoryMenusTest, CopyingAnEntryMovesItToTheFront) {
  for (const char* text : {"a", "b", "c"}) copy(text);
  choose(2, "Copy to clipboard");
  poll();
  EXPECT_EQ(texts(), (std::vector<std::string>{"a", "c", "b"}));
  EXPECT_EQ(stored(0, "text"), "a");
  EXPECT_EQ(*desktop.pasteboard.contents().text, "a");
  EXPECT_EQ(desktop.notices.last(), "Copied text from history");
  EXPECT_EQ(shell.flashes, 1);
  copyImage(png(9));
  choose(1, "Copy to clipboard");
  choose(1, "Copy to clipboard");
  poll();
  EXPECT_EQ(desktop.notices.last(), "Copied image from history");
  EXPECT_EQ(texts().size(), 4u);
}

TEST_F(HistoryMenusTest, ACopyThatFailsIsNotAnnouncedAndMovesNothing) {
  copy("a");
  copyImage(png(9));
  std::filesystem::resize_file(*history.clipHistory[0].savedPath, 20);
  choose(0, "Copy to clipboard");
  EXPECT_EQ(desktop.notices.last(), "Couldn't write to the clipboard");
  desktop.pasteboard.refuses = true;
  for (const char* title : {"Copy to clipboard", "Copy file path"}) {
    desktop.notices.posted.clear();
    choose(title == std::string("Copy to clipboard") ? 1 : 0, title);
    EXPECT_EQ(desktop.notices.last(), "Couldn't write to the clipboard") << title;
  }
  EXPECT_EQ(shell.flashes, 0);
  EXPECT_EQ(texts(), (std::vector<std::string>{"image", "a"}));
  desktop.pasteboard.refuses = false;
  copy("b");
  EXPECT_EQ(texts().front(), "b") << "the failed writes left the count alone";
}

TEST_F(HistoryMenusTest, AMenuOpenWhileTheHistoryMovesActsOnWhatItShows) {
  for (int i = 0; i < 40; ++i) copy(std::to_string(i));
  const auto menu = menus.clipboardHistoryMenu();
  const auto item = [&](std::size_t index, const char* title) {
    return memory::itemAt(*menu->items[index + 1]->submenu, {title});
  };
  copy("newer");
  EXPECT_EQ(menus.clipboardHistoryMenu()->items.size(), 43u);
  EXPECT_TRUE(actions.perform(*item(0, "Delete")));
  EXPECT_EQ(texts()[0], "newer");
  EXPECT_EQ(texts()[1], "38");
  EXPECT_TRUE(actions.perform(*item(0, "Delete")));
  EXPECT_EQ(texts().size(), 39u) << "gone already";

  copy("fills");
  desktop.pasteboard.copyElsewhere("not polled yet");
  EXPECT_TRUE(actions.perform(*item(38, "Copy to clipboard")));  // pushed out by that very copy
  EXPECT_EQ(texts()[0], "1");
  EXPECT_EQ(texts()[1], "not polled yet");
  EXPECT_EQ(texts().size(), 40u);
}

TEST_F(HistoryMenusTest, ABadSenderDoesNothing) {
  copy("only");
  for (const char* action :
       {"copyClipHistory:", "revealClipValue:", "revealClipHistory:", "copyClipHistoryPath:",
        "deleteClipHistory:", "copyPath:", "copyHistory:", "openHistory:", "revealHistory:",
        "deleteHistory:", "setArchiveLocation:"}) {
    for (const Represented& bad :
         {Represented(), Represented(std::int64_t{1}), Represented(std::int64_t{-1}),
          Represented(std::int64_t{1} << 40)})
      perform(action, bad);
  }
  perform("deleteClipHistory:", "0");
  perform("revealClipHistory:", std::int64_t{0});  // a text has no file
  perform("copyClipHistoryPath:", std::int64_t{0});
  EXPECT_EQ(texts(), Titles{"only"});
  EXPECT_TRUE(desktop.notices.posted.empty());
  EXPECT_TRUE(desktop.dialogs.shown.empty());
  EXPECT_TRUE(desktop.workspace.revealed.empty());
  EXPECT_EQ(shell.flashes, 0);
}

TEST_F(HistoryMenusTest, ASecretIsRevealedOnlyWhenAskedFor) {
  const std::string whole = std::string(100'000, 'x') + "\n" + key;
  copy(whole);
  menus.clipboardHistoryMenu();
  desktop.queue.drain();  // what a long text is comes to be known in the background
  SharedText revealed;
  menus.onReveal = [&](const SharedText& text) { revealed = text; };
  choose(0, "Reveal full value");
  ASSERT_TRUE(revealed);
  EXPECT_EQ(*revealed, whole);
}

TEST_F(HistoryMenusTest, AnImageWithoutAFileGetsOneWhenItIsAskedFor) {
  history.autoSaveClipImages = false;
  copyImage(png(1));
  choose(0, "Reveal in Finder");
  const std::string path = history.clipHistory[0].savedPath.value_or("none");
  EXPECT_EQ(desktop.workspace.revealed, Titles{path});
  EXPECT_EQ(stored(0, "path"), path);
  choose(0, "Copy file path");
  EXPECT_EQ(*desktop.pasteboard.contents().text, path);
  EXPECT_EQ(desktop.notices.last(), "Copied file path");
  poll();
  EXPECT_EQ(texts().size(), 1u);

  std::filesystem::remove(path);  // written anew from what the item still holds
  now += 60;
  choose(0, "Reveal in Finder");
  EXPECT_NE(history.clipHistory[0].savedPath, path);
  EXPECT_TRUE(files::exists(*history.clipHistory[0].savedPath));

  std::filesystem::remove_all(history.clipImagesFolder());
  files::create(folder_ + "/blocked", "");
  setenv("TMPDIR", (folder_ + "/blocked").c_str(), 1);
  for (const char* title : {"Reveal in Finder", "Copy file path"}) {
    choose(0, title);
    EXPECT_EQ(desktop.notices.last(), "Couldn't save image to a file");
    desktop.notices.posted.clear();
  }
}

TEST_F(HistoryMenusTest, ThePreviewLineTellsWhatIsOnTheClipboard) {
  PasteboardContents contents;
  EXPECT_EQ(clipPreviewTitle(contents, false, analyses), "(empty)");
  EXPECT_EQ(clipPreviewTitle(contents, true, analyses), "(empty)");
  contents.text = share("");
  EXPECT_EQ(clipPreviewTitle(contents, false, analyses), "(empty)");
  contents.text = share("my key\n" + key);
  EXPECT_EQ(clipPreviewTitle(contents, false, analyses), "“my key⏎ghp_***stuv”");
  EXPECT_EQ(clipPreviewTitle(contents, true, analyses), "(hidden by its owner)");
  contents.image = Image::fromBytes(png(30));
  EXPECT_EQ(clipPreviewTitle(contents, false, analyses), "Image 30 × 20");
}

TEST_F(HistoryMenusTest, ImageHistoryListsTheNewestFiles) {
  EXPECT_EQ(titles(*images.imageHistoryMenu())[0], "Reading the folder…");
  EXPECT_EQ(titles(*listedImages()),
            (Titles{"No images yet", "—", "Open copied-images folder", "Open captures folder"}));
  const std::string folder = history.clipImagesFolder() + "/";
  using std::filesystem::file_time_type;
  const auto start = file_time_type::clock::now();
  const auto add = [&](const std::string& name, int seconds) {
    files::create(folder + name, *png(1));
    std::filesystem::last_write_time(folder + name, start + std::chrono::seconds(seconds));
  };
  for (int i = 0; i < 18; ++i) add("Clip " + std::to_string(i) + ".png", i * (i % 2 ? 1 : -1));
  for (const char* other : {"note.txt", ".hidden.png", "x.gif"}) add(other, 100);
  std::filesystem::create_directory(folder + "folder.png");
  add("drawn.JPG", 50);
  auto menu = listedImages();
  ASSERT_EQ(menu->items.size(), 18u);
  EXPECT_EQ(menu->items[0]->title, "drawn.JPG");
  EXPECT_EQ(menu->items[1]->title, "Clip 17.png");
  EXPECT_EQ(titles(*menu->items[1]->submenu),
            (Titles{"Copy to clipboard", "Reveal in Finder", "Copy file path", "Open", "Delete",
                    "Edit image"}));
  for (const auto& item : menu->items[1]->submenu->items) {
    EXPECT_TRUE(item->submenu || actions.perform(*item));
    desktop.queue.drain();
  }
  EXPECT_EQ(desktop.notices.posted[0].text, "Copied: Clip 17.png");
  EXPECT_EQ(shell.flashes, 2);
  EXPECT_EQ(desktop.workspace.revealed, Titles{folder + "Clip 17.png"});
  EXPECT_EQ(desktop.workspace.opened, Titles{folder + "Clip 17.png"});
  EXPECT_EQ(desktop.workspace.trashed, Titles{folder + "Clip 17.png"});
  EXPECT_EQ(texts(), Titles{"image"}) << "a copied file is recorded like any copy";

  std::filesystem::remove(folder + "drawn.JPG");
  files::create(folder + "late.png", "no image");
  std::filesystem::last_write_time(folder + "late.png", start + std::chrono::seconds(500));
  menu = listedImages();
  EXPECT_EQ(menu->items[0]->title, "late.png");
  EXPECT_TRUE(actions.perform(*menu->items[0]->submenu->items[0]));
  desktop.queue.drain();
  EXPECT_EQ(desktop.notices.last(), "Couldn't read the image");
}

}  // namespace
}  // namespace marbelot
