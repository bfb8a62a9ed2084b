// Paths as strings, the same on every system.
#include <gtest/gtest.h>

#include "platform/files.h"

namespace marbelot {
namespace {

TEST(Paths, AreTakenApartAndPutTogether) {
  EXPECT_EQ(files::join("/a", "b"), "/a/b");
  EXPECT_EQ(files::join("/", "b"), "/b");
  EXPECT_EQ(files::join("", "b"), "b");
  const struct {
    const char *path, *last, *extension;
  } cases[] = {
      {"/a/b.PNG", "b.PNG", "png"},
      {"/a.d/b/", "b", ""},
      {"b.tar.gz", "b.tar.gz", "gz"},
      {".hidden", ".hidden", ""},
      {"/", "/", ""},
      {"///", "/", ""},
      {"", "", ""},
      {"a.", "a.", ""},
      {"É.ÉX", "É.ÉX", "Éx"},
  };
  for (const auto& [path, last, extension] : cases) {
    EXPECT_EQ(files::lastComponent(path), last) << path;
    EXPECT_EQ(files::lowercasedExtension(last), extension) << path;
  }
  EXPECT_EQ(files::expandingTilde("~"), files::homeFolder());
  EXPECT_EQ(files::expandingTilde("~/Shots"), files::join(files::homeFolder(), "Shots"));
  EXPECT_EQ(files::expandingTilde("/a/~/b"), "/a/~/b");
  EXPECT_EQ(files::expandingTilde("~root/a"), "/root/a");
  EXPECT_EQ(files::expandingTilde("~no user/a"), "~no user/a");
}

}  // namespace
}  // namespace marbelot
