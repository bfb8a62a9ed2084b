// The settings file: what survives, and what is told when something does not.

#include "platform/linux/user_defaults.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

class UserDefaultsTest : public testing::Test {
 protected:
  std::unique_ptr<JsonDefaults> open() {
    auto defaults =
        std::make_unique<JsonDefaults>(path_, [](const std::function<void()>& work) { work(); });
    defaults->setProblemHandler([this](const std::string& told) { problems_.push_back(told); });
    return defaults;
  }
  static Value::List texts(std::size_t count, std::size_t size) {
    Value::List list;
    for (std::size_t i = 0; i < count; ++i)
      list.emplace_back(std::string(size, static_cast<char>('a' + i % 26)));
    return list;
  }

  TemporaryHome home_;
  const std::string path_ = home_ / "config/marbelot/test.json";
  std::vector<std::string> problems_;
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

TEST_F(UserDefaultsTest, LargeStoresAreCompletedInOrder) {
  {
    const auto defaults = open();
    for (std::size_t i = 1; i <= 20; ++i) {
      defaults->set("list", texts(i, 200000));
      defaults->set("last", static_cast<int>(i));
    }
  }
  const auto defaults = open();
  EXPECT_EQ(defaults->textListFor("list").size(), 20U);
  EXPECT_EQ(defaults->value("last")->asInteger(), 20);
}

// What a small store returned from is on disk, whenever the process is killed.
TEST_F(UserDefaultsTest, SurvivesBeingKilledAtAnyMoment) {
  for (int round = 0; round < 40; ++round) {
    int pipes[2];
    ASSERT_EQ(pipe(pipes), 0);
    const pid_t child = fork();
    if (child == 0) {
      const auto defaults = open();
      for (int i = 0;; ++i) {
        defaults->set("list", texts(static_cast<std::size_t>(i % 40), 300));
        defaults->set("count", i);
        if (write(pipes[1], &i, sizeof i) != sizeof i) _exit(0);
      }
    }
    close(pipes[1]);
    int confirmed = -1;
    for (int i = 0; i <= round % 7; ++i)
      ASSERT_EQ(read(pipes[0], &confirmed, sizeof confirmed), ssize_t{sizeof confirmed});
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    while (read(pipes[0], &confirmed, sizeof confirmed) > 0) {
    }
    close(pipes[0]);
    const auto count = open()->value("count");
    ASSERT_TRUE(problems_.empty());
    ASSERT_TRUE(count && count->asInteger());
    EXPECT_GE(*count->asInteger(), confirmed);
  }
}

}  // namespace
}  // namespace marbelot
