#include "tests/platform/conformance.h"

#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/files.h"
#include "tests/support/png.h"
#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

MARBELOT_ON_EACH_DESKTOP(Conformance);

TEST_P(Conformance, TimersRunInOrderAndEndWithTheirHandles) {
  std::string order;
  auto& queue = platform.queue;
  Task late = queue.after(0.5, [&] { order += 'c'; });
  Task never = queue.after(0.01, [&] { order += 'x'; });
  never.cancel();
  Task soon = queue.after(0, [&] { order += 'a'; });
  Task between = queue.after(0.03, [&] { order += 'b'; });
  int ticks = 0;
  Task ticking;
  ticking = queue.every(0.02, [&] {
    if (++ticks == 5) ticking.cancel();  // by the very work that it runs
  });
  EXPECT_TRUE(wait([&] { return ticks == 5 && order.size() == 3; }));
  EXPECT_EQ(order, "abc");
  Task after = queue.after(0.1, [&] { order += 'd'; });
  EXPECT_TRUE(wait([&] { return order.size() == 4; }));
  EXPECT_EQ(ticks, 5);
}

TEST_P(Conformance, BackgroundWorkHandsItsResultBackOnlyWhileWanted) {
  int result = 0;
  bool unwanted = false;
  auto& queue = platform.queue;
  Task wanted = queue.inBackground([] { return 7; }, [&](int value) { result = value; });
  Task dropped = queue.inBackground([] { return 1; }, [&](int) { unwanted = true; });
  dropped.cancel();
  EXPECT_TRUE(wait([&] { return result == 7; }));
  bool later = false;
  queue.post([&] { later = true; });
  EXPECT_TRUE(wait([&] { return later; }));
  EXPECT_FALSE(unwanted);
}

TEST_P(Conformance, DefaultsGiveBackWhatWasSet) {
  auto& defaults = platform.defaults;
  defaults.registerDefaults({{"registered", true}});
  EXPECT_TRUE(defaults.boolFor("registered"));
  EXPECT_FALSE(defaults.boolFor("absent"));
  defaults.set("registered", false);
  EXPECT_FALSE(defaults.boolFor("registered"));
  defaults.set("list", Value::List{"a", true, "b"});
  const auto listed = defaults.textListFor("list");
  ASSERT_EQ(listed.size(), 2U);
  EXPECT_EQ(*listed[1], "b");
  EXPECT_EQ(defaults.textFor("list"), nullptr);
}

// The system's tool for settings stores what it is given as a text.
TEST_P(Conformance, FlagsAndNumbersMayBeWrittenAsTexts) {
  auto& defaults = platform.defaults;
  const auto read = [&](const char* text, bool (*fits)(const Value&)) {
    defaults.set("written", text);
    return defaults.valueOfType("written", fits);
  };
  const auto isBool = [](const Value& value) { return value.asBool().has_value(); };
  const auto isWhole = [](const Value& value) { return value.asInteger().has_value(); };
  const auto isNumber = [](const Value& value) { return value.asDouble().has_value(); };
  for (const char* yes : {"1", "yes", "YES", "true"}) EXPECT_TRUE(*read(yes, isBool)->asBool());
  for (const char* no : {"0", "No", "false"}) EXPECT_FALSE(*read(no, isBool)->asBool());
  EXPECT_EQ(read("-40", isWhole)->asInteger(), -40);
  EXPECT_EQ(read("12.5", isNumber)->asDouble(), 12.5);
  EXPECT_EQ(read("7", isNumber)->asDouble(), 7);
  for (const char* neither : {"", "so", "1x", "yes "}) EXPECT_FALSE(read(neither, isBool));
  EXPECT_EQ(*defaults.textFor("written"), "yes ") << "and are left as they are";
}

