#include "platform/linux/text_view.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QScrollBar>
#include <QTest>
#include <algorithm>
#include <functional>
#include <random>

#include "platform/linux/selected_text.h"

namespace marbelot {
namespace {

TextArea editorView() { return {.font = {.size = 13, .monospaced = true}, .editable = true}; }

struct TextViewTest : testing::Test {
  // Every look at the clock takes a millisecond, so that a turn is eight pieces on any machine.
  std::uint64_t now = 0;
  TextView view{editorView(), [this] { return ++now; }};

  void show(const std::string& text) {
    view.setContents(share(text));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !view.isReadOnly(); }, 60'000));
  }
  std::string contents() { return *view.contents(); }
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(&view, key, modifiers);
  }
  std::string copied() {
    view.selectAll();
    view.copy();
    return QGuiApplication::clipboard()->text().toStdString();
  }
};

TEST_F(TextViewTest, GivesBackEveryTextToTheByte) {
  // clang-format off
  const std::string pieces[] = {
      "a", " ", "\t", "\n", "\r\n", "\r", "\u00A0", "\u2028", "\u2029", "\uFEFF", "\uFDD0", "\uFDD1", "\uFFFC",
      "\U0001F469", "e\u0301", "\uFFFE", "\f", "\u0085", std::string(1, '\0')};
  // clang-format on
  std::mt19937 random(11);
  std::vector<std::string> texts = {"\uFFF0 a mark itself\r\nb\n", std::string(20'000, 'x') + "\nb",
                                    "a\r\n" + std::string(9'000, 'y') + "\r\n\r\n"};
  for (int i = 0; i < 100; ++i) {
    std::string text;
    const auto size = random() % 20;
    for (unsigned k = 0; k < size; ++k) text += pieces[random() % std::size(pieces)];
    texts.push_back(text);
  }
  for (const std::string& text : texts) {
    show(text);
    press(Qt::Key_X);
    ASSERT_EQ(contents(), "x" + text);
    EXPECT_EQ(copied(), "x" + text);
    view.undo();
    EXPECT_EQ(contents(), text);
    view.undo();
    EXPECT_EQ(contents(), text);
  }
}

TEST_F(TextViewTest, PastingIsOneStep) {
  show("start ");
  view.moveCursor(QTextCursor::End);
  press(Qt::Key_X);
  const std::string large = std::string(4'000'000, 'p') + "\r\nend";
  QGuiApplication::clipboard()->setText(QString::fromStdString(large));
  view.moveCursor(QTextCursor::PreviousCharacter);
  view.paste();
  EXPECT_TRUE(view.isReadOnly());
  EXPECT_EQ(contents(), "start " + large + "x");  // though it is still coming in
  ASSERT_TRUE(QTest::qWaitFor([&] { return !view.isReadOnly(); }, 20'000));
  EXPECT_EQ(contents(), "start " + large + "x");
  view.undo();
  EXPECT_EQ(contents(), "start x");
}

TEST_F(TextViewTest, PastesWhatTheDocumentUsesItself) {
  const std::string late(40'000, 'p');
  for (const std::string& pasted :
       {std::string("abc\uFFF0def"), late + "\uFFF1\r\nend",
        std::string("all \uFFF0 and \uF8D0\uFDD0\uFFF1\uFDD1 here\u2029")}) {
    show("one\r\ntwo\n");
    view.moveCursor(QTextCursor::End);
    press(Qt::Key_X);
    view.moveCursor(QTextCursor::PreviousCharacter, QTextCursor::KeepAnchor);
    QGuiApplication::clipboard()->setText(QString::fromStdString(pasted));
    view.paste();
    EXPECT_FALSE(view.isReadOnly());
    EXPECT_EQ(contents(), "one\r\ntwo\n" + pasted);
    press(Qt::Key_Return);
    press(Qt::Key_Y);
    EXPECT_EQ(contents(), "one\r\ntwo\n" + pasted + "\r\ny");
  }
}

// What a text is while it is edited: characters, breaks being one, and two places among them.
struct Model {
  std::vector<std::string> units;
  std::string lineBreak = "\n";
  std::size_t position = 0, anchor = 0;

  explicit Model(const std::string& text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      units.emplace_back(1, text[i]);
      if (text.compare(i, 2, "\r\n") == 0) units.back() += text[++i];
    }
    if (const auto at = text.find_first_of("\r\n"); at != std::string::npos)
      lineBreak = text[at] == '\r' ? "\r\n" : "\n";
  }
  std::string text(std::size_t from = 0, std::size_t to = std::string::npos) const {
    std::string all;
    for (std::size_t i = from; i < std::min(to, units.size()); ++i) all += units[i];
    return all;
  }
  std::string selected() const {
    return text(std::min(position, anchor), std::max(position, anchor));
  }
  void replace(const std::string& by) {
    const auto [from, to] = std::minmax(position, anchor);
    const auto start = units.begin() + static_cast<std::ptrdiff_t>(from);
    units.erase(start, start + static_cast<std::ptrdiff_t>(to - from));
    const Model in(by);
    units.insert(units.begin() + static_cast<std::ptrdiff_t>(from), in.units.begin(),
                 in.units.end());
    position = anchor = from + in.units.size();
  }
  void step(bool back) {
    if (back ? position > 0 : position < units.size()) position += back ? std::size_t(-1) : 1;
  }
};

// Makes the same edits in the view and in the model.
struct SideBySideTest : TextViewTest {
  Model model{""};
  std::mt19937 random;

  void begin(const std::string& text, unsigned seed) {
    show(text);
    model = Model(text);
    random.seed(seed);
  }
  // The model's position becomes the view's.
  void place(bool keepsAnchor) {
    const QTextCursor cursor = view.textCursor();
    int cuts = 0;
    for (QTextBlock block = view.document()->begin();
         block.isValid() && block.position() <= cursor.position(); block = block.next())
      cuts += DocumentText::continuesLine(block);
    model.position = static_cast<std::size_t>(cursor.position() - cuts);
    if (!keepsAnchor) model.anchor = model.position;
  }
  void jump() {
    QTextCursor cursor = view.textCursor();
    const auto block = static_cast<int>(random() % view.document()->blockCount());
    cursor.setPosition(view.document()->findBlockByNumber(block).position());
    if (random() % 2) cursor.movePosition(QTextCursor::EndOfBlock);
    view.setTextCursor(cursor);
    place(false);
  }
  void move(bool back, bool selects) {
    const bool selected = model.position != model.anchor;
    press(back ? Qt::Key_Left : Qt::Key_Right, selects ? Qt::ShiftModifier : Qt::NoModifier);
    if (selects || !selected) {
      model.step(back);
    } else {
      model.position =
          back ? std::min(model.position, model.anchor) : std::max(model.position, model.anchor);
    }
    if (!selects) model.anchor = model.position;
  }
  void erase(bool back) {
    press(back ? Qt::Key_Backspace : Qt::Key_Delete);
    if (model.position == model.anchor) model.step(back);
    model.replace("");
  }
  // What a word is, Qt knows best.
  void eraseWord(bool back) {
    const std::size_t size = model.units.size(), at = model.position;
    const bool selected = at != model.anchor;
    press(back ? Qt::Key_Backspace : Qt::Key_Delete, Qt::ControlModifier);
    if (!selected) {
      place(true);
      const std::size_t gone = size - Model(contents()).units.size();
      EXPECT_TRUE(gone > 0 || at == (back ? 0 : size));
      model.position = back ? at - gone : at + gone;
      model.anchor = at;
    }
    model.replace("");
  }
  void cut() {
    press(Qt::Key_X, Qt::ControlModifier);
    if (model.position == model.anchor) return;
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), model.selected());
    model.replace("");
  }
  void paste() {
    const std::string pasted = random() % 2 ? "p\r\nq\nr" : std::string(5000, 'p');
    QGuiApplication::clipboard()->setText(QString::fromStdString(pasted));
    press(Qt::Key_V, Qt::ControlModifier);
    model.replace(pasted);
  }
  void undoAndRedo() {
    if (!view.document()->isUndoAvailable()) return;
    view.undo();
    contents();
    view.redo();
    place(false);
  }
  void selectInLine(bool back) {  // which line that is depends on the width
    press(back ? Qt::Key_Home : Qt::Key_End, Qt::ShiftModifier);
    place(true);
  }
  void type(Qt::Key key, const std::string& text, Qt::KeyboardModifiers modifiers = {}) {
    press(key, modifiers);
    model.replace(text);
  }
  // One edit; its letter.
  char edit() {
    const std::function<void()> edits[] = {
        [this] { move(true, false); },
        [this] { move(false, false); },
        [this] { move(true, true); },
        [this] { move(false, true); },
        [this] { erase(true); },
        [this] { erase(false); },
        [this] { type(Qt::Key_Return, model.lineBreak); },
        [this] { selectInLine(true); },
        [this] { selectInLine(false); },
        [this] { eraseWord(true); },
        [this] { eraseWord(false); },
        [this] { cut(); },
        [this] { paste(); },
        [this] { undoAndRedo(); },
        [this] { type(Qt::Key_Y, "y"); },
        [this] { type(Qt::Key_Return, model.lineBreak, Qt::ShiftModifier); },
    };
    const auto chosen = random() % std::size(edits);
    edits[chosen]();
    return static_cast<char>('a' + chosen);
  }
};

// Mostly where a line is cut or a break is not the text's ordinary one. Nothing may appear in the
// text that was not typed.
TEST_F(SideBySideTest, EditsLikeAnUncutText) {
  std::string words;
  while (words.size() < 4096 * 2 + 100) words += "seven. ";
  const std::string texts[] = {words, "a\r\nb\nc\nd\r\n\r\ne", "x\n" + words + "\r\ny\n" + words};
  for (unsigned seed = 0; seed < 60; ++seed) {
    const std::string& text = texts[seed % std::size(texts)];
    begin(text, seed);
    std::string done;
    for (int count = 0; count < 40; ++count) {
      if (count % 8 == 0) jump();
      done += edit();
      // Asking ends a step of undoing, so not every time.
      if (random() % 4 == 0) {
        ASSERT_EQ(contents(), model.text()) << "seed " << seed << " after " << done;
      }
    }
    while (view.document()->isUndoAvailable()) view.undo();
    ASSERT_EQ(contents(), text) << "seed " << seed;
    while (view.document()->isRedoAvailable()) view.redo();
    ASSERT_EQ(contents(), model.text()) << "seed " << seed;
  }
}

TEST_F(TextViewTest, WhatIsTypedTooEarlyWaits) {
  const std::string large(6'000'000, 'p');
  view.setContents(share(large));
  ASSERT_TRUE(view.isReadOnly());
  press(Qt::Key_A);
  QInputMethodEvent commit(QString(), {});
  commit.setCommitString(QStringLiteral("\u00E9"));
  QApplication::sendEvent(&view, &commit);
  press(Qt::Key_Return);
  ASSERT_TRUE(QTest::qWaitFor([&] { return !view.isReadOnly(); }, 20'000));
  EXPECT_EQ(contents(), "a\u00E9\n" + large);

  QGuiApplication::clipboard()->setText(QString::fromStdString(large));
  press(Qt::Key_V, Qt::ControlModifier);
  press(Qt::Key_B);
  press(Qt::Key_V, Qt::ControlModifier);
  press(Qt::Key_C);
  ASSERT_TRUE(view.isReadOnly());
  EXPECT_EQ(contents(), "a\u00E9\n" + large + "b" + large + "c" + large);  // saved at that moment
  EXPECT_FALSE(view.isReadOnly());

  view.setContents(share(large));
  press(Qt::Key_A);
  view.setContents(share("another text"));  // was not meant
  EXPECT_EQ(contents(), "another text");
}

TEST_F(TextViewTest, TellsOthersWhatIsConcealed) {
  const auto copied = [&] {
    view.selectAll();
    view.copy();
    return QGuiApplication::clipboard()->mimeData();
  };
  view.setContents(share("made up"), true);
  EXPECT_EQ(copied()->data("x-kde-passwordManagerHint"), "secret");
  EXPECT_EQ(copied()->text(), "made up");
  view.setContents(share("open"));
  EXPECT_FALSE(copied()->hasFormat("x-kde-passwordManagerHint"));
  // It is what was copied, whatever becomes of the text.
  press(Qt::Key_X);
  EXPECT_EQ(QGuiApplication::clipboard()->mimeData()->data("text/plain"), "open");
}

TEST_F(TextViewTest, ParagraphsBeginAtTheirOwnEdge) {
  view.resize(600, 300);
  view.show();
  show("latin\n\u05E9\u05DC\u05D5\u05DD\n123");
  const auto start = [&](int line) {
    QTextCursor cursor(view.document()->findBlockByNumber(line));
    return view.cursorRect(cursor).left();
  };
  for (int width : {600, 400}) {
    view.resize(width, 300);
    QApplication::processEvents();
    EXPECT_LT(start(0), 20);
    EXPECT_GT(start(1), width - 40);
    EXPECT_LT(start(2), 20);
  }
}

TEST_F(TextViewTest, UndoingGoesByWordsAndPausesAndNeverAcrossASave) {
  const auto write = [&](const char* text) { QTest::keyClicks(&view, text); };
  std::vector<std::string> seen;
  const auto undone = [&] {
    seen.clear();
    while (view.document()->isUndoAvailable()) {
      view.undo();
      seen.push_back(view.toPlainText().toStdString());
    }
    return seen;
  };
  using Texts = std::vector<std::string>;
  show("");
  write("one two  three");
  press(Qt::Key_Return);
  write("four");
  EXPECT_EQ(undone(), (Texts{"one two  three\n", "one two  ", "one ", ""}));
  write("pa");
  now += 5'000;
  write("use");
  EXPECT_EQ(undone(), (Texts{"pa", ""}));
  write("word");
  press(Qt::Key_Backspace);
  press(Qt::Key_Backspace);
  press(Qt::Key_Left);
  press(Qt::Key_Delete);
  write("x");
  EXPECT_EQ(undone(), (Texts{"w", "wo", "word", ""}));
  press(Qt::Key_Y, Qt::ControlModifier);
  EXPECT_EQ(view.toPlainText(), "word");

  write("sa");
  const SharedText saved = view.contents();
  write("ved");
  view.undo();
  EXPECT_EQ(view.toPlainText(), "wordsa");
  EXPECT_EQ(view.contents(), saved);  // the very text
  view.undo();
  EXPECT_EQ(contents(), "word");
  view.redo();
  view.redo();
  EXPECT_EQ(contents(), "wordsaved");
  view.selectAll();
  write("new text");
  EXPECT_EQ(undone(), (Texts{"new ", "wordsaved", "wordsa", "word", ""}));
  QInputMethodEvent accent(QString(), {});
  accent.setCommitString(QStringLiteral("\u00E9"));
  write("caf");
  QApplication::sendEvent(&view, &accent);
  EXPECT_EQ(undone(), Texts{""});
}

TEST_F(TextViewTest, WhatIsOnlyReadHasNoCaretAndScrollsByKeys) {
  TextArea description = editorView();
  description.editable = false;
  TextView viewer(description);
  std::string lines;
  for (int i = 0; i < 200; ++i) lines += "a line\n";
  viewer.setContents(share(lines));
  viewer.resize(300, 200);
  viewer.show();
  viewer.activateWindow();
  viewer.setFocus();
  ASSERT_TRUE(QTest::qWaitFor([&] { return viewer.hasFocus(); }));
  const auto rowOf = [&] { return viewer.verticalScrollBar()->value(); };
  const QImage before = viewer.grab().toImage();
  QTest::mouseClick(viewer.viewport(), Qt::LeftButton, {}, {40, 50});
  EXPECT_EQ(viewer.grab().toImage(), before);
  QTest::keyClick(&viewer, Qt::Key_Down);
  EXPECT_EQ(rowOf(), 1);
  QTest::keyClick(&viewer, Qt::Key_PageDown);
  EXPECT_GT(rowOf(), 5);
  QTest::keyClick(&viewer, Qt::Key_End, Qt::ControlModifier);
  EXPECT_EQ(rowOf(), viewer.verticalScrollBar()->maximum());
  QTest::keyClick(&viewer, Qt::Key_Home);
  EXPECT_EQ(rowOf(), 0);
  QTest::keyClick(&viewer, Qt::Key_Right, Qt::ShiftModifier);
  EXPECT_EQ(viewer.textCursor().selectedText().size(), 1);
}

// The number of bytes that were read from the document for what is selected; the others are those
// that came in.
std::size_t bytesRead(const SharedText& original) {
  const auto* data = dynamic_cast<const SelectedText*>(QGuiApplication::clipboard()->mimeData());
  if (!data) return std::string::npos;
  std::size_t read = 0;
  for (const TextPart& part : data->parts())
    if (part.owner != original) read += part.bytes.size();
  return read;
}

TEST_F(TextViewTest, LargeTextsCostLittleAtATime) {
  constexpr int piece = 16 * 1024;
  std::string lines, oneLine(20 << 20, 'x');
  while (lines.size() < (20u << 20)) lines += "a line of ordinary length, as in a log\n";
  for (std::string& made : {std::ref(lines), std::ref(oneLine)}) {
    const SharedText text = share(std::move(made));
    view.setContents(text);
    int most = view.document()->characterCount(), last = most, mostInALine = 0;
    // Other events get their turns meanwhile.
    QTimer other;
    QObject::connect(&other, &QTimer::timeout, &view, [&] {
      most = std::max(most, view.document()->characterCount() - last);
      last = view.document()->characterCount();
    });
    other.start(0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !view.isReadOnly(); }, 120'000));
    EXPECT_LE(most, 2 * 9 * piece);
    for (QTextBlock block = view.document()->begin(); block.isValid(); block = block.next())
      mostInALine = std::max(mostInALine, block.length());
    EXPECT_LE(mostInALine, 4096 + 256 + 1);  // characters, which are laid out at once

    EXPECT_EQ(view.contents(), text);  // the very text
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(bytesRead(text), 0u);
    press(Qt::Key_Right);
    press(Qt::Key_Y);
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_LE(bytesRead(text), 2u * piece);
    EXPECT_EQ(view.contents()->size(), text->size() + 1);
  }
}

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
