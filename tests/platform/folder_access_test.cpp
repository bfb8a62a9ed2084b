// What the user is told of a folder that cannot be read.

#include "platform/linux/folder_access.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

class FolderAccessTest : public testing::Test {
 protected:
  FolderAccessTest() { chmod(home_.path().c_str(), 0755); }

  // Examined by somebody who may not read everything.
  static FolderAccess examined(const std::string& folder) {
    const bool root = geteuid() == 0;
    EXPECT_TRUE(!root || seteuid(65534) == 0);
    const FolderAccess access = examineAccess(folder);
    EXPECT_TRUE(!root || seteuid(0) == 0);
    return access;
  }
  static bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
  }

  TemporaryHome home_;
};

TEST_F(FolderAccessTest, AMissingFolderLeadsToWhereItShouldBe) {
  std::filesystem::create_directory(home_ / "Pictures");
  const std::string folder = home_ / "Pictures/It's here/Shots";
  const FolderAccess access = examined(folder);
  EXPECT_EQ(access.nearest, home_ / "Pictures");
  EXPECT_EQ(access.openable, home_ / "Pictures");
  EXPECT_EQ(access.atNearest, FolderAccess::nothing);
  EXPECT_TRUE(accessAdvice(access, true).starts_with(folder + ": No such file or directory. Make"));
  EXPECT_TRUE(accessAdvice(access, false)
                  .ends_with("mkdir -p '" + home_ / "Pictures/It'\\''s here/Shots'"));

  std::filesystem::create_symlink("nowhere", home_ / "link");
  EXPECT_EQ(examined(home_ / "link").nearest, home_.path());
}

TEST_F(FolderAccessTest, ALockedFolderLeadsToItselfOrToWhatHidesIt) {
  const std::string folder = home_ / "Private/Shots";
  std::filesystem::create_directories(folder);
  chmod((home_ / "Private").c_str(), 0755);
  chmod(folder.c_str(), 0);
  FolderAccess access = examined(folder);
  EXPECT_EQ(access.nearest, folder);
  EXPECT_EQ(access.openable, home_ / "Private");
  EXPECT_TRUE(accessAdvice(access, true).starts_with(folder + ": Permission denied. Allow"));
  EXPECT_TRUE(contains(accessAdvice(access, false), "no file manager"));
  EXPECT_TRUE(contains(accessAdvice(access, false), "chmod u+rx '" + folder + "'"));

  chmod((home_ / "Private").c_str(), 0);
  access = examined(folder);
  EXPECT_EQ(access.nearest, home_ / "Private");
  EXPECT_EQ(access.openable, home_.path());
  EXPECT_EQ(access.atNearest, FolderAccess::locked);
}

TEST_F(FolderAccessTest, AFileInTheWayLeadsToTheFile) {
  writeFile(home_ / "Shots", "x");
  for (const char* folder : {"Shots", "Shots/2026"}) {
    const FolderAccess access = examined(home_ / folder);
    EXPECT_EQ(access.nearest, home_ / "Shots");
    EXPECT_EQ(access.openable, home_.path());
    EXPECT_TRUE(contains(accessAdvice(access, true), "Not a directory. Move away"));
  }
}

TEST_F(FolderAccessTest, WhatCanBeReadNeedsNoAdvice) {
  const FolderAccess access = examined(home_.path());
  EXPECT_EQ(access.openable, home_.path());
  EXPECT_EQ(accessAdvice(access, true), "");
  EXPECT_TRUE(contains(accessAdvice(access, false), "no file manager"));
}

}  // namespace
}  // namespace marbelot