TEST_P(Conformance, RegisteredDefaultsAddUpAndStandInForValuesOfAnotherType) {
  auto& defaults = platform.defaults;
  defaults.registerDefaults({{"flag", true}, {"text", "first"}});
  defaults.registerDefaults({{"list", Value::List{"a"}}, {"text", "second"}});
  EXPECT_TRUE(defaults.boolFor("flag"));
  EXPECT_EQ(*defaults.textFor("text"), "second");
  for (const char* key : {"flag", "text", "list", "other"})
    defaults.set(key, Value::Dictionary{{"a", 1}});
  std::vector<std::string> told;
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(defaults.boolFor("flag"));
    EXPECT_EQ(*defaults.textFor("text"), "second");
    EXPECT_EQ(defaults.textListFor("list").size(), 1U);
    EXPECT_TRUE(defaults.value("flag")->asDictionary()) << "and is left as it is";
    defaults.setProblemHandler([&](const std::string& problem) { told.push_back(problem); });
  }
  EXPECT_FALSE(defaults.boolFor("other"));
  ASSERT_EQ(told.size(), 2U) << "those of the start together, a later one when it is found";
  for (const char* key : {"flag", "text", "list"})
    EXPECT_NE(told[0].find(key), std::string::npos) << told[0];
  EXPECT_NE(told[1].find("other"), std::string::npos) << told[1];
  defaults.set("flag", false);
  EXPECT_FALSE(defaults.boolFor("flag"));
  defaults.setProblemHandler({});
}

TEST_P(Conformance, ThePasteboardCountsAndTellsOwnWrites) {
  auto& pasteboard = platform.pasteboard;
  const std::int64_t start = pasteboard.changeCount();
  const std::int64_t first = pasteboard.write(share("one")).value();
  const std::int64_t second = pasteboard.write(*Image::fromBytes(png(30))).value();
  EXPECT_LT(start, first);
  EXPECT_LT(first, second);
  EXPECT_EQ(pasteboard.changeCount(), second);
  EXPECT_EQ(pasteboard.contents().image->width(), 30);
  EXPECT_EQ(pasteboard.contents().text, nullptr);
  const auto changes = pasteboard.changesSince(start);
  ASSERT_EQ(changes.size(), 2U);
  EXPECT_EQ(*changes[0].contents.text, "one");
  EXPECT_EQ(changes[1].count, second);
  EXPECT_TRUE(pasteboard.changesSince(second).empty());
}

TEST_P(Conformance, WhatCanNoLongerBeReadReplacesNothing) {
  auto& pasteboard = platform.pasteboard;
  const TemporaryHome home;
  writeFile(home / "image.png", *png(30));
  const auto image = Image::fromFile(home / "image.png");
  ASSERT_TRUE(image);
  const std::int64_t kept = pasteboard.write(share("kept")).value();
  writeFile(home / "image.png", *png(31));
  EXPECT_FALSE(pasteboard.write(*image));
  writeFile(home / "image.png", "");
  EXPECT_FALSE(pasteboard.write(*image));
  EXPECT_EQ(pasteboard.changeCount(), kept);
  EXPECT_EQ(*pasteboard.contents().text, "kept");
}

TEST_P(Conformance, OwnWritesAreAnnouncedOnceTheyAreDone) {
  auto& pasteboard = platform.pasteboard;
  if (!pasteboard.announcesChanges()) GTEST_SKIP() << "this system announces nothing";
  int calls = 0;
  pasteboard.setChangeHandler([&] { ++calls; });
  const std::int64_t start = pasteboard.changeCount();
  const std::int64_t written = pasteboard.write(share("one")).value();
  EXPECT_EQ(calls, 0) << "whoever wrote may want to note the count first";
  EXPECT_TRUE(wait([&] { return calls > 0; }));
  ASSERT_EQ(pasteboard.changesSince(start).size(), 1U);
  EXPECT_EQ(pasteboard.changeCount(), written);
  pasteboard.setChangeHandler({});
}

TEST_P(Conformance, FolderEventsLastAsLongAsTheirStream) {
  const TemporaryHome home;
  int calls = 0;
  auto stream = platform.folderEvents.watch(home.path(), [&] { ++calls; });
  ASSERT_TRUE(stream);
  writeFile(home / "file.png", "x");
  EXPECT_TRUE(wait([&] { return calls > 0; }));
  stream.reset();
  calls = 0;
  writeFile(home / "other.png", "x");
  settle();
  EXPECT_EQ(calls, 0);
}

