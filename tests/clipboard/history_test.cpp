#include <sys/stat.h>

#include "clipboard/stored_date.h"
#include "tests/clipboard/history_fixture.h"

namespace marbelot {
namespace {

using Texts = std::vector<std::string>;

TEST_F(HistoryTest, RecordsWhatIsCopiedAfterTheStartNewestFirst) {
  EXPECT_EQ(desktop.defaults.writes, 0);
  desktop.pasteboard.copyElsewhere("one");
  desktop.pasteboard.copyElsewhere("two");
  desktop.pasteboard.copyElsewhere("three", true);  // announced: no need to wait for the timer
  EXPECT_EQ(texts(), (Texts{"three", "two", "one"}));
  EXPECT_EQ(stored(0, "text"), "three") << "stored before the tick returns";
  EXPECT_EQ(desktop.defaults.writes, 1);
  poll();
  EXPECT_EQ(desktop.defaults.writes, 1) << "nothing new, nothing written";

  ClipboardHistory second(desktop.platform, shell, others);
  second.startClipPoller();
  second.tick();
  EXPECT_TRUE(second.clipHistory.empty()) << "what was there at the launch is not recorded";
}

TEST_F(HistoryTest, OnlyARepeatOfTheNewestIsDropped) {
  for (const char* text : {"A", "A", "B", "A", "A ", " \t\r\n\u2003", ""}) copy(text);
  EXPECT_EQ(texts(), (Texts{"A ", "A", "B", "A"}));
  copyImage(png(1));
  copyImage(png(1));
  EXPECT_EQ(history.clipHistory.size(), 6u) << "images are never dropped";
}

TEST_F(HistoryTest, KeepsFortyAndSharesTheirTexts) {
  for (int i = 0; i < 45; ++i) desktop.pasteboard.copyElsewhere(std::to_string(i));
  const SharedText copied = desktop.pasteboard.contents().text;
  poll();
  EXPECT_EQ(texts().size(), 40u);
  EXPECT_EQ(texts().back(), "5");
  EXPECT_EQ(desktop.defaults.stored.at("clipTextHistory").asList()->size(), 40u);
  EXPECT_EQ(history.clipHistory.front().kind.text(), copied);
}

TEST_F(HistoryTest, ConcealedCopiesAreIgnoredUnlessTheUserWantsThem) {
  int collected = 0;
  history.onTextRecorded = [&](const SharedText&) {
    ++collected;
    EXPECT_EQ(history.clipHistory.size(), 1u) << "recorded first, stored after";
    EXPECT_EQ(desktop.defaults.writes, 0);
  };
  PasteboardContents secret;
  secret.text = share("open sesame");
  secret.concealed = true;
  desktop.pasteboard.copyElsewhere(secret);
  poll();
  EXPECT_TRUE(texts().empty());
  EXPECT_EQ(collected, 0);
  EXPECT_EQ(desktop.defaults.stored.count("clipTextHistory"), 0u);

  desktop.defaults.stored["recordConcealedCopies"] = true;
  desktop.pasteboard.copyElsewhere(secret);
  poll();
  EXPECT_EQ(texts(), Texts{"open sesame"});
  EXPECT_EQ(collected, 1);
}

TEST_F(HistoryTest, OwnCopiesAreNotRecordedButAForeignOneBeforeThemIs) {
  desktop.pasteboard.copyElsewhere("theirs");
  EXPECT_TRUE(history.copyWithoutRecording(share("ours")));
  poll();
  EXPECT_EQ(texts(), Texts{"theirs"});
  EXPECT_EQ(*desktop.pasteboard.contents().text, "ours");
  EXPECT_TRUE(desktop.pasteboard.write(share("flattened")));  // a write that is to be recorded
  poll();
  EXPECT_EQ(texts(), (Texts{"flattened", "theirs"}));
}

TEST_F(HistoryTest, RestsWhereChangesAreAnnouncedAndIsNotLateForIt) {
  const auto askedInAMinute = [this] {
    const int before = desktop.pasteboard.asked;
    desktop.queue.advance(60);
    return desktop.pasteboard.asked - before;
  };
  EXPECT_EQ(askedInAMinute(), 100);
  desktop.pasteboard.announces = true;
  history.startClipPoller();
  EXPECT_LE(askedInAMinute(), 6);
  desktop.pasteboard.copyElsewhere("theirs");
  ASSERT_TRUE(desktop.pasteboard.write(share("flattened")));
  desktop.queue.drain();
  ASSERT_TRUE(history.copyWithoutRecording(share("ours")));
  desktop.queue.drain();
  EXPECT_EQ(texts(), (Texts{"flattened", "theirs"})) << "without any time passing";
}

TEST_F(HistoryTest, ImagesAreSavedAsTheirBytesUnderAFreeName) {
  const std::string folder = history.clipImagesFolder();
  EXPECT_TRUE(folder.starts_with(folder_) && folder.ends_with("/Marbelot")) << folder;
  for (unsigned width : {1, 2, 3}) copyImage(png(width));
  const std::string base = folder + "/Clip 2024-11-21 at 10.01.07";
  EXPECT_EQ(history.clipHistory[2].savedPath, base + ".png");
  EXPECT_EQ(history.clipHistory[1].savedPath, base + " (2).png");
  EXPECT_EQ(history.clipHistory[0].savedPath, base + " (3).png");
  const SharedBytes written = files::read(base + " (2).png", 1 << 20);
  ASSERT_TRUE(written);
  EXPECT_EQ(*written, *png(2));
  EXPECT_EQ(stored(0, "type"), "image");
  EXPECT_EQ(stored(0, "path"), base + " (3).png");
  EXPECT_EQ(stored(0, "date"), "1732183267.25");

  struct stat status {};
  ASSERT_EQ(stat((base + ".png").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);

  files::create(base + " (4).png", "taken");
  perform("setArchiveLocation:", true);
  EXPECT_TRUE(history.clipImagesFolder().ends_with("/Marbelot/Clipboard"));
  perform("setArchiveLocation:", false);
  copyImage(png(5));
  EXPECT_EQ(history.clipHistory[0].savedPath, base + " (5).png");

  // The bytes have left the memory, and the item outlives its file.
  std::filesystem::remove(base + ".png");
  EXPECT_EQ(*history.clipHistory[3].kind.image()->bytes(), *png(1));
  history.saveClipHistory();
  EXPECT_EQ(desktop.defaults.stored.at("clipTextHistory").asList()->size(), 3u);
  perform("clearClipHistory");
  EXPECT_TRUE(files::exists(base + " (2).png"));
  EXPECT_TRUE(desktop.defaults.stored.at("clipTextHistory").asList()->empty());
}

TEST_F(HistoryTest, LargeImagesAreRecordedAtOnceAndSavedInTheBackground) {
  desktop.queue.holdBackground = true;
  copyImage(png(1, 7 << 20));
  EXPECT_EQ(stored(0, "path"), history.clipHistory[0].savedPath) << "as large as most are";
  history.remove(0);
  copyImage(png(1, 9 << 20));
  copy("after");
  copyImage(png(2, 9 << 20));
  EXPECT_EQ(texts(), (Texts{"image", "after", "image"}));
  EXPECT_EQ(desktop.defaults.stored.at("clipTextHistory").asList()->size(), 1u);
  history.remove(0);  // its save must not end up at another entry
  int told = 0;
  history.withFile(history.clipHistory[1].id, [&](const auto& path) { told += path ? 1 : 100; });
  desktop.queue.holdBackground = false;
  const int rebuilds = shell.rebuilds;
  desktop.queue.drain();
  EXPECT_EQ(told, 1);
  EXPECT_FALSE(history.clipHistory[0].savedPath);
  EXPECT_EQ(history.clipHistory[1].kind.image()->width(), 1);
  EXPECT_EQ(stored(1, "path"), history.clipHistory[1].savedPath);
  EXPECT_GT(shell.rebuilds, rebuilds);
  EXPECT_EQ(files::list(history.clipImagesFolder())->size(), 3u) << "one file each";
}

TEST_F(HistoryTest, ImagesWithoutAFileStayInMemoryOnly) {
  perform("toggleAutoSaveClipImages");
  EXPECT_EQ(desktop.defaults.stored.at("autoSaveClipImages").asBool(), false);
  copyImage(png(1));
  perform("toggleAutoSaveClipImages");
  const std::string folder = history.clipImagesFolder();
  std::filesystem::remove_all(folder);
  std::filesystem::remove_all(folder_ + "/Pictures");
  files::create(folder, "a file where the folder should be");
  copyImage(png(2));
  copyImage(png(3, 9 << 20));
  EXPECT_EQ(texts(), (Texts{"image", "image", "image"}));
  for (const ClipItem& item : history.clipHistory) {
    EXPECT_FALSE(item.savedPath);
    EXPECT_TRUE(item.kind.image()->bytes());
  }
  EXPECT_TRUE(desktop.defaults.stored.at("clipTextHistory").asList()->empty());
}

TEST_F(HistoryTest, LoadsWhatItStoredAndTheOlderForm) {
  copy("first");
  now = 1732183268;
  copyImage(png(7));
  ClipboardHistory restarted(desktop.platform, shell, others);
  restarted.loadClipHistory();
  ASSERT_EQ(restarted.clipHistory.size(), 2u);
  EXPECT_EQ(restarted.clipHistory[0].kind.image()->width(), 7);
  EXPECT_EQ(restarted.clipHistory[0].date, 1732183268);
  EXPECT_EQ(*restarted.clipHistory[1].kind.text(), "first");
  EXPECT_EQ(restarted.clipHistory[1].date, 1732183267.25);

  desktop.defaults.stored["clipTextHistory"] = Value::List{"x", "y"};
  history.loadClipHistory();
  EXPECT_EQ(texts(), (Texts{"x", "y"}));
  EXPECT_EQ(history.clipHistory[1].date, now);
}

TEST_F(HistoryTest, BadEntriesAreSkippedOneByOne) {
  using D = Value::Dictionary;
  const std::string notAnImage = folder_ + "/fake.png";
  files::create(notAnImage, "no image");
  desktop.defaults.stored["clipTextHistory"] =
      Value::List{D{{"type", "text"}, {"text", "bad date"}, {"date", "12x"}},
                  D{{"type", "text"}, {"text", 5}, {"date", "1.0"}},
                  D{{"type", "image"}, {"path", "/no/such/file.png"}},
                  D{{"type", "image"}, {"path", folder_}},
                  D{{"type", "image"}, {"path", "/dev/zero"}},
                  D{{"type", "image"}, {"path", notAnImage}},
                  D{{"type", "image"}, {"text", "an image without a path"}},
                  3.5,
                  Value::List{"nested"},
                  D{},
                  D{{"type", 7}, {"text", "odd type"}, {"date", "nan"}},
                  D{{"text", "no type"}, {"date", "-1.5"}}};
  history.loadClipHistory();
  EXPECT_EQ(texts(), (Texts{"bad date", "odd type", "no type"}));
  EXPECT_EQ(history.clipHistory[0].date, now);
  EXPECT_EQ(history.clipHistory[1].date, now);
  EXPECT_EQ(history.clipHistory[2].date, -1.5);

  for (Value odd : {Value("text"), Value(1), Value(D{{"type", "text"}})}) {
    desktop.defaults.stored["clipTextHistory"] = std::move(odd);
    history.loadClipHistory();
    EXPECT_TRUE(texts().empty());
  }
  desktop.defaults.stored["clipTextHistory"] = Value::List(1'000'000, "many");
  history.loadClipHistory();
  EXPECT_EQ(texts().size(), 40u);
}

TEST(StoredDate, IsTheShortestDecimalWithAFraction) {
  for (const char* text : {"1732183267.25", "1732183267.0", "1000000000.0", "0.0", "0.1", "-2.5",
                           "1000000000000000000000.0", "1732183267.123457"}) {
    EXPECT_EQ(parsedDate(text), std::stod(text));
    EXPECT_EQ(storedDate(std::stod(text)), text);
  }
  EXPECT_EQ(parsedDate("1732183267"), 1732183267);
  for (const char* bad : {"", " 1", "1 ", "1,5", "inf", "nan", "0x10", "1e999", "yesterday"})
    EXPECT_FALSE(parsedDate(bad)) << bad;
}

}  // namespace
}  // namespace marbelot
