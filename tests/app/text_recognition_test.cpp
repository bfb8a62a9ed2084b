// Reading the text in images through the whole application, over services in memory.
#include <algorithm>
#include <cstring>
#include <fstream>

#include "platform/files.h"
#include "tests/app/app_fixture.h"
#include "tests/support/png.h"
#include "text/save_text.h"

namespace marbelot {
namespace {

// Told apart by its width.
Image picture(int width) {
  Bitmap bitmap = *Bitmap::make(width, 8);
  std::memset(bitmap.data(), 255, bitmap.bytesPerRow() * 8);
  return Image::fromPixels(std::make_shared<const Bitmap>(std::move(bitmap)));
}

class TextRecognitionTest : public ApplicationTest {
 protected:
  TextRecognitionTest() { launch(); }
  void copy(const Image& image) {
    PasteboardContents contents;
    contents.image = image;
    desktop_.pasteboard.copyElsewhere(contents);
    desktop_.queue.advance(0.6);
  }
  void switchAutoOff() { choose({"Settings", "Auto-scan copied images for text (OCR)"}); }
  memory::Recognizer& recognizer() { return desktop_.recognizer; }
  memory::MemoryWindow* panel() { return desktop_.windows.find("ocr"); }
  bool isShown() { return panel() && panel()->shown; }
  std::string shown() { return isShown() ? *panel()->text("ocrHUDTextView") : ""; }
  std::string last() const { return desktop_.notices.last(); }
  int widthRead() { return recognizer().pictures.back()->width(); }
  void press(const std::string& button) { ASSERT_TRUE(panel()->press(button)) << button; }
};

TEST_F(TextRecognitionTest, ScansEachCopiedImageQuietlyAndShowsOnlyText) {
  copy(picture(40));
  ASSERT_TRUE(recognizer().isReading());
  recognizer().answer(std::vector<std::string>{});
  copy(picture(41));
  recognizer().answer(Recognition{Recognition::Outcome::missingTool, {}, "nothing there"});
  EXPECT_FALSE(isShown());
  EXPECT_TRUE(desktop_.notices.posted.empty()) << last();

  copy(picture(42));
  recognizer().answer({"first line", "second"});
  EXPECT_EQ(shown(), "first line\nsecond");
  EXPECT_EQ(*panel()->text("ocrHeader"),
            "Scanned text — 17 characters   ·   ← → ↑ ↓ moves this panel");
  EXPECT_FALSE(panel()->isKey());
  EXPECT_TRUE(desktop_.notices.posted.empty()) << last();
}

TEST_F(TextRecognitionTest, DropsAQuietScanForANewerImage) {
  desktop_.queue.holdBackground = true;
  copy(picture(40));
  copy(picture(41));
  copy(picture(42));
  desktop_.queue.holdBackground = false;
  desktop_.queue.drain();
  ASSERT_EQ(recognizer().pictures.size(), 1u) << "those that nobody wants are not even read";
  EXPECT_EQ(widthRead(), 42);
  copy(picture(43));
  ASSERT_EQ(recognizer().pictures.size(), 2u);
  recognizer().answer({"of the newest"});
  EXPECT_EQ(shown(), "of the newest");
}

TEST_F(TextRecognitionTest, FinishesAScanThatWasAskedForBeforeAQuietOne) {
  switchAutoOff();
  copy(picture(40));
  EXPECT_TRUE(recognizer().pictures.empty());
  switchAutoOff();  // on again
  choose({"Scan text (OCR)…"});
  EXPECT_EQ(last(), "Scanning image for text…");
  copy(picture(41));
  EXPECT_EQ(widthRead(), 40);
  recognizer().answer({"asked for"});
  EXPECT_EQ(shown(), "asked for");
  desktop_.queue.drain();
  EXPECT_EQ(widthRead(), 41);

  // One that was asked for comes before the quiet one that waits, and does not push it out.
  const Titles older{"Clipboard history", "🖼 Image 40*", "Scan text (OCR)…"};
  choose(older);
  copy(picture(42));
  choose(older);
  EXPECT_EQ(widthRead(), 40);
  recognizer().answer({"again"});
  desktop_.queue.drain();
  EXPECT_EQ(widthRead(), 42);
  switchAutoOff();
  EXPECT_FALSE(recognizer().isReading());
}

TEST_F(TextRecognitionTest, TellsHowAScanThatWasAskedForWent) {
  EXPECT_TRUE(item({"Scan text (OCR)…"})->hidden);
  switchAutoOff();
  copy(picture(40));
  const Titles entry{"Clipboard history", "🖼 Image*", "Scan text (OCR)…"};
  choose(entry);
  recognizer().answer(std::vector<std::string>{});
  EXPECT_EQ(last(), "No text found in the image");
  choose(entry);
  recognizer().answer(Recognition{});
  EXPECT_EQ(last(), "OCR failed");
  choose(entry);
  recognizer().answer(Recognition{Recognition::Outcome::missingLanguage, {}, "install one"});
  EXPECT_EQ(last(), "OCR failed: install one");
  std::string bytes = *png(640);
  bytes[bytes.size() / 2] ^= 1;
  copy(*Image::fromBytes(share(bytes)));
  choose({"Scan text (OCR)…"});
  EXPECT_EQ(last(), "Couldn't read the image");
  EXPECT_FALSE(isShown());
}

TEST_F(TextRecognitionTest, CopiesSavesEditsAndForgetsTheText) {
  copy(picture(40));
  recognizer().answer({"a/b", "c"});
  const auto before = item({"Clipboard history"})->submenu->items.size();
  press("copyOCRText");
  desktop_.queue.advance(0.6);
  EXPECT_EQ(*desktop_.pasteboard.contents().text, "a/b\nc");
  EXPECT_EQ(last(), "Copied the scanned text");
  EXPECT_EQ(item({"Clipboard history"})->submenu->items.size(), before);

  press("saveOCRText");
  ASSERT_EQ(desktop_.dialogs.filePanels.size(), 1u);
  EXPECT_EQ(desktop_.dialogs.filePanels[0].extension, "txt");
  EXPECT_EQ(desktop_.dialogs.filePanels[0].folder, files::documentsFolder());
  const std::string path = files::join(home_.path(), "notes.txt");
  for (int i = 0; i < 2; ++i) {  // the second time in the first one's place
    desktop_.dialogs.fileChosen(path);
    desktop_.queue.drain();
    EXPECT_EQ(last(), "Saved notes.txt");
    EXPECT_EQ(*files::read(path, 100), "a/b\nc");
  }
  desktop_.dialogs.fileChosen("/nowhere/notes.txt");
  desktop_.queue.drain();
  EXPECT_EQ(last(), "Couldn't save that file");

  press("openOCRInEditor");
  EXPECT_FALSE(isShown());
  memory::MemoryWindow* const editor = desktop_.windows.find("editor");
  ASSERT_TRUE(editor && editor->shown);
  EXPECT_EQ(editor->description.title, "Text in image (OCR)");
  EXPECT_EQ(*editor->text("editTextView"), "a/b\nc");
  EXPECT_EQ(*panel()->text("ocrHUDTextView"), "");
}

TEST_F(TextRecognitionTest, MovesWithTheOtherPanels) {
  copy(picture(40));
  recognizer().answer({"text"});
  const Rect topRight = panel()->frame();
  press("cycleHUDPlacement");
  const Rect bottomRight = panel()->frame();
  EXPECT_EQ(bottomRight.x, topRight.x);
  EXPECT_LT(bottomRight.y, topRight.y);
  panel()->close();  // as a window manager does
  desktop_.queue.advance(0);
  EXPECT_EQ(desktop_.keyMonitors.globals(), 0U) << "arrow keys still move it";
}

TEST(TextFileName, IsFitForAFileSystem) {
  EXPECT_EQ(textFileName("a/b", "now"), "a-b.txt");
  EXPECT_EQ(textFileName(" \n\t", "now"), "Clipboard now.txt");
  EXPECT_EQ(textFileName("\n two\nlines ", "now"), "two lines.txt");
  const std::string token = "ghp_" + std::string(12, 'a') + std::string(12, '7') + "QwErTyUiOpAs";
  const std::string proposed = textFileName("token " + token, "now");
  EXPECT_TRUE(proposed.starts_with("token ")) << proposed;
  EXPECT_EQ(proposed.find(std::string(12, '7')), proposed.npos) << "a secret in a file's name";
  EXPECT_EQ(textFileName(std::string(500, 'x'), "now"), std::string(200, 'x') + ".txt");
  std::string families;
  for (int i = 0; i < 80; ++i) families += "👩‍👩‍👧‍👦";
  EXPECT_LE(textFileName(families, "now").size(), 204u);
}

}  // namespace
}  // namespace marbelot
