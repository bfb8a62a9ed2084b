// The settings file: what survives, and what is told when something does not.

#include "platform/linux/user_defaults.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <mutex>
#include <set>
#include <thread>

#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

class UserDefaultsTest : public testing::Test {
 protected:
  std::unique_ptr<JsonDefaults> open() {
    auto defaults = std::make_unique<JsonDefaults>(path_, [this](std::function<void()> work) {
      const std::lock_guard lock(mutex_);
      posted_.push_back(std::move(work));
    });
    defaults->setProblemHandler([this](const std::string& told) { problems_.push_back(told); });
    return defaults;
  }
  // Whether the background told something to the main thread, within 20 seconds.
  bool hearFromBackground() {
    for (int i = 0; i < 20000; ++i) {
      std::vector<std::function<void()>> posted;
      {
        const std::lock_guard lock(mutex_);
        posted.swap(posted_);
      }
      for (const auto& work : posted) work();
      if (!posted.empty()) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
  }
  static Value::List texts(std::size_t count, std::size_t size) {
    Value::List list;
    for (std::size_t i = 0; i < count; ++i)
      list.emplace_back(std::string(size, static_cast<char>('a' + i % 26)));
    return list;
  }

  static Value::List texts(const std::vector<SharedText>& all) { return {all.begin(), all.end()}; }
  static SharedText text(std::size_t size, char with = 'x') {
    return share(std::string(size, with));
  }
  // The names in the folder of large texts.
  std::set<std::string> files() const {
    std::set<std::string> names;
    if (!std::filesystem::exists(folder_)) return names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_))
      names.insert(entry.path().filename());
    return names;
  }

  TemporaryHome home_;
  const std::string path_ = home_ / "config/marbelot/test.json";
  const std::string folder_ = home_ / "config/marbelot/test.texts";
  std::vector<std::string> problems_;

 private:
  std::mutex mutex_;
  std::vector<std::function<void()>> posted_;
};

TEST_F(UserDefaultsTest, KeepsEveryTypeAndWrongTypesReadAsAbsent) {
  const std::string odd = std::string("zero \0 quote \" back \\ line \n tab \t ⏎ 🎉", 43);
  {
    const auto defaults = open();
    defaults->set("flag", true);
    defaults->set("number", 2);
    defaults->set("text", odd);
    defaults->set("list", Value::List{"one", 2, Value::Dictionary{{"key", "value"}}, "three"});
  }
  const auto defaults = open();
  EXPECT_TRUE(defaults->boolFor("flag"));
  EXPECT_EQ(defaults->value("number")->asInteger(), 2);
  EXPECT_EQ(*defaults->textFor("text"), odd);
  const auto listed = defaults->textListFor("list");
  ASSERT_EQ(listed.size(), 2U);
  EXPECT_EQ(*listed[1], "three");
  EXPECT_FALSE(defaults->boolFor("text"));
  EXPECT_EQ(defaults->textFor("flag"), nullptr);
  EXPECT_TRUE(defaults->textListFor("number").empty());
  defaults->registerDefaults({{"flag", false}, {"fresh", true}});
  EXPECT_TRUE(defaults->boolFor("flag"));
  EXPECT_TRUE(defaults->boolFor("fresh"));
  struct stat status {};
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  EXPECT_EQ(readFile(path_).find("fresh"), std::string::npos) << "registered values are not stored";
  ASSERT_EQ(problems_.size(), 3U);
  EXPECT_NE(problems_[0].find("text"), std::string::npos);
}

TEST_F(UserDefaultsTest, NullIsTheSameAsNothing) {
  writeFile(path_, R"({"flag": null, "list": ["a", null, "b"]})");
  const auto defaults = open();
  defaults->registerDefaults({{"flag", true}});
  EXPECT_TRUE(defaults->boolFor("flag"));
  EXPECT_EQ(defaults->textListFor("list").size(), 2U);
  EXPECT_TRUE(problems_.empty());
}

TEST_F(UserDefaultsTest, PutsADamagedFileAsideAndSaysSoOnce) {
  const std::string damages[] = {
      "{\"flag\": tru",     "[1, 2]", "", "{\"a\": \"\xff\"}", std::string(100000, '['),
      "{\"a\": 1} trailing"};
  for (const std::string& damage : damages) {
    problems_.clear();
    writeFile(path_, damage);
    const auto defaults = open();
    EXPECT_FALSE(defaults->value("flag"));
    ASSERT_EQ(problems_.size(), 1U);
    std::string aside;
    for (const auto& entry : std::filesystem::directory_iterator(home_ / "config/marbelot"))
      if (entry.path().string().find(".damaged") != std::string::npos) aside = entry.path();
    EXPECT_EQ(readFile(aside), damage);
    defaults->set("flag", true);
    EXPECT_NE(readFile(path_).find("true"), std::string::npos);
    std::filesystem::remove(aside);
  }
}

