// Pictures, and what becomes of our own copies at the end.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <future>

#include "platform/image_codec.h"
#include "tests/platform/x11_pasteboard_fixture.h"
#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

TEST_F(X11PasteboardTest, ImagesKeepTheirBytesBothWays) {
  const auto png = encoded(noise(1920, 1080), "png");
  {
    const TestOwner owner(display(),
                          {{"image/png", png}, {"image/bmp", "?"}, {"UTF8_STRING", "u"}});
    const auto contents = news(1)[0].contents;
    ASSERT_TRUE(contents.image && contents.text);
    EXPECT_TRUE(*contents.image->bytes() == png);
    EXPECT_EQ(contents.image->width(), 1920);
  }
  news(1);
  const auto jpeg = encoded(noise(64, 48), "jpeg");
  const TestOwner damaged(display(), {{"image/png", png.substr(0, 999)}, {"image/jpeg", jpeg}});
  const auto second = news(1)[0].contents.image;
  EXPECT_TRUE(second && *second->bytes() == jpeg) << "the next type in place of a damaged one";

  const auto image = Image::fromBytes(share(png));
  const auto started = Clock::now();
  EXPECT_TRUE(board->write(*image));
  EXPECT_TRUE(pastes("image/png", png));
  const std::chrono::duration<double, std::milli> took = Clock::now() - started;
  RecordProperty("milliseconds", std::to_string(took.count()));
  std::printf("%zu bytes of PNG pasted %.2f ms after write()\n", png.size(), took.count());

  // Other forms are made when asked for; meanwhile the rest is served.
  auto bmp = std::async(std::launch::async, [&] { return paste(display(), "image/x-MS-bmp"); });
  EXPECT_TRUE(paste(display(), "image/png") == png);
  const auto converted = bmp.get();
  ASSERT_TRUE(converted);
  EXPECT_EQ(
      QImage::fromData(QByteArray::fromStdString(*converted)).convertToFormat(QImage::Format_RGB32),
      noise(1920, 1080));
}

TEST_F(X11PasteboardTest, ACopiedFileIsItsImage) {
  const TemporaryHome home;
  const std::string path = home / "a picture, 100%.png";
  writeFile(path, encoded(noise(64, 48), "png"));
  writeFile(home / "text.txt", "no image");
  const auto url = [&](const std::string& name) { return "file://" + (home / name); };
  const std::string escaped = url("a%20picture,%20100%25.png");
  const auto bmp = encoded(noise(9, 7), "bmp");
  const struct {
    TestOwner::Data data;
    int width;  // of the image; 0 for none
  } cases[] = {
      {{{"text/uri-list", "# copied\r\nhttps://example.org/a.png\r\n" + escaped + "\r\n"},
        {"UTF8_STRING", path}},
       64},
      {{{"x-special/gnome-copied-files", "copy\n" + escaped + "\n" + url("text.txt")}}, 64},
      {{{"text/uri-list", escaped}, {"image/bmp", bmp}}, 9},
      {{{"text/uri-list", escaped}, {"image/bmp", "damaged"}}, 64},
      {{{"text/uri-list", url("text.txt") + "\r\n" + escaped}, {"UTF8_STRING", "names"}}, 0},
      {{{"text/uri-list", url("missing.png")}}, 0},
      {{{"text/uri-list", "file://\r\nfile:///%\r\n"}}, 0},
  };
  for (const auto& [data, width] : cases) {
    {
      const TestOwner owner(display(), data);
      const auto contents = news(1)[0].contents;
      EXPECT_EQ(contents.image ? contents.image->width() : 0, width) << data.begin()->second;
      EXPECT_EQ(contents.text != nullptr, data.contains("UTF8_STRING"));
    }
    news(1);
  }
}

TEST_F(X11PasteboardTest, ADocumentIsItsFirstPageWhereThereIsNoText) {
  const std::string drawing = "1 0 0 rg 0 0 30 20 re f";  // red, in the lower left corner
  const std::string pdf =
      "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n"
      "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1>>endobj\n"
      "3 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 60 40]/Contents 4 0 R>>endobj\n"
      "4 0 obj<</Length " +
      std::to_string(drawing.size()) + ">>stream\n" + drawing +
      "\nendstream endobj\ntrailer<</Root 1 0 R>>\n";
  {
    const TestOwner owner(display(), {{"application/pdf", pdf}});
    const auto image = news(1)[0].contents.image;
    ASSERT_TRUE(image);
    const SharedBitmap page = decode(*image);
    ASSERT_TRUE(page);
    EXPECT_EQ(page->width(), 120) << "two pixels a point";
    EXPECT_EQ(page->height(), 80);
    const auto pixel = [&](int x, int y) {
      return std::vector(page->row(y) + 4 * x, page->row(y) + 4 * x + 4);
    };
    EXPECT_EQ(pixel(20, 60), (std::vector<std::uint8_t>{255, 0, 0, 255}));
    EXPECT_EQ(pixel(100, 10), (std::vector<std::uint8_t>{0, 0, 0, 0})) << "nothing is drawn there";
  }
  news(1);
  {
    const TestOwner owner(display(), {{"application/pdf", pdf}, {"UTF8_STRING", "its text"}});
    EXPECT_FALSE(news(1)[0].contents.image);
  }
  news(1);
  const TestOwner damaged(display(), {{"application/pdf", "%PDF-1.4 and no more"}});
  EXPECT_FALSE(news(1)[0].contents.image);
}

