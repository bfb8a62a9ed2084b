// Editing and exporting pictures through the whole application, over services in memory.
#include <cstring>

#include "image/image_tag.h"
#include "platform/files.h"
#include "platform/image_codec.h"
#include "tests/app/app_fixture.h"
#include "tests/support/png.h"

namespace marbelot {
namespace {

// Its top left pixel has the colour `mark`, all others are white.
Image picture(int width, int height, std::uint8_t mark = 200) {
  Bitmap bitmap = *Bitmap::make(width, height);
  for (int y = 0; y < height; ++y) std::memset(bitmap.row(y), 255, std::size_t{4} * width);
  std::memset(bitmap.row(0), mark, 3);
  return Image::fromPixels(std::make_shared<const Bitmap>(std::move(bitmap)));
}

// Only its pixels are damaged.
std::optional<Image> damagedPng() {
  std::string bytes = *png(640);
  bytes[bytes.size() / 2] ^= 1;
  return Image::fromBytes(share(bytes));
}

class ImageToolsTest : public ApplicationTest {
 protected:
  ImageToolsTest() { launch(); }
  void copy(const Image& image) {
    PasteboardContents contents;
    contents.image = image;
    desktop_.pasteboard.copyElsewhere(contents);
  }
  void poll() { desktop_.queue.advance(0.6); }
  void perform(const std::string& action, Represented represented = {}) {
    MenuItem sender;
    sender.action = action;
    sender.represented = std::move(represented);
    desktop_.statusItem.delegate->menuItemChosen(sender);
    desktop_.queue.drain();
  }
  void perform(const std::string& action, const EditSource& source, EditParameter param) {
    perform(action, std::make_shared<const EditRequest>(source, std::move(param)));
  }
  const std::optional<Image>& clipboard() {
    contents_ = desktop_.pasteboard.contents();
    return contents_.image;
  }
  std::string size() {
    const auto& image = clipboard();
    return image ? std::to_string(image->width()) + "x" + std::to_string(image->height()) : "none";
  }
  // The colour of the pixel on the clipboard, and its alpha: "200 255".
  std::string pixel(int x, int y) {
    const SharedBitmap bitmap = decode(*clipboard());
    const std::uint8_t* at = bitmap->row(y) + 4 * x;
    return std::to_string(at[0]) + " " + std::to_string(at[3]);
  }
  std::string said() const { return desktop_.notices.last(); }
  Titles history() {
    Titles titles;
    for (const MenuItemRef& entry : item({"Clipboard history"})->submenu->items)
      if (entry->payload) titles.push_back(entry->title);
    return titles;
  }