// Run as somebody who may not read the file, in a folder that hides it at first, that cannot be
// written, that can.
TEST_F(UserDefaultsTest, NeverWritesOverAFileThatItCannotRead) {
  writeFile(path_, R"({"cannedResponses": ["precious"]})");
  chmod(path_.c_str(), 0);
  const std::string folder = path_.substr(0, path_.rfind('/'));
  for (const std::string& above : {home_.path(), home_ / "config"}) chmod(above.c_str(), 0755);
  for (const mode_t mode : {0, 0555, 0777}) {
    chmod(folder.c_str(), mode);
    const pid_t child = fork();
    if (child == 0) {
      const bool root = geteuid() == 0;  // who may read everything
      if (root && seteuid(65534) != 0) _exit(2);
      {
        const auto defaults = open();
        if (root && seteuid(0) != 0) _exit(2);
        if (mode == 0) chmod(folder.c_str(), 0777);
        if (root && seteuid(65534) != 0) _exit(2);
        defaults->set("flag", true);
      }
      _exit(problems_.size() == 1 ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << "told once";
    bool kept = false;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      chmod(entry.path().c_str(), 0600);
      kept = kept || readFile(entry.path()).find("precious") != std::string::npos;
      if (mode != 0777) chmod(entry.path().c_str(), 0);
    }
    EXPECT_TRUE(kept) << mode;
  }
}

TEST_F(UserDefaultsTest, AFullDiskLeavesTheStoredStateWhole) {
  {
    const auto defaults = open();
    defaults->set("text", "before");
  }
  const pid_t child = fork();
  if (child == 0) {
    // A file that may not grow fails to be written just as on a full disk.
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1000, 1000};
    setrlimit(RLIMIT_FSIZE, &limit);
    const auto defaults = open();
    defaults->set("list", texts(10, 1000));
    defaults->set("list", texts(11, 1000));
    const bool inMemory = defaults->textListFor("list").size() == 11;
    _exit(problems_.size() == 1 && inMemory ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0) << "told once, and the state in memory goes on";
  EXPECT_EQ(*open()->textFor("text"), "before");
  EXPECT_TRUE(problems_.empty());
}

using Names = std::set<std::string>;

TEST_F(UserDefaultsTest, LargeTextsAreWrittenOnceAndDeletedWithTheirLastUse) {
  const SharedText small = text(32 << 10), large = text((32 << 10) + 1), huge = text(9 << 20);
  {
    const auto defaults = open();
    defaults->set("list", texts({small, large, huge, large}));
    EXPECT_TRUE(files().contains("1.txt")) << "when it returns; the huge one follows";
  }
  {
    const auto defaults = open();
    const auto listed = defaults->textListFor("list");
    ASSERT_EQ(listed.size(), 4U);
    EXPECT_TRUE(*listed[0] == *small && *listed[1] == *large && *listed[2] == *huge);
    struct stat before {
    }, after{};
    ASSERT_EQ(stat((folder_ + "/2.txt").c_str(), &before), 0);
    EXPECT_EQ(before.st_mode & 0777, 0600U);
    // What stays and what is used elsewhere too is not written again.
    defaults->set("list", texts({listed[2], share("small"), listed[1]}));
    defaults->set("other", listed[2]);
    ASSERT_EQ(stat((folder_ + "/2.txt").c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(files(), (Names{"1.txt", "2.txt"}));
    EXPECT_LT(std::filesystem::file_size(path_), 300U);
    defaults->set("list", texts({listed[1]}));
  }
  EXPECT_EQ(files(), (Names{"1.txt", "2.txt"}));
  open()->set("other", true);
  EXPECT_EQ(files(), Names{"1.txt"});
  {
    const auto defaults = open();
    defaults->set("list", texts({text(20 << 20)}));
    defaults->set("list", Value::List());  // before that has been written
  }
  EXPECT_EQ(files(), Names{});
}

TEST_F(UserDefaultsTest, ALargeTextThatIsNotWholeIsLeftOut) {
  const SharedText large = text(40000);
  const auto entry = [](const SharedText& text, const char* date) {
    return Value::Dictionary{{"type", "text"}, {"text", text}, {"date", date}};
  };
  open()->set("list", Value::List{entry(large, "1"), entry(share("small"), "2")});
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1}, large->size() - 1, large->size() + 1}) {
    std::filesystem::resize_file(folder_ + "/1.txt", size);
    const auto defaults = open();
    const auto value = defaults->value("list");
    const Value::List& list = *value->asList();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(find(*list[0].asDictionary(), "text"), nullptr) << size;
    EXPECT_EQ(*find(*list[1].asDictionary(), "text")->asText(), "small");
    writeFile(folder_ + "/1.txt", *large);
  }
  EXPECT_EQ(*open()->value("list")->asList()->front().asDictionary()->at(1).second.asText(),
            *large);
  writeFile(folder_ + "/1.txt", std::string(large->size(), '\xff'));
  EXPECT_EQ(open()->value("list")->asList()->front().asDictionary()->size(), 2U);
  EXPECT_TRUE(problems_.empty());
}

