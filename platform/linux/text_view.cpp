#include "platform/linux/text_view.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QPlainTextDocumentLayout>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QThreadPool>
#include <chrono>
#include <limits>

#include "platform/linux/drawing.h"
#include "platform/linux/selected_text.h"

namespace marbelot {
namespace {

constexpr std::size_t pieceBytes = 16 * 1024;
constexpr int spanLength = 16 * 1024;  // UTF-16 units
constexpr std::uint64_t turnMilliseconds = 8;
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

// A paragraph from right to left begins at the right edge; Qt's own layout begins all at the left.
class NaturalLayout : public QPlainTextDocumentLayout {
 public:
  using QPlainTextDocumentLayout::QPlainTextDocumentLayout;

  // Asked for before anything is painted or found in the block. The alignment counts only then.
  QRectF blockBoundingRect(const QTextBlock& block) const override {
    const QRectF bounds = QPlainTextDocumentLayout::blockBoundingRect(block);
    if (block.isValid() && block.textDirection() == Qt::RightToLeft) {
      QTextOption option = block.layout()->textOption();
      option.setAlignment(Qt::AlignRight | Qt::AlignAbsolute);
      block.layout()->setTextOption(option);
    }
    return bounds;
  }
};

bool hasBreak(const QString& text) {
  return text.contains(u'\n') || text.contains(u'\r') || text.contains(QChar::ParagraphSeparator);
}

bool isLineBreak(const QKeyEvent& event) {
  const bool isReturn = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
  return isReturn && !(event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier));
}

// What hands from other systems know; Qt has Control, Shift and Z on this one.
bool isRedo(const QKeyEvent& event) {
  return event.key() == Qt::Key_Y && event.modifiers() == Qt::ControlModifier;
}

bool isBackspace(const QKeyEvent& event) {
  return event.key() == Qt::Key_Backspace &&
         !(event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier));
}

// As Qt distinguishes text from shortcuts.
bool isTyped(const QKeyEvent& event) {
  if (event.text().isEmpty()) return false;
  const QChar c = event.text().front();
  if (c.category() == QChar::Other_Format) return true;
  if ((event.modifiers() & ~Qt::ShiftModifier) == Qt::ControlModifier) return false;
  return c.isPrint() || c.category() == QChar::Other_PrivateUse || c == u'\t';
}

}  // namespace

std::uint64_t TextView::steadyClock() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

TextView::TextView(const TextArea& area, Clock clock)
    : clock_(std::move(clock)),
      editable_(area.editable),
      margin_(std::max(area.inset.width, ownMargin)),
      spans_({[this](int start, int end) {
                if (end - start <= spanLength) return end;
                const QTextBlock block = document()->findBlock(start + spanLength);
                return std::min(end, block.position() + block.length());
              },
              [this](int start, int end, std::string& text) {
                form_.append(*document(), start, end, text);
              }}) {
  setFont(qtFont(area.font));
  setFrameShape(area.bordered ? QFrame::StyledPanel : QFrame::NoFrame);
  if (area.transparent) {
    QPalette clear = palette();
    clear.setColor(QPalette::Base, Qt::transparent);
    clear.setColor(QPalette::Text, clear.color(QPalette::WindowText));
    setPalette(clear);
    viewport()->setAutoFillBackground(false);
  }
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setTabChangesFocus(false);
  connect(&timer_, &QTimer::timeout, this, [this] { bringIn(turnMilliseconds); });
  connect(this, &QPlainTextEdit::cursorPositionChanged, this, [this] {
    if (!typing_) steps_.end();
  });
  connect(QGuiApplication::clipboard(), &QClipboard::selectionChanged, this,
          &SelectedText::withdrawConcealedSelection);
  setContents(share(area.text));
}

TextView::~TextView() = default;

void TextView::setContents(SharedText text, bool concealed) {
  original_ = std::move(text);
  concealed_ = concealed;
  form_ = DocumentText();
  spans_.clear();
  waiting_.clear();
  startAfresh();
  bringIn(original_, false);
}

