// What is X11's own of the clipboard: types that are not listed, transfers in parts, documents, and
// what becomes of our own copies at the end.
#include <cstdio>

#include "platform/image_codec.h"
#include "platform/linux/x11_clipboard.h"
#include "tests/platform/pasteboard_fixture.h"
#include "tests/platform/x11_test_clients.h"

namespace marbelot {

namespace {

class X11Side : public ClipboardSide {
 public:
  const std::string& display() const override { return server_.display(); }
  std::unique_ptr<ClipboardConnection> connect() const override {
    EXPECT_FALSE(display().empty()) << "Xvfb is needed for these tests";
    return connectX11Clipboard(display());
  }
  std::unique_ptr<TestOwner> copy(TestOwner::Data data, TestOwner::Manners manners) override {
    return std::make_unique<X11Owner>(display(), std::move(data), std::move(manners));
  }
  std::optional<std::string> paste(const std::string& type) const override {
    return marbelot::paste(display(), type);
  }
  bool signal(int number) override {
    server_.signal(number);
    return true;
  }

 private:
  PrivateServer server_;
};

}  // namespace

std::unique_ptr<ClipboardSide> makeX11Side() { return std::make_unique<X11Side>(); }

namespace {

struct X11PasteboardTest : PasteboardTest {
  X11PasteboardTest() : PasteboardTest(makeX11Side()) {}
};

// As many do, whose first type goes to whoever asks for another.
TEST_F(X11PasteboardTest, ReadsOnlyWhatTheOwnerLists) {
  const std::string pdf = "%PDF-1.4 no text", png = encoded(noise(64, 48), "png");
  const struct {
    TestOwner::Data data;
    std::set<std::string> ignored;
    std::string text;
    bool image;
  } cases[] = {
      {{{"application/pdf", pdf}}, {}, "", false},
      {{{"application/pdf", longText(5 << 20)}}, {}, "", false},
      {{{"text/html", "<b>bold</b>"}}, {}, "", false},
      {{{"image/png", png}}, {}, "", true},
      {{{"image/png", png}}, {"UTF8_STRING"}, "", true},
      {{{"COMPOUND_TEXT", "old"}}, {}, "", false},
      {{{"application/pdf", pdf}, {"text/plain", "a text, too"}}, {}, "a text, too", false},
      {{{"TEXT", "by its old name"}}, {}, "by its old name", false},
  };
  for (const auto& [data, ignored, text, image] : cases) {
    TestOwner::Manners manners;
    manners.anything = true;
    manners.ignored = ignored;
    const auto owner = copy(data, manners);
    queue.pumpUntil([&] {
      const auto now = board->contents();
      return now.types.size() == data.size() && now.image.has_value() == image;
    });
    for (const auto& change : board->changesSince(seen)) {
      const SharedText told = change.contents.text;
      EXPECT_EQ(told ? *told : "", text) << data.begin()->first;
    }
    EXPECT_EQ(board->contents().image.has_value(), image) << data.begin()->first;
    takeClipboard();
  }
}

TEST_F(X11PasteboardTest, AnOwnerMayRefuseOrHaveNothing) {
  const struct {
    TestOwner::Data data;
    std::string text;
  } cases[] = {{{{"UTF8_STRING", ""}}, ""},
               {{{"text/plain;charset=utf-8", "x"}, {"UTF8_STRING", "y"}}, "x"},
               {{{"UTF8_STRING", "y"}}, "(none)"}};
  for (const auto& [data, text] : cases) {
    const auto owner = copy(data, {.refused = {text.empty() ? "" : "UTF8_STRING"}});
    EXPECT_EQ(newText(), text);
    takeClipboard();
  }
}

// A program that was stopped for a while, or swapped out.
TEST_F(X11PasteboardTest, AnOwnerThatGoesOnAfterAPauseIsToldWhole) {
  const auto text = longText(100000);
  const auto jpeg = encoded(noise(64, 48), "jpeg");
  const struct {
    const char* what;
    TestOwner::Data data;
    std::set<std::string> ignored;
    bool concealed;  // in the end
  } cases[] = {
      {"silent", {}, {"TARGETS", "UTF8_STRING"}, false},
      {"types unknown", {}, {"TARGETS"}, false},
      {"public", {{"x-kde-passwordManagerHint", "no"}}, {"x-kde-passwordManagerHint"}, false},
      {"secret", {{"x-kde-passwordManagerHint", "secret"}}, {"TARGETS", "UTF8_STRING"}, true},
      {"no image", {{"image/jpeg", jpeg}}, {"image/jpeg"}, false},
  };
  for (auto [what, data, ignored, concealed] : cases) {
    data["UTF8_STRING"] = text;
    const auto owner = copy(data, {.ignored = ignored});
    for (const auto& change : news(1)) {
      const auto& early = change.contents;
      EXPECT_TRUE(!early.text || early.concealed || early.types.size() == data.size()) << what;
      EXPECT_FALSE(early.image) << what;
    }
    owner->resume();
    EXPECT_TRUE(queue.pumpUntil([&] {
      const auto now = board->contents();
      return now.text && *now.text == text && now.concealed == concealed &&
             now.image.has_value() == data.contains("image/jpeg");
    })) << what;
    for (const auto& change : board->changesSince(seen))
      EXPECT_TRUE(change.contents.concealed || !concealed) << what;
    takeClipboard();
  }
}

TEST_F(X11PasteboardTest, ACopyReplacedInTheMiddleIsStillToldFirst) {
  for (const std::size_t size : {std::size_t{10}, std::size_t{2} << 20}) {
    const auto first = copy({{"UTF8_STRING", longText(size)}}, {.partSize = 1 << 16, .slow = true});
    EXPECT_TRUE(first->awaitReader());
    const auto second = copy({{"UTF8_STRING", "second"}});
    first->resume();
    const auto both = news(2);
    ASSERT_TRUE(both[0].contents.text && both[1].contents.text);
    EXPECT_TRUE(*both[0].contents.text == longText(size));
    EXPECT_EQ(*both[1].contents.text, "second");
    takeClipboard();
  }
}

TEST_F(X11PasteboardTest, ServesProgramsOfAnyManners) {
  const auto text = longText(20 << 20);
  EXPECT_TRUE(board->write(share(text)));
  EXPECT_TRUE(pastes("UTF8_STRING", text));
  // One that vanishes in the middle harms nobody.
  EXPECT_TRUE(marbelot::paste(side->display(), "UTF8_STRING", true));
  EXPECT_TRUE(paste("UTF8_STRING") == text);
  EXPECT_TRUE(board->write(share("café €")));
  const auto targets = paste("TARGETS");
  EXPECT_EQ(targets ? targets->size() : 0, 4 * 9u);
  FILE* pipe = ::popen(("xclip -o -selection clipboard -display " + side->display()).c_str(), "r");
  char line[64] = {};
  EXPECT_EQ(std::fread(line, 1, sizeof line, pipe), 9u);
  EXPECT_STREQ(line, "café €");
  ::pclose(pipe);
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
    const auto owner = copy({{"application/pdf", pdf}});
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
    const auto owner = copy({{"application/pdf", pdf}, {"UTF8_STRING", "its text"}});
    EXPECT_FALSE(news(1)[0].contents.image);
  }
  news(1);
  const auto damaged = copy({{"application/pdf", "%PDF-1.4 and no more"}});
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
  auto other = std::async(std::launch::async, [&] { return paste("image/png"); });
  const auto png = paste("image/png");
  ASSERT_TRUE(png);
  EXPECT_TRUE(other.get() == png);
  EXPECT_TRUE(pastes("image/png", *image.bytes()));
  const QImage read = QImage::fromData(QByteArray::fromStdString(*png));
  EXPECT_EQ(read.size(), QSize(1200, 900));
  EXPECT_EQ(read.pixel(17, 17), 0xFF000000);
  EXPECT_EQ(read.pixel(18, 17), 0);
  EXPECT_TRUE(paste("image/bmp"));

  TestManager manager(side->display());
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
    TestManager manager(side->display());
    if (!board) start();
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

  {
    TestManager manager(side->display());
    start();
    EXPECT_TRUE(endsDuringAWrite("last"));
    EXPECT_EQ(manager.kept()["UTF8_STRING"], "last");
  }

  // What is not ours is not ours to leave, and a manager that does not answer keeps nobody.
  TestManager manager(side->display());
  start();
  takeClipboard();
  const auto owner = copy({{"UTF8_STRING", "theirs"}});
  newText();
  board.reset();
  EXPECT_TRUE(manager.kept().empty());
  const TestManager deaf(side->display(), true);
  start();
  takeClipboard();
  board.reset();
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
