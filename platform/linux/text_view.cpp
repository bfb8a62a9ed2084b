#include "platform/linux/text_view.h"

#include <QElapsedTimer>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QMimeData>
#include <QPlainTextDocumentLayout>
#include <QThreadPool>

namespace marbelot {
namespace {

constexpr std::size_t pieceBytes = 16 * 1024;
constexpr int turnMilliseconds = 8;
// Taking a document of this many characters apart takes longer than a frame.
constexpr int largeDocument = 200'000;
// The room that a text has at its edges when nothing else is asked for, pixels.
constexpr double ownMargin = 5;
constexpr int tabColumns = 4;

void dispose(QTextDocument* document) {
  if (document->characterCount() < largeDocument) {
    delete document;
    return;
  }
  document->setParent(nullptr);
  document->moveToThread(nullptr);
  QThreadPool::globalInstance()->start([document] { delete document; });
}

}  // namespace

QFont qtFont(const Font& font) {
  QFont made = font.monospaced ? QFontDatabase::systemFont(QFontDatabase::FixedFont)
                               : QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  made.setPixelSize(static_cast<int>(font.size));
  return made;
}

TextView::TextView(const View& view)
    : editable_(view.editable), margin_(std::max(view.inset.width, ownMargin)) {
  setFont(qtFont(view.font));
  setFrameShape(view.bordered ? QFrame::StyledPanel : QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setTabChangesFocus(false);
  connect(&timer_, &QTimer::timeout, this, [this] { bringIn(); });
  setContents(share(view.text));
}

TextView::~TextView() = default;

void TextView::setContents(SharedText text) {
  original_ = std::move(text);
  form_ = DocumentText();
  faithful_ = true;
  startAfresh();
}

void TextView::startAfresh() {
  auto* document = new QTextDocument(this);
  document->setDocumentLayout(new QPlainTextDocumentLayout(document));
  document->setDefaultFont(font());
  document->setDocumentMargin(margin_);
  document->setUndoRedoEnabled(false);
  // The first one is the base class's own and goes with the call.
  QTextDocument* const former = place_.isNull() ? nullptr : this->document();
  setDocument(document);
  if (former) dispose(former);
  setTabStopDistance(tabColumns * fontMetrics().horizontalAdvance(u' '));
  setReadOnly(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);

  pasting_ = false;
  arriving_ = original_;
  rest_ = *original_;
  place_ = QTextCursor(document);
  bringIn();
}

void TextView::bringIn() {
  QElapsedTimer spent;
  spent.start();
  const bool first = rest_.size() == arriving_->size();
  bool begun = !first;
  QString piece;
  while (!rest_.empty() && spent.elapsed() < turnMilliseconds) {
    const DocumentText form = form_;
    const std::string_view rest = rest_;
    if (!form_.take(rest_, pieceBytes, piece) && faithful_) {
      if (pasting_) {
        // The document's marks cannot stand for the whole either, so it is set up anew.
        form_ = form;
        rest_ = rest;
        setContents(share(wholeText()));
        return;
      }
      // The other marks, and if they do not serve either, the text stays as it is.
      faithful_ = form_.isJoin(QChar(DocumentText::invisibleMarks));
      form_ = DocumentText(DocumentText::otherMarks);
      startAfresh();
      return;
    }
    // One step for undoing, however many turns it takes.
    begun ? place_.joinPreviousEditBlock() : place_.beginEditBlock();
    place_.insertText(piece);
    place_.endEditBlock();
    begun = true;
  }
  if (first && !pasting_) moveCursor(QTextCursor::Start);
  if (rest_.empty()) {
    finish();
  } else if (!timer_.isActive()) {
    timer_.start(1);
  }
}

void TextView::finish() {
  timer_.stop();
  arriving_ = nullptr;
  rest_ = {};
  if (!editable_ || !faithful_) return;
  setReadOnly(false);
  if (pasting_) {
    ensureCursorVisible();
    return;
  }
  document()->setUndoRedoEnabled(true);
  document()->setModified(false);
}

SharedText TextView::contents() const {
  const bool pasting = pasting_ && !rest_.empty();
  if (!document()->isUndoRedoEnabled() || !(document()->isModified() || pasting)) return original_;
  return share(wholeText());
}

std::string TextView::wholeText() const {
  const int end = document()->characterCount() - 1;
  if (!pasting_ || rest_.empty()) return textBetween(0, end);
  const int from = place_.selectionStart(), to = place_.selectionEnd();
  return textBetween(0, from).append(rest_).append(textBetween(to, end));
}

std::string TextView::textBetween(int start, int end) const {
  std::string text;
  text.reserve(static_cast<std::size_t>(end - start));
  for (QTextBlock block = document()->findBlock(start); block.isValid() && block.position() <= end;
       block = block.next()) {
    const int at = block.position();
    form_.append(block, std::max(start - at, 0), std::min(end - at, block.length()), text);
  }
  return text;
}

QMimeData* TextView::createMimeDataFromSelection() const {
  const QTextCursor cursor = textCursor();
  const std::string text = textBetween(cursor.selectionStart(), cursor.selectionEnd());
  auto* copied = new QMimeData;
  copied->setText(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
  return copied;
}

void TextView::insertFromMimeData(const QMimeData* source) {
  if (isReadOnly() || !source->hasText()) return;
  place_ = textCursor();
  form_.startAt(document()->findBlock(place_.selectionStart()), place_.selectionStart());
  arriving_ = share(source->text().toStdString());
  rest_ = *arriving_;
  pasting_ = true;
  setReadOnly(true);
  bringIn();
}

void TextView::keyPressEvent(QKeyEvent* event) {
  const auto modifiers = event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
  bool done = false;
  if (!isReadOnly() && modifiers == Qt::NoModifier) {
    // With Shift, too: Qt would put in U+2028, which hardly any other program takes for a break.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) done = breakLine();
    if (event->key() == Qt::Key_Backspace) done = eraseAcrossMark(true);
    if (event->key() == Qt::Key_Delete) done = eraseAcrossMark(false);
  }
  if (!done) QPlainTextEdit::keyPressEvent(event);
}

bool TextView::breakLine() {
  textCursor().insertText(QString(QChar(u'\n')));
  ensureCursorVisible();
  return true;
}

// The marks at line ends are not there for the user: one is erased with its break, and where a line
// only goes on, the character on the other side is meant.
bool TextView::eraseAcrossMark(bool backwards) {
  QTextCursor cursor = textCursor();
  if (cursor.hasSelection()) return false;
  const int step = backwards ? -1 : 1;
  const auto characterAt = [&](int at) { return document()->characterAt(backwards ? at - 1 : at); };
  const int start = cursor.position();
  int at = start;
  bool lineBreak = false, join = false, mark = false;
  for (;; at += step) {
    const QChar c = characterAt(at);
    if (c == QChar::ParagraphSeparator && !lineBreak) {
      lineBreak = true;
    } else if (form_.isMark(c) && !mark) {
      mark = true;
      join = form_.isJoin(c);
    } else {
      break;
    }
  }
  if (!mark) return false;
  cursor.setPosition(at);
  if (join || !lineBreak) {
    backwards ? cursor.deletePreviousChar() : cursor.deleteChar();
  } else {
    cursor.setPosition(start, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
  }
  setTextCursor(cursor);
  return true;
}

}  // namespace marbelot
