// Versions, feeds and release notes, and the updater over services in memory with feeds of its own.

#include <gtest/gtest.h>

#include <map>

#include "platform/memory/memory_platform.h"
#include "tests/support/rows.h"
#include "updates/appcast.h"
#include "updates/appcast_updater.h"
#include "updates/page_text.h"
#include "updates/version.h"
#include "updates/web_address.h"

namespace marbelot {
namespace {

std::string feed(const std::string& items) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\"?><rss version=\"2.0\" "
         "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\"><channel>"
         "<title>Marbelot</title>" +
         items + "</channel></rss>";
}

std::string item(const std::string& version, const std::string& more = {}) {
  return "<item><sparkle:version>" + version + "</sparkle:version>" + more +
         "<enclosure url=\"https://example.org/Marbelot-" + version +
         ".tar.gz\" sparkle:os=\"linux\" length=\"1\"/></item>";
}

// The version that a program of that version is offered; empty for none.
std::string offered(const std::string& xml, const std::string& version = "1.0",
                    const std::string& system = "6.1.0") {
  const auto items = appcastItems(xml, "linux");
  if (!items) return "no feed";
  const auto newer = newerItem(*items, version, system);
  return newer ? newer->version : "";
}

TEST(Versions, AreOrderedByTheFrameworksRules) {
  for (const Row& row : rowsOf("updates/updates.tsv", "versions")) {
    const auto order = row[0] == "<" ? std::weak_ordering::less : std::weak_ordering::equivalent;
    EXPECT_TRUE(compareVersions(row[1], row[2]) == order) << row;
    EXPECT_TRUE(compareVersions(row[2], row[1]) == (0 <=> order)) << row;
  }
}

TEST(Appcast, OffersTheNewestThatRunsHere) {
  const std::string macItem =
      "<item><sparkle:version>9</sparkle:version><enclosure url=\"https://example.org/a.dmg\" "
      "sparkle:os=\"macos\"/></item>";
  EXPECT_EQ(offered(feed(item("1.1") + item("1.3") + item("1.2"))), "1.3");
  EXPECT_EQ(offered(feed(item("1.0") + item("0.9"))), "");
  EXPECT_EQ(offered(feed("")), "");
  EXPECT_EQ(offered(feed(macItem + item("1.1"))), "1.1") << "for another system only";
  EXPECT_EQ(offered(feed(
                item("3", "<sparkle:minimumSystemVersion>6.2</sparkle:minimumSystemVersion>") +
                item("2.5", "<sparkle:maximumSystemVersion>6.0.9</sparkle:maximumSystemVersion>") +
                item("2", "<sparkle:minimumSystemVersion>6.1</sparkle:minimumSystemVersion>"))),
            "2");
  EXPECT_EQ(offered(feed(item("2", "<sparkle:channel>beta</sparkle:channel>") + item("1.1"))),
            "1.1");
  // As older feeds have it: all in the enclosure, or the version in the file's name alone.
  EXPECT_EQ(offered(feed("<item><enclosure url=\"https://example.org/a\" sparkle:version=\"1.4\" "
                         "sparkle:shortVersionString=\"one four\"/></item>")),
            "1.4");
  EXPECT_EQ(offered(feed("<item><enclosure url=\"https://example.org/Mar_1.5.zip\"/></item>")),
            "1.5");
  for (const char* nowhere : {"http://example.org/a", "file:///etc/passwd", "javascript:x", ""}) {
    EXPECT_EQ(offered(feed("<item><sparkle:version>2</sparkle:version><enclosure url=\"" +
                           std::string(nowhere) + "\"/></item>")),
              "");
  }

  const auto items = appcastItems(
      feed("<item><title>x</title><link>https://example.org/page</link>"
           "<sparkle:version>20</sparkle:version>"
           "<sparkle:shortVersionString> 2.0 </sparkle:shortVersionString>"
           "<description><![CDATA[<h2>New</h2><ul><li>a &amp; b<li>c</ul>]]></description>"
           "<sparkle:releaseNotesLink>http://example.org/insecure</sparkle:releaseNotesLink>"
           "<enclosure url=\"https://example.org/a.dmg\"/></item>"),
      "linux");
  ASSERT_TRUE(items && items->size() == 1);
  EXPECT_EQ(items->front().shownVersion, "2.0");
  EXPECT_EQ(items->front().notes, "New\n• a & b\n• c");
  EXPECT_EQ(items->front().notesAddress, "");
  EXPECT_EQ(items->front().downloadAddress, "https://example.org/page")
      << "better than a file that names no system";
}

TEST(Appcast, SurvivesWhateverItIsSent) {
  std::string bomb = "<!DOCTYPE x [<!ENTITY a \"aaaaaaaaaa\">";
  for (char c = 'b'; c < 'k'; ++c)
    bomb += std::string("<!ENTITY ") + c + " \"&" + char(c - 1) + ";&" + char(c - 1) + ";\">";
  const std::string deep(200000, '<');
  std::string nested;
  for (int i = 0; i < 200000; ++i) nested += "<a>";
  for (const std::string& xml :
       {std::string(), std::string("not XML"), std::string("<html><body>404</body></html>"),
        std::string("<rss/>"), bomb + "]><rss><channel>&j;", deep, nested,
        feed(item("2")).substr(0, 150), std::string("\xFF\xFE<\0r", 5), std::string(5000, '\0')})
    EXPECT_EQ(offered(xml), "no feed");
  EXPECT_EQ(offered("<!DOCTYPE rss SYSTEM \"file:///etc/passwd\">" + feed(item("2")).substr(38)),
            "2");
  const std::string whole = feed(item("1.1", "<description>&lt;b&gt;x</description>") + item("2"));
  for (std::size_t end = 0; end < whole.size(); ++end) offered(whole.substr(0, end));
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string damaged = whole;
    damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
    offered(damaged);
  }
}