TEST_F(X11PasteboardTest, PixelsAreEncodedWhenSomebodyPastesThem) {
  const auto edited = [] {
    Bitmap bitmap = *Bitmap::makeClear(1200, 900);
    for (int y = 0; y < 900; ++y) bitmap.row(y)[4 * y + 3] = 255;  // a black diagonal
    return Image::fromPixels(std::make_shared<const Bitmap>(std::move(bitmap)));
  };
  const Image image = edited();
  EXPECT_TRUE(board->write(image));
  EXPECT_FALSE(image.isEncoded()) << "nobody has asked";
  EXPECT_EQ(board->contents().image->width(), 1200);
  // Two at once, and one more in another form.
  auto other = std::async(std::launch::async, [&] { return paste(display(), "image/png"); });
  const auto png = paste(display(), "image/png");
  ASSERT_TRUE(png);
  EXPECT_TRUE(other.get() == png);
  EXPECT_TRUE(pastes("image/png", *image.bytes()));
  const QImage read = QImage::fromData(QByteArray::fromStdString(*png));
  EXPECT_EQ(read.size(), QSize(1200, 900));
  EXPECT_EQ(read.pixel(17, 17), 0xFF000000);
  EXPECT_EQ(read.pixel(18, 17), 0);
  EXPECT_TRUE(paste(display(), "image/bmp"));

  TestManager manager(display());
  const Image last = edited();
  EXPECT_TRUE(board->write(last));
  board.reset();
  EXPECT_TRUE(manager.kept()["image/png"] == *last.bytes());
}

TEST_F(X11PasteboardTest, LeavesItsContentsToTheClipboardManager) {
  const auto text = longText(9 << 20);
  const auto png = encoded(noise(640, 480), "png");
  const auto jpeg = encoded(noise(64, 48), "jpeg");
  for (const std::string& bytes : {text, png, jpeg}) {
    TestManager manager(display());
    if (!board) board.emplace(queue, connectX11Clipboard(display()));
    const auto image = Image::fromBytes(share(bytes));
    const std::string type = image ? std::string(mimeType(image->format())) : "UTF8_STRING";
    EXPECT_TRUE(image ? board->write(*image) : board->write(share(bytes)));
    EXPECT_TRUE(pastes(type, bytes));
    board.reset();
    auto kept = manager.kept();
    EXPECT_TRUE(kept[type] == bytes) << type;
    EXPECT_EQ(kept.size(), !image ? 5u : type == "image/png" ? 1u : 2u);
    EXPECT_EQ(kept["image/png"].substr(0, 4), image ? "\x89PNG" : "");
  }

  // What is not ours is not ours to leave, and a manager that does not answer keeps nobody.
  TestManager manager(display());
  board.emplace(queue, connectX11Clipboard(display()));
  takeClipboard();
  const TestOwner owner(display(), {{"UTF8_STRING", "theirs"}});
  newText();
  board.reset();
  EXPECT_TRUE(manager.kept().empty());
  const TestManager deaf(display(), true);
  board.emplace(queue, connectX11Clipboard(display()));
  takeClipboard();
  board.reset();
}

// Nobody could paste it.
TEST_F(X11PasteboardTest, WritesFailAfterTheEndOfTheServer) {
  server.kill();
  // The first ones may be under way before the thread knows.
  queue.pumpUntil([&] { return !board->write(share("lost")); });
  const auto count = board->changeCount();
  const auto text = board->contents().text;
  EXPECT_FALSE(board->write(share("lost, too")));
  EXPECT_EQ(board->changeCount(), count);
  EXPECT_EQ(board->contents().text, text);
}

TEST(X11PasteboardWithoutDisplay, WritesFail) {
  TestQueue queue;
  DesktopPasteboard board(queue, connectX11Clipboard(":987"));
  queue.pumpUntil([&] { return !board.write(share("lost")); });
  const auto count = board.changeCount();
  EXPECT_FALSE(board.write(share("lost, too")));
  EXPECT_EQ(board.changeCount(), count);
}

}  // namespace
}  // namespace marbelot