TEST_P(Conformance, OtherProgramsAndTheUserCopyAndPaste) {
  auto& pasteboard = platform.pasteboard;
  ASSERT_TRUE(pasteboard.write(share("ours, Größe\n")));
  EXPECT_EQ(desktop->pasteElsewhere(), "ours, Größe\n");
  const std::int64_t count = pasteboard.changeCount();
  desktop->copyElsewhere("theirs\n \U0001F44D");
  EXPECT_TRUE(wait([&] { return pasteboard.changeCount() > count; }));
  ASSERT_TRUE(pasteboard.contents().text);
  EXPECT_EQ(*pasteboard.contents().text, "theirs\n \U0001F44D");
  EXPECT_FALSE(pasteboard.contents().concealed);
  ASSERT_TRUE(pasteboard.write(share("secret"), true));
  EXPECT_TRUE(pasteboard.contents().concealed);
  EXPECT_EQ(*pasteboard.contents().text, "secret");
  for (const bool concealed : {true, false}) {
    ASSERT_TRUE(pasteboard.write(*Image::fromBytes(png(30)), concealed));
    EXPECT_EQ(pasteboard.contents().concealed, concealed);
  }
}

TEST_P(Conformance, NoticesReachTheUser) {
  platform.notices.post("Screenshot copied to clipboard", "Screenshot <1> & more.png");
  EXPECT_TRUE(wait([&] { return !desktop->notices().empty(); }));
  EXPECT_EQ(desktop->notices(), std::vector<std::string>{"Screenshot <1> & more.png"});
}

TEST_P(Conformance, PicturesOfTheScreenAreFilesAndToldOfOnceUnlessDropped) {
  const TemporaryHome home;
  auto& capture = platform.screenCapture;
  std::vector<std::string> told;
  const auto take = [&](const char* argument, const std::string& name) {
    return capture.capture(
        {argument}, home / name, [] {},
        [&told, name](const std::string& what) { told.push_back(name + what); });
  };
  Task dropped = take("-i", "dropped.png");
  settle();
  dropped.cancel();
  told.clear();  // where the system has no tool, it was over at once
  const Task taken = take("-x", "taken.png");
  ASSERT_TRUE(wait([&] { return !told.empty(); }));
  settle();
  EXPECT_EQ(told, std::vector<std::string>{"taken.png"});
  EXPECT_FALSE(std::filesystem::exists(home / "dropped.png"));
  for (const RunningApplication& other : capture.runningApplications())
    EXPECT_NE(other.pid, ::getpid());
  EXPECT_EQ(capture.frontWindow(-1), std::nullopt);

  const auto image = Image::fromFile(home / "taken.png");
  if (!image && GetParam() == "AppKit") GTEST_SKIP() << "the system's tool is not here";
  ASSERT_TRUE(image);
  EXPECT_EQ(image->format(), ImageFormat::png);
  EXPECT_GE(image->width(), platform.screens.all().front().frame.width);
}

TEST_P(Conformance, LinksAndFilesAreHandedOn) {
  const TemporaryHome home;
  const std::string path = home / "data/a b#1.png";  // beside where the trash will stand
  const std::string other = home / "data/other.png";
  writeFile(path, "x");
  writeFile(other, "x");
  auto& workspace = platform.workspace;
  const auto opens = [&](const std::string& what) {
    return wait([&] { return !desktop->opened().empty() && desktop->opened().back() == what; });
  };
  workspace.openUrl("https://example.org/a?b=1&c=%20#d");
  EXPECT_TRUE(opens("https://example.org/a?b=1&c=%20#d"))
      << testing::PrintToString(desktop->opened());
  workspace.openPath(path);
  EXPECT_TRUE(opens(path)) << testing::PrintToString(desktop->opened());
  workspace.reveal(path);
  EXPECT_TRUE(wait([&] { return !desktop->revealed().empty(); }));
  EXPECT_EQ(desktop->revealed().back(), path);
  bool done = false;
  const Task trashing =
      workspace.trash({path, home / "data/none.png", other}, [&] { done = true; });
  EXPECT_TRUE(wait([&] { return done; }));
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_FALSE(std::filesystem::exists(other)) << "what cannot be moved keeps nothing else";
}