TEST(PageText, IsTheWordsOfThePage) {
  EXPECT_EQ(pageText("<p>One\n  two</p><p>three</p>four<br/>five"),
            "One two\n\nthree\n\nfour\nfive");
  EXPECT_EQ(pageText("<style>p{}</style>a<script>x<y</script>b<!-- c -->d"), "abd");
  EXPECT_EQ(pageText("5 < 6 &lt;&#233;&#x20AC;&#128512;&nbsp;&unknown; &#0; AT&T"),
            "5 < 6 <é€😀 &unknown; &#0; AT&T");
  for (const char* cut : {"<", "a<b", "<!--", "&", "&#", "<script>", "</", "\xFF\xC3"})
    pageText(cut);
  EXPECT_LT(pageText(std::string(1 << 20, 'x')).size(), std::size_t{1} << 17);
}

TEST(WebAddresses, AreSecureOrThisMachines) {
  for (const Row& row : rowsOf("updates/updates.tsv", "addresses"))
    EXPECT_EQ(isSecureAddress(row[1]), row[0] == "yes") << row;
}

class UpdaterTest : public testing::Test {
 protected:
  void check() {
    updater_.checkForUpdates();
    wait();
  }
  void checkInBackground() {
    updater_.checkForUpdatesInBackground();
    wait();
  }
  void wait(double seconds = 1) {
    desktop_.queue.advance(seconds);
    desktop_.queue.drain();
  }
  const Alert& alert() const { return desktop_.dialogs.shown.back(); }

  // By address; what is missing cannot be reached.
  std::map<std::string, std::string> web_;
  std::vector<std::string> asked_;
  memory::MemoryPlatform desktop_;
  const std::string feed_ = "https://example.org/appcast.xml";
  const UpdateServices services_{desktop_.queue, desktop_.defaults, desktop_.notices,
                                 desktop_.dialogs, desktop_.workspace};
  const Fetch fetch_ = [this](const std::string& address, std::function<void(Fetched)> fetched) {
    asked_.push_back(address);
    const auto found = web_.find(address);
    Fetched answer{found == web_.end() ? nullptr : share(found->second), "no route"};
    return desktop_.queue.after(0.5, [fetched = std::move(fetched), answer] { fetched(answer); });
  };
  AppcastUpdater updater_{services_, {feed_, "1.0", "linux", "6.1.0"}, fetch_};
};

TEST_F(UpdaterTest, TheForegroundTellsInAnyCase) {
  web_[feed_] = feed(item("2.0", "<description>Better.</description>"));
  updater_.checkForUpdates();
  check();
  EXPECT_EQ(asked_.size(), 1U);
  ASSERT_EQ(desktop_.dialogs.shown.size(), 1U);
  EXPECT_EQ(alert().message, "A new version of Marbelot is available!");
  EXPECT_NE(alert().informative.find("2.0"), std::string::npos);
  EXPECT_EQ(alert().buttons,
            (std::vector<std::string>{"Download", "Skip This Version", "Remind Me Later"}));
  EXPECT_EQ(std::get<TextArea>(alert().accessory.at(0).content).text, "Better.");
  desktop_.dialogs.answer(2);
  EXPECT_TRUE(desktop_.workspace.opened.empty());
  check();
  desktop_.dialogs.answer(0);
  EXPECT_EQ(desktop_.workspace.opened,
            std::vector<std::string>{"https://example.org/Marbelot-2.0.tar.gz"});

  web_[feed_] = feed(item("1.0"));
  check();
  EXPECT_EQ(alert().message, "You’re up to date!");
  desktop_.dialogs.answer(0);
  web_[feed_] = "<html>";
  check();
  EXPECT_EQ(alert().message, "Couldn’t check for updates");
  desktop_.dialogs.answer(0);
  web_.clear();
  check();
  EXPECT_EQ(alert().informative, "The update feed cannot be reached: no route");
  desktop_.dialogs.answer(0);
  EXPECT_TRUE(desktop_.notices.posted.empty());

  desktop_.defaults.set("SUFeedURL", "http://example.org/appcast.xml");
  const std::size_t before = asked_.size();
  updater_.checkForUpdates();
  desktop_.queue.drain();
  EXPECT_EQ(alert().informative, "The address of the update feed is not a secure one (https).");
  EXPECT_EQ(asked_.size(), before);
}

