#include "platform/linux/text_view.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QPlainTextDocumentLayout>
#include <QThreadPool>
#include <limits>

#include "platform/linux/selected_text.h"

namespace marbelot {
namespace {

constexpr std::size_t pieceBytes = 16 * 1024;
constexpr int spanLength = 16 * 1024;  // UTF-16 units
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

}  // namespace

QFont qtFont(const Font& font) {
  QFont made = font.monospaced ? QFontDatabase::systemFont(QFontDatabase::FixedFont)
                               : QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  made.setPixelSize(static_cast<int>(font.size));
  return made;
}

TextView::TextView(const View& view)
    : editable_(view.editable),
      margin_(std::max(view.inset.width, ownMargin)),
      spans_({[this](int start, int end) {
                if (end - start <= spanLength) return end;
                const QTextBlock block = document()->findBlock(start + spanLength);
                return std::min(end, block.position() + block.length());
              },
              [this](int start, int end, std::string& text) {
                form_.append(*document(), start, end, text);
              }}) {
  setFont(qtFont(view.font));
  setFrameShape(view.bordered ? QFrame::StyledPanel : QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setTabChangesFocus(false);
  connect(&timer_, &QTimer::timeout, this, [this] { bringIn(turnMilliseconds); });
  connect(QGuiApplication::clipboard(), &QClipboard::selectionChanged, this,
          &SelectedText::withdrawConcealedSelection);
  setContents(share(view.text));
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
          });
  place_ = QTextCursor(document);
}

void TextView::bringIn(SharedText text, bool pasting) {
  setReadOnly(true);
  setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  // What an input method has under way waits like the keys.
  setAttribute(Qt::WA_InputMethodEnabled, editable_);
  arriving_ = std::move(text);
  rest_ = *arriving_;
  pasting_ = pasting;
  bringIn(turnMilliseconds);
}

void TextView::bringIn(int milliseconds) {
  QElapsedTimer spent;
  spent.start();
  const bool first = rest_.size() == arriving_->size();
  bool begun = !first;
  while (!rest_.empty() && spent.elapsed() < milliseconds) {
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
  while (arriving_ && !waiting_.empty()) bringIn(std::numeric_limits<int>::max());
  if (arriving_ && pasting_) {
    TextSnapshot parts = spans_.snapshot(0, place_.selectionStart());
    parts.push_back({arriving_, rest_});
    const TextSnapshot behind =
        spans_.snapshot(place_.selectionEnd(), document()->characterCount() - 1);
    parts.insert(parts.end(), behind.begin(), behind.end());
    return share(joined(parts));
  }
  if (!document()->isUndoRedoEnabled() || !document()->isModified()) return original_;
  return share(joined(spans_.snapshot()));
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
  const auto modifiers = event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier);
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!isReadOnly() && isReturn && modifiers == Qt::NoModifier) {
    // With Shift, too: Qt would put in U+2028, which hardly any other program takes for a break.
    breakLine();
    return;
  }
  if (QTextCursor cursor = textCursor(); isSamePlace(cursor.anchor(), cursor.position())) {
    cursor.clearSelection();
    setTextCursor(cursor);
  }
  if (!isReadOnly()) stepOverCut(*event);
  // Where a line was only cut, the end of one part and the start of the next are one place.
  const bool steps = (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) &&
                     (event->modifiers() & Qt::ShiftModifier || !textCursor().hasSelection());
  int before = 0;
  do {
    before = textCursor().position();
    QPlainTextEdit::keyPressEvent(event);
  } while (steps && isSamePlace(before, textCursor().position()));
}

void TextView::inputMethodEvent(QInputMethodEvent* event) {
  if (keysWait()) {
    if (!event->commitString().isEmpty()) waiting_.emplace_back(event->clone());
    return;
  }
  const QString commit = event->commitString();
  if (isReadOnly() || !hasBreak(commit)) {
    QPlainTextEdit::inputMethodEvent(event);
    return;
  }
  // Qt would give its breaks the format of what stands before them.
  event->setCommitString({}, event->replacementStart(), event->replacementLength());
  QPlainTextEdit::inputMethodEvent(event);
  textCursor().insertText(commit, QTextCharFormat());
}

void TextView::breakLine() {
  QTextCursor cursor = textCursor();
  DocumentText::breakLine(cursor);
  setTextCursor(cursor);
  ensureCursorVisible();
}

// What is erased is what the user sees there, not the cut.
void TextView::stepOverCut(const QKeyEvent& event) {
  QTextCursor cursor = textCursor();
  if (cursor.hasSelection()) return;
  const bool backspace = event.key() == Qt::Key_Backspace &&
                         !(event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier));
  if (backspace || event.matches(QKeySequence::DeleteStartOfWord)) {
    while (cursor.atBlockStart() && DocumentText::continuesLine(cursor.block()))
      cursor.movePosition(QTextCursor::PreviousCharacter);
  } else if (event.matches(QKeySequence::Delete) || event.matches(QKeySequence::DeleteEndOfWord)) {
    while (cursor.atBlockEnd() && cursor.block().next().isValid() &&
           DocumentText::continuesLine(cursor.block().next()))
      cursor.movePosition(QTextCursor::NextCharacter);
  }
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