TEST_F(UserDefaultsTest, LeavesNoFilesThatNothingRefersTo) {
  open()->set("list", texts({text(40000)}));
  for (const char* left : {"/7.txt", "/1.txt.Xy12Zz", "/8.txt.Xy12Zz", "/notes.txt", "/2.bak"})
    writeFile(folder_ + left, "left");
  EXPECT_EQ(open()->textListFor("list").size(), 1U);
  EXPECT_EQ(files(), (Names{"1.txt", "2.bak", "notes.txt"})) << "what is not ours stays";

  writeFile(path_, "{damaged");
  open();
  EXPECT_EQ(problems_.size(), 1U);
  EXPECT_EQ(files(), Names{}) << "put aside with what refers to it";
  bool kept = false;
  for (const auto& found : std::filesystem::recursive_directory_iterator(home_.path()))
    kept = kept || (found.path().filename() == "1.txt" && found.file_size() == 40000);
  EXPECT_TRUE(kept);
}

TEST_F(UserDefaultsTest, TakesLargeTextsOutOfAnOlderFile) {
  writeFile(path_, "{\"list\": [\"" + *text(10 << 20) + "\", \"" + *text(40000) + "\", \"a\"]}");
  open()->set("flag", true);
  EXPECT_EQ(files(), (Names{"1.txt", "2.txt"}));
  EXPECT_LT(std::filesystem::file_size(path_), 300U);
  const auto listed = open()->textListFor("list");
  ASSERT_EQ(listed.size(), 3U);
  EXPECT_EQ(listed[0]->size(), 10U << 20);
  EXPECT_EQ(listed[1]->size(), 40000U);
}

TEST_F(UserDefaultsTest, ALargeTextThatCannotBeWrittenIsToldAndTriedAgain) {
  const auto defaults = open();
  writeFile(folder_, "in the way");
  for (const SharedText& large : {text(40000), text(9 << 20)}) {
    problems_.clear();
    defaults->set("list", texts({large}));
    EXPECT_TRUE(large->size() == 40000 || hearFromBackground());
    defaults->set("other", true);
    EXPECT_EQ(problems_.size(), 1U) << "told once";
    defaults->set("list", texts({share("small")}));
  }
  const SharedText large = text(40000);
  defaults->set("list", texts({large}));
  std::filesystem::remove(folder_);
  defaults->set("list", texts({large}));
  EXPECT_EQ(files().size(), 1U);
  EXPECT_EQ(open()->textListFor("list").size(), 1U);
}

// What set() returned from is on disk, whenever the process is killed; but for a text of over 8 MB,
// which no other waits for.
TEST_F(UserDefaultsTest, SurvivesBeingKilledAtAnyMoment) {
  const std::size_t sizes[] = {300, 20 << 20, 300, 40000, 300, 1 << 20, 8 << 20, 300};
  for (int round = 0; round < 40; ++round) {
    int pipes[2];
    ASSERT_EQ(pipe(pipes), 0);
    const pid_t child = fork();
    if (child == 0) {
      const auto defaults = open();
      std::vector<SharedText> newest;
      for (int i = 0;; ++i) {
        auto text = std::make_shared<std::string>(std::to_string(i) + ' ');
        text->resize(sizes[i % std::size(sizes)], 'x');
        newest.insert(newest.begin(), text);
        if (newest.size() > 5) newest.pop_back();
        defaults->set("list", texts(newest));
        if (write(pipes[1], &i, sizeof i) != sizeof i) _exit(0);
      }
    }
    close(pipes[1]);
    int confirmed = -1;
    for (int i = 0; i <= round % 11; ++i)
      ASSERT_EQ(read(pipes[0], &confirmed, sizeof confirmed), ssize_t{sizeof confirmed});
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    while (read(pipes[0], &confirmed, sizeof confirmed) > 0) {
    }
    close(pipes[0]);
    std::set<int> found;
    for (const SharedText& text : open()->textListFor("list")) {
      found.insert(std::stoi(*text));
      EXPECT_EQ(text->size(), sizes[static_cast<std::size_t>(std::stoi(*text)) % std::size(sizes)]);
    }
    ASSERT_TRUE(problems_.empty());
    // The one after the last confirmed may have pushed the oldest out.
    for (int i = std::max(0, confirmed - 3); i <= confirmed; ++i) {
      const bool huge = sizes[static_cast<std::size_t>(i) % std::size(sizes)] > 8 << 20;
      EXPECT_TRUE(huge || found.contains(i)) << i << " of " << confirmed;
    }
    EXPECT_LE(files().size(), 5U);
  }
}

}  // namespace
}  // namespace marbelot