TEST_F(UpdaterTest, NotesOnAPageOfTheirOwnAreFetched) {
  web_[feed_] = feed(item("2.0",
                          "<sparkle:releaseNotesLink>https://example.org/n"
                          "</sparkle:releaseNotesLink>"));
  web_["https://example.org/n"] = "<p>A page.";
  for (const char* notes : {"A page.", ""}) {
    updater_.checkForUpdates();
    wait(0.6);
    updater_.checkForUpdates();  // again, while the page is on its way
    wait(3);
    const auto& views = alert().accessory;
    EXPECT_EQ(views.empty() ? "" : std::get<TextArea>(views[0].content).text, notes);
    desktop_.dialogs.answer(2);
    web_.erase("https://example.org/n");
  }
  EXPECT_TRUE(desktop_.notices.posted.empty()) << "the answer was there in time";
}

TEST_F(UpdaterTest, TheBackgroundIsSilentUnlessThereIsSomethingNewer) {
  checkInBackground();
  web_[feed_] = feed(item("1.0"));
  checkInBackground();
  EXPECT_TRUE(desktop_.notices.posted.empty());
  web_[feed_] = feed(item("2.0"));
  checkInBackground();
  EXPECT_EQ(desktop_.notices.last(), "Marbelot 2.0 is available: see “Check for Updates…”");
  EXPECT_TRUE(desktop_.dialogs.shown.empty()) << "nobody has asked";

  check();
  desktop_.dialogs.answer(1);
  checkInBackground();
  EXPECT_EQ(desktop_.notices.posted.size(), 1U) << "that version is skipped";
  web_[feed_] = feed(item("2.1"));
  updater_.checkForUpdatesInBackground();
  // Somebody asks meanwhile.
  check();
  EXPECT_EQ(desktop_.dialogs.shown.size(), 2U);
}

TEST_F(UpdaterTest, AutomaticChecksKeepTheirIntervalAcrossRuns) {
  web_[feed_] = feed("");
  const double week = 604800;
  updater_.setAutomaticallyChecksForUpdates(true);
  updater_.setUpdateCheckInterval(week);
  wait(10);
  EXPECT_EQ(asked_.size(), 1U) << "never checked before";
  for (double passed = 0; passed < week - 100; passed += 50000) desktop_.queue.advance(50000);
  EXPECT_EQ(asked_.size(), 1U + (50000 * 13 > week ? 1 : 0));
  const std::size_t before = asked_.size();
  AppcastUpdater next(services_, {feed_, "1.0", "linux", "6.1.0"}, fetch_);
  updater_.setAutomaticallyChecksForUpdates(false);
  next.setUpdateCheckInterval(week);
  next.setAutomaticallyChecksForUpdates(true);
  desktop_.queue.advance(3600);
  EXPECT_EQ(asked_.size(), before) << "the last run has checked";
  wait(week);
  EXPECT_EQ(asked_.size(), before + 1);
  next.setAutomaticallyChecksForUpdates(false);
  desktop_.queue.advance(2 * week);
  EXPECT_EQ(asked_.size(), before + 1);

  for (const char* unusable : {"", "http://example.org/appcast.xml"}) {
    struct : memory::Queue {
      double now() const override { return ++looks, 2e9; }
      mutable int looks = 0;
    } queue;
    AppcastUpdater idle(
        {queue, desktop_.defaults, desktop_.notices, desktop_.dialogs, desktop_.workspace},
        {unusable, "1.0", "linux", "6.1.0"}, fetch_);
    idle.setAutomaticallyChecksForUpdates(true);
    queue.advance(3600);
    EXPECT_LE(queue.looks, 1) << unusable;
  }
}

}  // namespace
}  // namespace marbelot