void TextView::startAfresh() {
  auto* document = new QTextDocument(this);
  document->setDocumentLayout(new NaturalLayout(document));
  document->setDefaultFont(font());
  document->setDocumentMargin(margin_);
  document->setUndoRedoEnabled(false);
  // The first one is the base class's own and goes with the call.
  QTextDocument* const former = place_.isNull() ? nullptr : this->document();
  if (former) former->disconnect(this);
  setDocument(document);
  if (former) dispose(former);
  setTabStopDistance(tabColumns * fontMetrics().horizontalAdvance(u' '));
  connect(document, &QTextDocument::contentsChange, this,
          [this, document](int at, int removed, int added) {
            if (!inserting_) spans_.changed(at, removed, added, document->characterCount() - 1);
            if (!typing_) steps_.end();
          });
  place_ = QTextCursor(document);
}

void TextView::bringIn(SharedText text, bool pasting) {
  setReadOnly(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse);
  // What an input method has under way waits like the keys.
  setAttribute(Qt::WA_InputMethodEnabled, editable_);
  arriving_ = std::move(text);
  rest_ = *arriving_;
  pasting_ = pasting;
  bringIn(turnMilliseconds);
}

void TextView::bringIn(std::uint64_t milliseconds) {
  const std::uint64_t start = clock_();
  const bool first = rest_.size() == arriving_->size();
  bool begun = !first;
  while (!rest_.empty() && clock_() - start < milliseconds) {
    const int at = place_.selectionStart(), removed = place_.selectionEnd() - at;
    inserting_ = true;
    // One step for undoing, however many turns it takes.
    begun ? place_.joinPreviousEditBlock() : place_.beginEditBlock();
    const std::string_view piece = form_.insert(rest_, pieceBytes, place_);
    place_.endEditBlock();
    inserting_ = false;
    spans_.inserted(at, removed, place_.position() - at, {arriving_, piece});
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
  form_.settle();
  if (!editable_) return;
  setReadOnly(false);
  if (pasting_) {
    ensureCursorVisible();
  } else {
    document()->setUndoRedoEnabled(true);
    document()->setModified(false);
  }
  while (!waiting_.empty() && !arriving_) {
    const std::unique_ptr<QEvent> event = std::move(waiting_.front());
    waiting_.pop_front();
    QCoreApplication::sendEvent(this, event.get());
  }
}

SharedText TextView::contents() {
  // What was typed belongs to it.
  while (arriving_ && !waiting_.empty()) bringIn(std::numeric_limits<std::uint64_t>::max());
  if (arriving_ && pasting_) {
    TextSnapshot parts = spans_.snapshot(0, place_.selectionStart());
    parts.push_back({arriving_, rest_});
    const TextSnapshot behind =
        spans_.snapshot(place_.selectionEnd(), document()->characterCount() - 1);
    parts.insert(parts.end(), behind.begin(), behind.end());
    return share(joined(parts));
  }
  steps_.end();
  if (!document()->isUndoRedoEnabled() || !document()->isModified()) return original_;
  original_ = share(joined(spans_.snapshot()));
  document()->setModified(false);
  return original_;
}

QMimeData* TextView::createMimeDataFromSelection() const {
  const QTextCursor cursor = textCursor();
  return new SelectedText(spans_.snapshot(cursor.selectionStart(), cursor.selectionEnd()),
                          concealed_);
}

void TextView::insertFromMimeData(const QMimeData* source) {
  if (isReadOnly() || !source->hasText()) return;
  place_ = textCursor();
  form_.startAt(document()->findBlock(place_.selectionStart()), place_.selectionStart());
  bringIn(share(source->text().toStdString()), true);
}

void TextView::keyPressEvent(QKeyEvent* event) {
  if (keysWait()) {
    waiting_.emplace_back(event->clone());
    return;
  }
  if (QTextCursor cursor = textCursor(); isSamePlace(cursor.anchor(), cursor.position())) {
    cursor.clearSelection();
    setTextCursor(cursor);
  }
  if (isReadOnly()) {
    scroll(*event);
  } else if (!edits(*event)) {
    pressKey(*event);
  }
}

// There is no caret to move: the keys scroll, and with Shift they select.
void TextView::scroll(QKeyEvent& event) {
  if (event.matches(QKeySequence::MoveToStartOfDocument)) {
    verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMinimum);
  } else if (event.matches(QKeySequence::MoveToEndOfDocument)) {
    verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMaximum);
  } else {
    const bool selects = event.modifiers() & Qt::ShiftModifier;
    if (selects) setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    pressKey(event);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
  }
}

