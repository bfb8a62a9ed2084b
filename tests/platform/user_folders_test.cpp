// Where screenshots are saved, by the desktop and by what its tools have set.

#include <gtest/gtest.h>

#include "platform/files.h"
#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

class UserFoldersTest : public testing::Test {
 protected:
  std::vector<std::string> usual(const char* desktop) {
    setenv("XDG_CURRENT_DESKTOP", desktop, 1);
    std::vector<std::string> names;
    for (const std::string& folder : files::usualScreenshotFolders())
      names.push_back(folder == home_.path() ? "~" : "~" + folder.substr(home_.path().size()));
    return names;
  }
  std::optional<std::string> set(const std::string& file, const std::string& contents) {
    writeFile(home_ / "config/" + file, contents);
    const auto location = files::screenshotLocation();
    std::filesystem::remove(home_ / "config/" + file);
    return location;
  }

  TemporaryHome home_;
};

using Folders = std::vector<std::string>;

TEST_F(UserFoldersTest, EachDesktopsToolHasAFolderOfItsOwn) {
  writeFile(home_ / "config/user-dirs.dirs", "XDG_PICTURES_DIR=\"$HOME/Bilder\"\n");
  const Folders made{"~/Bilder/Screenshots", "~/Bilder"};
  EXPECT_EQ(usual("GNOME"), made);
  EXPECT_EQ(usual("ubuntu:GNOME"), made);
  EXPECT_EQ(usual("KDE"), made);
  for (const char* desktop : {"XFCE", "X-Cinnamon"}) EXPECT_EQ(usual(desktop), Folders{"~/Bilder"});
  for (const char* desktop : {"MATE", "", "sway", "NOTGNOME"}) EXPECT_EQ(usual(desktop), Folders{});

  // Without such a folder, GLib's programs save in the home folder.
  std::filesystem::remove(home_ / "config/user-dirs.dirs");
  EXPECT_EQ(usual("GNOME"), (Folders{"~/Pictures/Screenshots", "~/Screenshots", "~/Pictures"}));
  EXPECT_EQ(usual("KDE"), (Folders{"~/Pictures/Screenshots", "~/Pictures"}));
  EXPECT_EQ(usual("XFCE"), (Folders{"~/Pictures", "~"}));
}

TEST_F(UserFoldersTest, TheToolsOwnSettingsComeFirst) {
  EXPECT_EQ(set("none", ""), std::nullopt);
  EXPECT_EQ(set("xfce4/xfce4-screenshooter", "delay=0\nscreenshot_dir=file:///a%20b\n"), "/a b");
  EXPECT_EQ(set("flameshot/flameshot.ini", "[General]\nsavePath=/shots\n"), "/shots");
  EXPECT_EQ(set("flameshot/flameshot.ini",
                R"([General]
savePath="/Im\xe1genes/\x56fe;\xd83d\xdcf7 a\\b")"),
            "/Imágenes/图;📷 a\\b");
  EXPECT_EQ(set("spectaclerc",
                "[Save]\nimageSaveLocation=/wrong\n[ImageSave]\n"
                "imageSaveLocation[$e]=file://$HOME/Shots\n"),
            home_ / "Shots");
  EXPECT_EQ(set("marbelot/com.apple.screencapture.json", R"({"location": "~/Mine"})"), "~/Mine");
}

}  // namespace
}  // namespace marbelot
