// The application over services in memory: launch, menu, settings, and what is told to whom.

#include "platform/json.h"
#include "tests/app/app_fixture.h"
#include "tests/support/png.h"
#include "tests/support/rows.h"

namespace marbelot {
namespace {

using memory::itemAt;

class AppDelegateTest : public ApplicationTest {
 protected:
  AppDelegateTest() { std::filesystem::create_directory(home_ / "Desktop"); }
  std::vector<std::string> titles() {
    std::vector<std::string> shown;
    for (const MenuItemRef& item : menu().items)
      if (!item->hidden) shown.push_back(item->separator ? "-" : item->title);
    return shown;
  }
  static std::vector<std::string> table(const std::string& name) {
    std::vector<std::string> titles;
    for (const Row& row : rowsOf("app/menus.tsv", name)) titles.push_back(row[0]);
    return titles;
  }
  void screenshot(const std::string& name) {
    writeFile(home_ / ("Desktop/" + name), *png(640));
    desktop_.folderEvents.fire();
    desktop_.queue.drain();
  }
};

TEST_F(AppDelegateTest, FirstLaunchShowsTheWholeMenuInOrder) {
  launch();
  EXPECT_EQ(desktop_.statusItem.symbols, std::vector<std::string>{"camera.on.rectangle.fill"});
  EXPECT_EQ(desktop_.statusItem.description, "Marbelot");
  EXPECT_EQ(desktop_.folderEvents.watched, std::vector<std::string>{home_ / "Desktop"});
  std::vector<std::string> shown = titles();
  for (std::string& title : shown) {
    if (const auto at = title.find(home_.path()); at != title.npos)
      title.replace(at, home_.path().size(), "~");
  }
  EXPECT_EQ(shown, table("menu"));
  const Menu& settings = *itemAt(menu(), {"Settings"})->submenu;
  std::vector<std::string> states;
  for (const MenuItemRef& item : settings.items)
    states.push_back((item->checked ? "✓ " : "") + item->title);
  EXPECT_EQ(states, table("settings"));
  EXPECT_EQ(itemAt(menu(), {"Quit Marbelot"})->key, "q");
  EXPECT_EQ(desktop_.defaults.writes, 0) << "a first launch stores nothing";
}

TEST_F(AppDelegateTest, AnOpenMenuFollowsEveryCopy) {
  launch();
  desktop_.pasteboard.copyElsewhere("before it opens", true);
  desktop_.queue.drain();
  EXPECT_EQ(desktop_.statusItem.menu->items[3]->title, "(empty)") << "built when it is looked at";
  desktop_.statusItem.open();
  EXPECT_EQ(desktop_.statusItem.menu->items[3]->title, "“before it opens”");
  const auto preview = [&] {
    desktop_.queue.advance(0);
    return desktop_.statusItem.menu->items[3]->title;
  };
  const auto copied = [&](SharedText text, bool concealed = false) {
    PasteboardContents contents;
    contents.text = std::move(text);
    contents.concealed = concealed;
    desktop_.pasteboard.copyElsewhere(std::move(contents), true);
    return preview();
  };
  EXPECT_EQ(copied(share("first copy")), "“first copy”");
  EXPECT_EQ(copied(share("open sesame"), true), "(hidden by its owner)");
  EXPECT_EQ(copied(share("first copy")), "“first copy”") << "a repeated copy is not recorded";
  EXPECT_EQ(copied(share(" ")), "“ ”");
  EXPECT_EQ(copied(nullptr), "(empty)");
  EXPECT_EQ(desktop_.application.ask("InvokeActionOn", {"copyPath:", "/a/path"}), "");
  EXPECT_EQ(preview(), "“/a/path”") << "nor is what the program held already";
}

TEST_F(AppDelegateTest, WhatATextHoldsIsOfferedWhereverTheTextIs) {
  const auto openItem = [&]() -> const MenuItem& {
    const auto& items = menu().items;
    const auto next = std::find_if(items.begin(), items.end(), [](const MenuItemRef& item) {
      return item->title == "Edit image";
    });
    return **std::prev(next);
  };
  desktop_.workspace.applications["https"] = {{"web", "Web", std::nullopt, true},
                                              {"other", "Other Web", std::nullopt, false}};
  launch();
  EXPECT_TRUE(openItem().hidden) << "nothing on the clipboard";
  desktop_.pasteboard.copyElsewhere("see https://example.com/a");
  EXPECT_FALSE(openItem().hidden) << "before the clipboard was polled";
  EXPECT_EQ(openItem().title, "Open link…");
  choose({"Open link…", "Open in Other Web"});
  EXPECT_EQ(desktop_.workspace.opened.back(), "https://example.com/a in other");
  desktop_.queue.advance(0.6);
  desktop_.pasteboard.copyElsewhere("nothing in particular");
  EXPECT_EQ(openItem().title, "Text actions…");
  desktop_.queue.advance(0.6);
  choose({"Clipboard history", "🔗 “see https://example.com/a”", "Open link…", "Copy link"});
  EXPECT_EQ(*desktop_.pasteboard.contents().text, "https://example.com/a");
  EXPECT_EQ(desktop_.notices.last(), "Copied");
  desktop_.queue.advance(1);
  EXPECT_EQ(itemAt(menu(), {"Clipboard history"})->submenu->items[1]->title,
            "📝 “nothing in particular”")
      << "what was detected is not recorded";

  PasteboardContents secret;
  secret.text = share("https://example.com/private");
  secret.concealed = true;
  desktop_.pasteboard.copyElsewhere(secret);
  EXPECT_TRUE(openItem().hidden) << "its owner asked that it be not shown";
}

TEST_F(AppDelegateTest, ReadsItsSettingsInOrder) {
  launch();
  std::vector<std::string> reads;
  for (const std::string& key : desktop_.defaults.reads)
    if (key != "recordConcealedCopies") reads.push_back(key);
  EXPECT_EQ(reads, table("reads"));
}

TEST_F(AppDelegateTest, UpdatesAreLookedForAsOftenAsTheUserWants) {
  memory::UpdateList& updates = desktop_.updates;
  launch();
  EXPECT_EQ(updates.started, 1);
  EXPECT_EQ(updates.automatic, false);
  desktop_.queue.advance(2.9);
  EXPECT_EQ(updates.backgroundChecks, 0);
  desktop_.queue.advance(0.2);
  EXPECT_EQ(updates.backgroundChecks, 1);
  choose({"Check for Updates…"});
  choose({"Settings", "Check for updates", "Check now…"});
  EXPECT_EQ(updates.checks, 2);

  const std::pair<const char*, double> intervals[] = {
      {"Every week", 604800}, {"Every 2 weeks", 1209600}, {"Monthly", 2592000}};
  for (const auto& [title, interval] : intervals) {
    choose({"Settings", "Check for updates", title});
    EXPECT_EQ(updates.automatic, true);
    EXPECT_EQ(updates.interval, interval);
    EXPECT_TRUE(itemAt(menu(), {"Settings", "Check for updates", title})->checked);
    EXPECT_FALSE(itemAt(menu(), {"Settings", "Check for updates", "On app start"})->checked);
  }
  EXPECT_EQ(*desktop_.defaults.stored.at("updateFrequency").asText(), "monthly");
  choose({"Settings", "Check for updates", "Never"});
  EXPECT_EQ(updates.automatic, false);
  desktop_.queue.advance(10);
  EXPECT_EQ(updates.backgroundChecks, 1);
  choose({"Settings", "Check for updates", "On app start"});
  desktop_.queue.advance(2.9);
  EXPECT_EQ(updates.backgroundChecks, 1);
  desktop_.queue.advance(0.2);
  EXPECT_EQ(updates.backgroundChecks, 2) << "as if it had just started";

  desktop_.application.ask("InvokeActionOn", {"setUpdateFrequency:", "7"});  // no text
  EXPECT_EQ(*desktop_.defaults.stored.at("updateFrequency").asText(), "start");
  desktop_.defaults.set("updateFrequency", "daily");
  application_.reset();
  launch();
  desktop_.queue.advance(3.1);
  EXPECT_EQ(updates.backgroundChecks, 3) << "unknown means at the start";
  EXPECT_EQ(updates.started, 2);
  EXPECT_TRUE(itemAt(menu(), {"Settings", "Check for updates", "On app start"})->checked);
}

TEST_F(AppDelegateTest, AScreenshotIsCountedNamedFlashedAndAnnounced) {
  launch();
  screenshot("Screenshot <1>.png");
  EXPECT_EQ(desktop_.notices.posted.size(), 1U);
  EXPECT_EQ(desktop_.notices.posted[0].title, "Screenshot copied to clipboard");
  EXPECT_EQ(desktop_.notices.last(), "Screenshot <1>.png");
  EXPECT_TRUE(itemAt(menu(), {"Copied this session: 1"}));
  EXPECT_FALSE(itemAt(menu(), {"Copied this session: 1"})->choosable());
  EXPECT_TRUE(itemAt(menu(), {"Last: Screenshot <1>.png"}));
  EXPECT_EQ(desktop_.statusItem.symbols.back(), "checkmark.circle.fill");
  desktop_.queue.advance(0.5);
  screenshot("Screenshot 2.png");  // a second flash during the first
  desktop_.queue.advance(0.85);
  EXPECT_EQ(desktop_.statusItem.symbols.back(), "checkmark.circle.fill");
  desktop_.queue.advance(0.1);
  EXPECT_EQ(desktop_.statusItem.symbols.back(), "camera.on.rectangle.fill");
  // It is also in the history, by the next tick at the latest.
  EXPECT_TRUE(itemAt(menu(), {"Clipboard history", "🖼 Image 640 × 20*"}));
}

TEST_F(AppDelegateTest, ATitleStandsInForAMissingSymbol) {
  desktop_.statusItem.symbolsAvailable = false;
  launch();
  EXPECT_EQ(desktop_.statusItem.title, "📸");
}

TEST_F(AppDelegateTest, LeadsFromAnUnreadableFolderToAccess) {
  std::filesystem::remove(home_ / "Desktop");
  desktop_.queue.holdBackground = true;  // the probe takes its time
  launch();
  EXPECT_EQ(titles()[1], "-");
  EXPECT_EQ(titles()[2], "On clipboard:") << "readable until the probe says otherwise";
  desktop_.queue.holdBackground = false;
  desktop_.queue.advance(2.4);
  EXPECT_EQ(titles()[2], "⚠︎ Allow screenshot access…");
  EXPECT_TRUE(desktop_.dialogs.shown.empty());
  desktop_.queue.advance(0.2);
  ASSERT_EQ(desktop_.dialogs.shown.size(), 1U);
  const Alert& alert = desktop_.dialogs.shown[0];
  EXPECT_EQ(alert.message, "Allow Marbelot to read your screenshots");
  EXPECT_NE(alert.informative.find("saves it (to " + home_ / "Desktop" + "). It can't"),
            std::string::npos);
  EXPECT_EQ(alert.buttons, (std::vector<std::string>{"Open Privacy Settings", "Later"}));
  const std::string words = home_ / "Desktop" + ": No such file or directory";
  EXPECT_EQ(alert.toolTip, words);
  EXPECT_EQ(itemAt(menu(), {"⚠︎ Allow screenshot access…"})->toolTip, words);
  EXPECT_TRUE(desktop_.notices.posted.empty());
  desktop_.dialogs.answer(1);
  EXPECT_TRUE(desktop_.workspace.privacyOpened.empty());
  choose({"⚠︎ Allow screenshot access…"});
  choose({"⚠︎ Allow screenshot access…"});
  EXPECT_EQ(desktop_.dialogs.raised.size(), 1U) << "the open one may lie behind other windows";
  desktop_.workspace.advice = "what to do";
  desktop_.dialogs.answer(0);
  EXPECT_EQ(desktop_.workspace.privacyOpened, std::vector<std::string>{home_ / "Desktop"});
  EXPECT_EQ(desktop_.notices.last(), "what to do");
  writeFile(home_ / "Desktop", "");  // another trouble
  titles();
  desktop_.queue.advance(0);
  EXPECT_EQ(itemAt(menu(), {"⚠︎ Allow screenshot access…"})->toolTip,
            home_ / "Desktop" + ": Not a directory");
  std::filesystem::remove(home_ / "Desktop");
  std::filesystem::create_directory(home_ / "Desktop");
  const int checks = desktop_.folderEvents.checks;
  titles();  // opening the menu probes again
  desktop_.queue.advance(0);
  EXPECT_EQ(desktop_.folderEvents.checks, checks + 1) << "the path may mean another folder";
  EXPECT_EQ(titles()[2], "On clipboard:");
}

TEST_F(AppDelegateTest, AReadableFolderBringsNoPrompt) {
  launch();
  desktop_.queue.advance(10);
  EXPECT_TRUE(desktop_.dialogs.shown.empty());
}

TEST_F(AppDelegateTest, TheScreenshotToolsSettingNamesTheFolder) {
  std::filesystem::create_directory(home_ / "Shots");
  writeFile(home_ / "config/marbelot/com.apple.screencapture.json", R"({"location": "~/Shots"})");
  launch();
  EXPECT_EQ(desktop_.folderEvents.watched, std::vector<std::string>{home_ / "Shots"});
  EXPECT_FALSE(itemAt(menu(), {"From the next launch: *"}));
  writeFile(home_ / "config/marbelot/com.apple.screencapture.json", R"({"location": 7})");
  choose({"Settings", "Show clipboard preview at top"});
  EXPECT_TRUE(itemAt(menu(), {"Watching: " + home_ / "Shots"})) << "what is watched, until then";
  EXPECT_TRUE(itemAt(menu(), {"From the next launch: " + home_ / "Desktop"}));
}

// A new account: the tools make their folder for the first screenshot.
TEST_F(AppDelegateTest, FollowsTheDesktopsOwnToolToTheFolderThatItMakes) {
  setenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME", 1);
  launch();
  EXPECT_TRUE(itemAt(menu(), {"Watching: " + home_ / "Desktop"}));
  screenshot("Screenshot 1.png");
  EXPECT_TRUE(itemAt(menu(), {"Copied this session: 1"}));
  std::filesystem::create_directory(home_ / "Pictures");
  desktop_.folderEvents.fire();
  desktop_.queue.drain();
  EXPECT_TRUE(itemAt(menu(), {"Watching: " + home_ / "Pictures"})) << "as older versions do";
  writeFile(home_ / "Pictures/Screenshots/Screenshot 2.png", *png(320));
  desktop_.folderEvents.fire();
  desktop_.queue.drain();
  EXPECT_TRUE(itemAt(menu(), {"Watching: " + home_ / "Pictures/Screenshots"}));
  EXPECT_TRUE(itemAt(menu(), {"Last: Screenshot 2.png"}));
  screenshot("Screenshot 3.png");
  writeFile(home_ / "Pictures/Screenshot 4.png", *png(10));
  desktop_.folderEvents.fire();
  EXPECT_TRUE(itemAt(menu(), {"Copied this session: 2"})) << "the others are watched no more";
  desktop_.queue.advance(5);
  EXPECT_TRUE(desktop_.dialogs.shown.empty());
  EXPECT_FALSE(itemAt(menu(), {"From the next launch: *"}));
}

TEST_F(AppDelegateTest, ASettingIsNotFollowedElsewhere) {
  setenv("XDG_CURRENT_DESKTOP", "KDE", 1);
  std::filesystem::create_directory(home_ / "Shots");
  writeFile(home_ / "config/spectaclerc",
            "[ImageSave]\nimageSaveLocation[$e]=file://$HOME/Shots\n");
  launch();
  EXPECT_EQ(desktop_.folderEvents.watched, std::vector<std::string>{home_ / "Shots"});
}

TEST_F(AppDelegateTest, ARefusalToTellOfChangesIsToldOnceAndShownWhileItLasts) {
  const char* line = "Looking every second: the system does not tell of changes";
  desktop_.folderEvents.refusing = true;
  launch();
  EXPECT_TRUE(itemAt(menu(), {line}));
  EXPECT_EQ(desktop_.notices.posted.size(), 1U);
  for (const bool refusing : {false, true}) {
    desktop_.folderEvents.refusing = refusing;
    desktop_.folderEvents.fire();
    desktop_.queue.drain();
    EXPECT_EQ(itemAt(menu(), {line}) != nullptr, refusing);
  }
  EXPECT_EQ(desktop_.notices.posted.size(), 1U);
  screenshot("Screenshot 1.png");
  EXPECT_TRUE(itemAt(menu(), {"Copied this session: 1"}));
}

TEST_F(AppDelegateTest, TogglesAreStoredAtOnceAndReadAtLaunch) {
  launch();
  choose({"Settings", "Show clipboard preview at top"});
  choose({"Settings", "Auto-save copied images to a file"});
  EXPECT_FALSE(itemAt(menu(), {"On clipboard:"}));
  EXPECT_FALSE(itemAt(menu(), {"Settings", "~/Pictures/Marbelot/Clipboard (kept)"})->enabled);
  application_.reset();
  launch();
  EXPECT_FALSE(itemAt(menu(), {"On clipboard:"}));
  EXPECT_FALSE(itemAt(menu(), {"Settings", "Auto-save copied images to a file"})->checked);
  choose({"Settings", "Auto-save copied images to a file"});
  choose({"Settings", "~/Pictures/Marbelot/Clipboard (kept)"});
  EXPECT_TRUE(*desktop_.defaults.stored.at("archiveClipImagesToPictures").asBool());
}

TEST_F(AppDelegateTest, SecretsAndConcealedCopiesStayOutOfTheMenu) {
  launch();
  const std::string secret =
      "Xk9#"
      "mQ2$vLwe";
  desktop_.pasteboard.copyElsewhere(secret, true);
  PasteboardContents hidden;
  hidden.text = share("the concealed one");
  hidden.concealed = true;
  desktop_.pasteboard.copyElsewhere(hidden, true);
  std::string json = desktop_.application.ask("Menu");
  EXPECT_EQ(json.find(secret), std::string::npos);
  EXPECT_EQ(json.find("concealed one"), std::string::npos);
  EXPECT_NE(json.find("Xk9#***vLwe"), std::string::npos) << json;
  desktop_.application.ask("InvokeActionOn", {"revealClipValue:", "0"});
  EXPECT_TRUE(desktop_.windows.find("hud")->isVisible()) << "with the full value";
  // What is made of it is withheld as well, once and again.
  for (const char* row : {"Trim left (leading)", "Trim right (trailing)"}) {
    choose({"Trim clipboard", row});
    desktop_.queue.advance(1);
    EXPECT_EQ(desktop_.application.ask("Menu").find("concealed one"), std::string::npos);
  }
  EXPECT_EQ(*desktop_.pasteboard.contents().text, "the concealed one");
  desktop_.defaults.set("recordConcealedCopies", true);
  EXPECT_NE(desktop_.application.ask("Menu").find("concealed one"), std::string::npos);
}

TEST_F(AppDelegateTest, RequestsFindItemsAndSayWhatIsWrong) {
  launch();
  const auto titles = [this](const std::string& joined) {
    return desktop_.application.ask("InvokeTitles", {joined});
  };
  EXPECT_EQ(titles("Settings\x1fShow clipboard preview at top"), "");
  desktop_.queue.drain();
  EXPECT_FALSE(itemAt(menu(), {"On clipboard:"}));
  EXPECT_EQ(titles("Nothing"), "the menu has no item \"Nothing\"");
  EXPECT_EQ(titles("Settings"), "\"Settings\" is a submenu");
  EXPECT_EQ(titles("Copied this session: 0"), "\"Copied this session: 0\" is disabled");
  EXPECT_EQ(titles("Quit Marbelot\x1fX"), "\"Quit Marbelot\" has no submenu");
  desktop_.pasteboard.copyElsewhere("a \n\x1b[31mb");
  EXPECT_EQ(titles("Clipboard"), "several items begin with \"Clipboard\"");
  EXPECT_EQ(titles("Flatten newlines\x1fOne"), "") << "… line (spaces) → “a  [31mb”";
  EXPECT_EQ(*desktop_.pasteboard.contents().text, "a \x1b[31mb");
  EXPECT_EQ(titles("Trim clipboard\x1fTrim"), "several items begin with \"Trim\"");
  EXPECT_EQ(titles("Trim clipboard\x1fTrim both sides → “a  [31mb”"), "") << "as shown";
  EXPECT_EQ(titles("Q"), "the menu has no item \"Q\"");
  EXPECT_EQ(titles(""), "the menu has no item \"\"");
  EXPECT_EQ(desktop_.application.ask("InvokeAction", {"noSuchAction"}),
            "there is no action \"noSuchAction\"");
  desktop_.pasteboard.copyElsewhere("a\nb");
  EXPECT_EQ(desktop_.application.ask("InvokeActionOn", {"flattenClipboard:", ""}), "");
  EXPECT_EQ(*desktop_.pasteboard.contents().text, "ab") << "an empty object is an object";
  EXPECT_EQ(desktop_.application.ask("InvokeActionOn", {"setArchiveLocation:", "true"}), "");
  EXPECT_TRUE(*desktop_.defaults.stored.at("archiveClipImagesToPictures").asBool());
  desktop_.pasteboard.copyElsewhere("one line");
  EXPECT_TRUE(
      desktop_.application.ask("InvokeActionOn", {"flattenClipboard:", ""}).ends_with("disabled"));
  desktop_.application.ask("Quit");
  EXPECT_TRUE(desktop_.application.terminated);
}

TEST_F(AppDelegateTest, TheHistoryIsPickedFromByIds) {
  launch();
  const std::string secret =
      "ghp_Zx81Kq"
      "Zx81KqZx81KqZx81KqZx81KqabcD";
  std::string longText;
  for (int i = 0; i < 50; ++i) longText += "some words of no great interest, ";
  longText += "marble";
  for (const std::string& text : {std::string("https://example.org/marble"), secret,
                                  std::string("Marble and slate"), longText})
    desktop_.pasteboard.copyElsewhere(text, true);
  desktop_.queue.drain();
  const auto onEntry = [this](const char* request, const std::string& id) {
    return desktop_.application.ask(request, {id});
  };
  const auto list = [&](const std::string& search, const std::string& category) {
    const auto found = valueFromJson(desktop_.application.ask("History", {search, category}));
    std::vector<std::pair<std::string, std::string>> entries;  // id, title
    for (const Value& entry : *found->asList()) {
      const Value::Dictionary& fields = *entry.asDictionary();
      entries.emplace_back(*find(fields, "id")->asText(), *find(fields, "title")->asText());
    }
    return entries;
  };
  const auto all = list("", "");
  ASSERT_EQ(all.size(), 4U);
  EXPECT_EQ(all[1].second, "📝 “Marble and slate”");
  EXPECT_EQ(all[2].second.find("Zx81"), std::string::npos);
  EXPECT_EQ(list("MARBLE", "").size(), 3U) << "in the whole text, whatever its case";
  EXPECT_EQ(list("marble", "url"), (decltype(all){all[3]}));
  EXPECT_TRUE(list("81Kq", "").empty()) << "a secret cannot be guessed piece by piece";
  EXPECT_TRUE(list("", "none").empty());
  std::string prose;
  while (prose.size() < 32 * 1024 - 8) prose += "w    ";
  prose.resize(32 * 1024 - 8, ' ');
  desktop_.pasteboard.copyElsewhere(prose + " K9#mPq2$vL8x", true);
  desktop_.queue.drain();
  ASSERT_EQ(list("w    w", "").size(), 1U);
  EXPECT_TRUE(list("mpq2", "").empty()) << "nor where what is searched ends in it";
  EXPECT_EQ(onEntry("DeleteEntry", list("w    w", "")[0].first), "");

  EXPECT_EQ(onEntry("CopyEntry", all[2].first), "");
  EXPECT_EQ(*desktop_.pasteboard.contents().text, secret);
  EXPECT_EQ(desktop_.notices.last(), "Copied text from history");
  EXPECT_EQ(list("", "")[0], all[2]) << "the newest now, under its own id";
  EXPECT_EQ(onEntry("DeleteEntry", all[0].first), "");
  EXPECT_EQ(list("", "").size(), 3U);
  for (const char* none : {all[0].first.c_str(), "", "0", "-1", "!", "zzzzzzzzzzzzzzzzzzzzz"}) {
    EXPECT_NE(onEntry("CopyEntry", none), "") << none;
    EXPECT_NE(onEntry("DeleteEntry", none), "") << none;
  }
  desktop_.pasteboard.refuses = true;
  EXPECT_EQ(onEntry("CopyEntry", all[1].first), "the clipboard cannot be written to");
  EXPECT_EQ(list("", "").size(), 3U);
}

TEST_F(AppDelegateTest, TroubleIsTold) {
  launch();
  desktop_.defaults.reportProblem("the disk is full");
  EXPECT_EQ(desktop_.notices.last(), "the disk is full");
  desktop_.statusItem.noHost();
  EXPECT_EQ(desktop_.notices.posted.size(), 2U);
}

TEST_F(AppDelegateTest, TheDockMenuIsTheShortOneAndWithoutKeys) {
  launch();
  desktop_.pasteboard.copyElsewhere("one\ntwo");
  const auto dock = desktop_.application.dockMenu();
  std::vector<std::string> shown;
  for (const MenuItemRef& item : dock->items) shown.push_back(item->separator ? "-" : item->title);
  EXPECT_EQ(shown, table("dock"));
  const MenuItemRef mashed = itemAt(*dock, {"Flatten newlines", "Mashed*"});
  EXPECT_EQ(mashed->key, "");
  desktop_.application.dockChosen(*mashed);
  EXPECT_EQ(*desktop_.pasteboard.contents().text, "onetwo");
}

}  // namespace
}  // namespace marbelot