// Does what the key stands for when it edits the text one character at a time.
bool TextView::edits(const QKeyEvent& event) {
  if (isRedo(event)) {
    redo();
  } else if (isLineBreak(event)) {
    breakLine();
  } else if (isBackspace(event)) {
    erase(UndoSteps::Edit::eraseBackward);
  } else if (event.matches(QKeySequence::Delete)) {
    erase(UndoSteps::Edit::eraseForward);
  } else if (isTyped(event)) {
    type(event.text());
  } else {
    if (event.matches(QKeySequence::DeleteStartOfWord)) stepOverCut(UndoSteps::Edit::eraseBackward);
    if (event.matches(QKeySequence::DeleteEndOfWord)) stepOverCut(UndoSteps::Edit::eraseForward);
    return false;
  }
  return true;
}

void TextView::pressKey(QKeyEvent& event) {
  // Where a line was only cut, the end of one part and the start of the next are one place.
  const bool steps = (event.key() == Qt::Key_Left || event.key() == Qt::Key_Right) &&
                     (event.modifiers() & Qt::ShiftModifier || !textCursor().hasSelection());
  int before = 0;
  do {
    before = textCursor().position();
    QPlainTextEdit::keyPressEvent(&event);
  } while (steps && isSamePlace(before, textCursor().position()));
}

void TextView::inputMethodEvent(QInputMethodEvent* event) {
  const QString commit = event->commitString();
  if (keysWait()) {
    if (!commit.isEmpty()) waiting_.emplace_back(event->clone());
    return;
  }
  // Qt would give breaks the format of what stands before them.
  const bool ours = !isReadOnly() && (event->replacementLength() == 0 || hasBreak(commit));
  const QScopedValueRollback typing(typing_, ours);
  if (ours) event->setCommitString({}, event->replacementStart(), event->replacementLength());
  QPlainTextEdit::inputMethodEvent(event);
  if (ours && !commit.isEmpty()) type(commit);
}

void TextView::type(const QString& text) {
  if (text.size() > 1) steps_.end();
  edit(UndoSteps::Edit::insert, text.back(),
       [&](QTextCursor& cursor) { cursor.insertText(text, QTextCharFormat()); });
}

void TextView::breakLine() { edit(UndoSteps::Edit::insert, u'\n', DocumentText::breakLine); }

void TextView::erase(UndoSteps::Edit erasing) {
  stepOverCut(erasing);
  const bool selected = textCursor().hasSelection();
  const bool backward = erasing == UndoSteps::Edit::eraseBackward;
  edit(erasing, document()->characterAt(textCursor().position() - backward),
       [backward](QTextCursor& cursor) {
         backward ? cursor.deletePreviousChar() : cursor.deleteChar();
       });
  if (selected) steps_.end();
}

template <typename Work>
void TextView::edit(UndoSteps::Edit edit, QChar character, Work work) {
  QTextCursor cursor = textCursor();
  const int revision = document()->revision();
  if (cursor.hasSelection()) steps_.end();
  const QScopedValueRollback typing(typing_, true);
  if (steps_.begins(edit, character.isSpace(), clock_())) {
    cursor.beginEditBlock();
  } else {
    cursor.joinPreviousEditBlock();
  }
  work(cursor);
  cursor.endEditBlock();
  setTextCursor(cursor);
  ensureCursorVisible();
  // At an end of the text there is nothing to erase.
  if (document()->revision() == revision) steps_.end();
}

// What is erased is what the user sees there, not the cut.
void TextView::stepOverCut(UndoSteps::Edit erasing) {
  QTextCursor cursor = textCursor();
  if (cursor.hasSelection()) return;
  if (erasing == UndoSteps::Edit::eraseBackward) {
    while (cursor.atBlockStart() && DocumentText::continuesLine(cursor.block()))
      cursor.movePosition(QTextCursor::PreviousCharacter);
  } else {
    while (cursor.atBlockEnd() && cursor.block().next().isValid() &&
           DocumentText::continuesLine(cursor.block().next()))
      cursor.movePosition(QTextCursor::NextCharacter);
  }
  const QScopedValueRollback typing(typing_, true);
  setTextCursor(cursor);
}

bool TextView::isSamePlace(int position, int other) const {
  if (position == other) return false;
  const auto [from, to] = std::minmax(position, other);
  QTextBlock block = document()->findBlock(from);
  if (from != block.position() + block.length() - 1) return false;
  for (int at = from; at < to; ++at) {
    block = block.next();
    if (block.position() != at + 1 || !DocumentText::continuesLine(block)) return false;
  }
  return true;
}

}  // namespace marbelot