  PasteboardContents contents_;
};

TEST_F(ImageToolsTest, TheMenuOffersWhatTheTableHolds) {
  EXPECT_TRUE(item({"Edit image"})->hidden);
  EXPECT_TRUE(item({"Copy as <img> tag (base64)"})->hidden);
  copy(picture(30, 20));
  EXPECT_FALSE(item({"Edit image"})->hidden);
  EXPECT_FALSE(item({"Copy as <img> tag (base64)"})->hidden);
  Titles titles;
  for (const MenuItemRef& entry : item({"Edit image"})->submenu->items)
    titles.push_back(entry->separator ? "-" : entry->title);
  EXPECT_EQ(titles, (Titles{"Crop…", "Add border", "Add rounded shadow", "Make transparent",
                            "Make emblem", "-", "Rotate", "Flip", "Resize"}));
  const MenuItemRef left = item({"Edit image", "Rotate", "Left 90°"});
  EXPECT_EQ(left->action, "rotateClip:");
  EXPECT_EQ(representedText(left->represented), "clipboard:-90");
  EXPECT_EQ(std::get<std::int64_t>(editRequest(*left)->param), -90);
  EXPECT_EQ(std::get<PixelColor>(editRequest(*item({"Edit image", "Add border", "Red"}))->param),
            colors::red);
  EXPECT_EQ(representedText(item({"Edit image", "Resize", "75%"})->represented), "clipboard:0.75");
  EXPECT_FALSE(item({"Edit image", "Make emblem", "Circle"})->enabled) << "a heading";
  desktop_.pasteboard.copyElsewhere("text");
  EXPECT_TRUE(item({"Edit image"})->hidden);
}

TEST_F(ImageToolsTest, AnEditReplacesTheClipboardAndIsANewCopy) {
  copy(picture(300, 200));
  poll();
  choose({"Edit image", "Rotate", "Right 90°"});
  EXPECT_EQ(size(), "200x300");
  EXPECT_EQ(pixel(0, 299), "200 255") << "a positive angle turns counter-clockwise";
  EXPECT_EQ(said(), "Rotated 90°");
  EXPECT_EQ(desktop_.statusItem.symbols.back(), "checkmark.circle.fill");
  EXPECT_EQ(history().size(), 1u);
  poll();
  EXPECT_EQ(history().size(), 2u);
  EXPECT_EQ(history()[0], "\U0001F5BC Image 200 × 300");
  choose({"Clipboard history", "\U0001F5BC Image 300 × 200", "Edit image", "Resize", "50%"});
  EXPECT_EQ(size(), "150x100");
  EXPECT_EQ(said(), "Resized to 50% — copied to clipboard");

  writeFile(home_ / "a.png", *picture(40, 40).bytes());
  perform("makeEmblemClip:", EditFile{home_ / "a.png"}, std::string("squircle:white"));
  EXPECT_EQ(size(), "48x48");
  EXPECT_EQ(said(), "Made rounded-square emblem — copied to clipboard");
}

TEST_F(ImageToolsTest, FailuresSayWhatFailedAndLeaveTheClipboard) {
  const auto fails = [&](const std::string& message, const std::string& action,
                         const EditSource& source, EditParameter param) {
    const auto before = desktop_.pasteboard.changeCount();
    const auto notices = desktop_.notices.posted.size();
    perform(action, source, std::move(param));
    EXPECT_EQ(desktop_.pasteboard.changeCount(), before) << message;
    EXPECT_EQ(desktop_.notices.posted.size(), notices + (message.empty() ? 0 : 1)) << action;
    if (!message.empty()) {
      EXPECT_EQ(said(), message);
    }
  };
  const std::string none = "No image on clipboard", unreadable = "Couldn't read that image";
  fails(none, "flipClip:", EditClipboard{}, std::string("h"));
  desktop_.pasteboard.copyElsewhere("a text");
  poll();
  fails(none, "addBorderClip:", EditClipboard{}, colors::red);
  fails(unreadable, "flipClip:", EditClipHistory{0}, std::string("h"));
  fails(unreadable, "flipClip:", EditClipHistory{7}, std::string("h"));
  fails(unreadable, "flipClip:", EditFile{home_ / "missing.png"}, std::string("h"));
  copy(picture(20, 20));
  fails(none, "rotateClip:", EditClipboard{}, std::string("90"));
  fails(none, "resizeClip:", EditClipboard{}, std::int64_t{1});
  fails(none, "resizeClip:", EditClipboard{}, 1e300);
  fails("Image too small for that shadow", "addShadowClip:", EditClipboard{},
        std::string("same:large"));
  const auto before = desktop_.pasteboard.changeCount();
  perform("rotateClip:", std::int64_t{90});  // not a request: no argument
  EXPECT_EQ(said(), none);
  PasteboardContents damaged;
  damaged.image = damagedPng();
  desktop_.pasteboard.copyElsewhere(damaged);
  fails(none, "flipClip:", EditClipboard{}, std::string("h"));
  EXPECT_EQ(desktop_.pasteboard.changeCount(), before + 1);
}

TEST_F(ImageToolsTest, SeveralEditsInARowBuildOnEachOther) {
  copy(picture(300, 200));
  ask({"Edit image", "Rotate", "Right 90°"});
  ask({"Edit image", "Resize", "50%"});
  ask({"Edit image", "Flip", "Vertical"});
  desktop_.queue.drain();
  EXPECT_EQ(size(), "100x150");
  EXPECT_LT(std::stoi(pixel(0, 0)), 255) << "turned, halved and flipped back to the top";
  EXPECT_EQ(desktop_.notices.posted.size(), 3u);
}

TEST_F(ImageToolsTest, ANewerCopyStaysOnTheClipboard) {
  copy(picture(300, 200));
  poll();
  ask({"Edit image", "Resize", "50%"});
  ask({"Edit image", "Resize", "50%"});
  desktop_.pasteboard.copyElsewhere("newer");
  desktop_.queue.drain();
  EXPECT_EQ(*desktop_.pasteboard.contents().text, "newer");
  EXPECT_EQ(said(), "Resized to 50% — kept in the clipboard history");
  ASSERT_EQ(history().size(), 4u);
  EXPECT_EQ(history()[1], "\U0001F5BC Image 75 × 50");
  EXPECT_EQ(history()[2], "\U0001F5BC Image 150 × 100");
}

TEST_F(ImageToolsTest, WhatIsMadeOfAConcealedPictureIsConcealed) {
  PasteboardContents secret;
  secret.image = picture(30, 20);
  secret.concealed = true;
  const auto isConcealed = [&] { return desktop_.pasteboard.contents().concealed; };
  desktop_.pasteboard.copyElsewhere(secret);
  ask({"Edit image", "Rotate", "Right 90°"});
  choose({"Edit image", "Flip", "Vertical"});
  EXPECT_EQ(size(), "20x30");
  EXPECT_TRUE(isConcealed());
  choose({"Copy as <img> tag (base64)"});
  EXPECT_TRUE(desktop_.pasteboard.contents().text && isConcealed());

  writeFile(home_ / "a.png", *picture(9, 9).bytes());
  desktop_.pasteboard.copyElsewhere(secret);
  perform("flipClip:", EditFile{home_ / "a.png"}, std::string("h"));
  EXPECT_FALSE(isConcealed()) << "the file is no secret";

  poll();
  const Titles before = history();
  desktop_.pasteboard.copyElsewhere(secret);
  ask({"Edit image", "Flip", "Vertical"});
  copy(*secret.image);
  desktop_.queue.drain();
  EXPECT_EQ(said(), "The clipboard has changed meanwhile");
  poll();
  EXPECT_EQ(history().size(), before.size() + 1) << "the newer copy alone";
}

TEST_F(ImageToolsTest, AnOpenMenuMeansTheEntryThatItShows) {
  copy(picture(10, 10));
  poll();
  copy(picture(20, 20));
  poll();
  const MenuItemRef flip =
      item({"Clipboard history", "\U0001F5BC Image 10 × 10", "Edit image", "Flip", "Horizontal"});
  const MenuItemRef tag =
      item({"Clipboard history", "\U0001F5BC Image 10 × 10", "Copy as <img> tag (base64)"});
  desktop_.pasteboard.copyElsewhere("moves it on");
  poll();
  desktop_.statusItem.delegate->menuItemChosen(*flip);
  desktop_.queue.drain();
  EXPECT_EQ(size(), "10x10");
  desktop_.statusItem.delegate->menuItemChosen(*tag);
  desktop_.queue.drain();
  const SharedText text = desktop_.pasteboard.contents().text;
  EXPECT_TRUE(text->ends_with("\" width=\"10\" height=\"10\" alt=\"\">"));
  EXPECT_EQ(said(), "Copied <img> tag (base64)");
}

TEST_F(ImageToolsTest, TheHistoryKeepsNoPixels) {
  desktop_.defaults.set("autoSaveClipImages", false);
  for (const bool saves : {true, false}) {
    if (!saves) perform("toggleAutoSaveClipImages");
    auto pixels = std::make_shared<const Bitmap>(*Bitmap::makeClear(640, 480));
    const std::weak_ptr<const Bitmap> watched = pixels;
    copy(Image::fromPixels(std::move(pixels)));
    poll();
    poll();
    EXPECT_TRUE(watched.expired()) << (saves ? "saved" : "not saved");
  }
}

TEST_F(ImageToolsTest, TheTagHoldsTheWholePicture) {
  EXPECT_EQ(base64(""), "");
  EXPECT_EQ(base64("M"), "TQ==");
  EXPECT_EQ(base64("Ma"), "TWE=");
  EXPECT_EQ(base64("Man"), "TWFu");
  EXPECT_EQ(base64(std::string("\xFB\xEF\xBE\xFF\0", 5)), "++++/wA=");
  perform("copyClipboardImageAsTag");
  EXPECT_EQ(said(), "No image on the clipboard");
  const Image image = picture(7, 5);
  copy(image);
  poll();
  choose({"Copy as <img> tag (base64)"});
  EXPECT_EQ(*desktop_.pasteboard.contents().text, "<img src=\"data:image/png;base64," +
                                                      base64(*image.bytes()) +
                                                      "\" width=\"7\" height=\"5\" alt=\"\">");
  PasteboardContents damaged;
  damaged.image = damagedPng();
  desktop_.pasteboard.copyElsewhere(damaged);
  perform("copyClipboardImageAsTag");
  EXPECT_EQ(said(), "Couldn't encode the image");
  const auto count = desktop_.pasteboard.changeCount();
  for (const Represented& bad : {Represented(), Represented(std::int64_t{9})}) {
    desktop_.notices.posted.clear();
    perform("copyClipHistoryImageAsTag:", bad);
    EXPECT_TRUE(desktop_.notices.posted.empty());
  }
  EXPECT_EQ(desktop_.pasteboard.changeCount(), count);
}

TEST_F(ImageToolsTest, SavesUnderANameOfItsOwn) {
  const std::string folder = home_ / "to/pictures";
  desktop_.pasteboard.copyElsewhere("only a text");
  for (const char* action : {"saveClipImageTo:", "chooseAndSaveClipImage", "revealCurrentClipImage",
                             "copyCurrentClipImagePath"}) {
    desktop_.notices.posted.clear();
    perform(action, folder);
    EXPECT_EQ(said(), "No image on clipboard") << action;
  }
  EXPECT_FALSE(files::list(folder));
  copy(picture(7, 5));
  perform("saveClipImageTo:", std::int64_t{1});
  perform("saveClipImageTo:", folder);
  EXPECT_TRUE(said().starts_with("Saved to pictures/Clipboard 20")) << said();
  const auto name = said().substr(std::string("Saved to pictures/").size());
  EXPECT_EQ(readFile(folder + "/" + name), *clipboard()->bytes());
  writeFile(home_ / "to/file", "in the way");
  perform("saveClipImageTo:", home_ / "to/file");
  EXPECT_EQ(said(), "No image on clipboard");

  desktop_.workspace.revealed.clear();
  perform("revealCurrentClipImage");
  ASSERT_EQ(desktop_.workspace.revealed.size(), 1u);
  EXPECT_TRUE(files::exists(desktop_.workspace.revealed[0]));
  perform("copyCurrentClipImagePath");
  EXPECT_EQ(said(), "Copied file path");
  EXPECT_TRUE(files::exists(*desktop_.pasteboard.contents().text));
  const auto entries = history().size();
  poll();
  EXPECT_EQ(history().size(), entries) << "its own copy is not recorded";
}

TEST_F(ImageToolsTest, RemembersTheFoldersThatWereChosen) {
  perform("chooseAndSaveClipImage");
  EXPECT_TRUE(desktop_.dialogs.panels.empty());
  EXPECT_EQ(said(), "No image on clipboard");
  copy(picture(7, 5));
  for (const char* name : {"a", "b", "c", "d", "e", "f", "b"}) {
    perform("chooseAndSaveClipImage");
    desktop_.dialogs.folderChosen(home_ / name);
    desktop_.queue.drain();
  }
  EXPECT_EQ(desktop_.dialogs.panels.back().prompt, "Save Here");
  EXPECT_EQ(desktop_.dialogs.panels.back().message,
            "Choose a folder to save the clipboard image into");
  EXPECT_TRUE(said().starts_with("Saved to b/Clipboard ")) << said();
  Titles folders;
  const auto stored = desktop_.defaults.value("favoriteSaveDirs");
  for (const Value& path : *stored->asList())
    folders.push_back(files::lastComponent(*path.asText()));
  EXPECT_EQ(folders, (Titles{"b", "f", "e", "d", "c"}));

  const auto count = desktop_.defaults.writes;
  perform("chooseAndSaveClipImage");
  writeFile(home_ / "taken", "a file");
  desktop_.dialogs.folderChosen(home_ / "taken");
  desktop_.queue.drain();
  EXPECT_EQ(said(), "No image on clipboard");
  EXPECT_EQ(desktop_.defaults.writes, count) << "not remembered";
}

}  // namespace
}  // namespace marbelot