TEST_P(Conformance, ApplicationsForLinksAreToldOnceAndTheDefaultFirst) {
  std::vector<LinkApplication> all;
  int told = 0;
  platform.workspace.findApplications(testLink, [&](std::vector<LinkApplication> found) {
    all = std::move(found);
    ++told;
  });
  EXPECT_TRUE(wait([&] { return told > 0; }));
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].name + (all[0].isDefault ? "*" : ""), "Quarry*");
  EXPECT_EQ(all[1].name + (all[1].isDefault ? "*" : ""), "Chisel");
  EXPECT_NE(all[0].id, all[1].id);
  platform.workspace.findApplications("marbelot-none:x", [&](std::vector<LinkApplication> found) {
    all = std::move(found);
    ++told;
  });
  EXPECT_TRUE(wait([&] { return told > 1; }));
  EXPECT_TRUE(all.empty());
}

TEST_P(Conformance, NotesAreToldOfOnceTheyAreThere) {
  int told = 0;
  std::optional<std::string> problem;
  const int before = desktop->notes();
  platform.workspace.addNote(share("a \"note\"\nof two lines"), [&](const auto& answer) {
    ++told;
    problem = answer;
  });
  EXPECT_EQ(told, 0) << "before it can be there";
  EXPECT_TRUE(wait([&] { return told > 0; }));
  EXPECT_FALSE(problem) << *problem;
  EXPECT_EQ(desktop->notes(), before + 1);
}

// The system's own, which every backend here shares.
TEST(FileConformance, FilesAreMadeWholeAndOnlyUnderFreeNames) {
  const TemporaryHome home;
  const std::string folder = home / "a/b", file = folder + "/file";
  EXPECT_FALSE(files::create(file, "one")) << "no folder";
  EXPECT_TRUE(files::makeFolder(folder));
  EXPECT_TRUE(files::makeFolder(folder)) << "which is there";
  EXPECT_TRUE(files::create(file, "one"));
  EXPECT_FALSE(files::create(file, "other"));
  EXPECT_FALSE(files::makeFolder(file));
  EXPECT_EQ(*files::read(file, 3), "one");
  for (const std::string& unreadable : {file, folder, home / "none"})
    EXPECT_FALSE(files::read(unreadable, 2)) << unreadable;
  EXPECT_EQ(files::info(file)->bytes, 3U);
  EXPECT_FALSE(files::exists(folder));
  EXPECT_FALSE(files::folderIdentity(file));
  EXPECT_NE(files::folderIdentity(folder), files::folderIdentity(home.path()));
  EXPECT_EQ(files::list(folder), std::vector<std::string>{"file"});
  std::string problem;
  EXPECT_FALSE(files::list(home / "none", &problem));
  EXPECT_FALSE(problem.empty());
}

TEST(FileConformance, ReplacingKeepsWhatWasThereUnlessItSucceeds) {
  const TemporaryHome home;
  const std::string file = home / "file", link = home / "link";
  const auto mode = [&] { return static_cast<int>(std::filesystem::status(file).permissions()); };
  ASSERT_TRUE(files::replace(file, "new"));
  EXPECT_EQ(mode(), 0600);
  std::filesystem::permissions(file, std::filesystem::perms(0644));
  std::filesystem::create_symlink(file, link);
  ASSERT_TRUE(files::replace(link, "newer"));
  EXPECT_EQ(*files::read(file, 10), "newer");
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(mode(), 0644);
  EXPECT_FALSE(files::replace(home.path(), "a folder"));
  EXPECT_EQ(files::list(home.path())->size(), 2U) << "no draft stays behind";
}

}  // namespace
}  // namespace marbelot
