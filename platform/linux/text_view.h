// The plain-text view of windows and alerts.
#pragma once

#include <QPlainTextEdit>
#include <QTimer>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/linux/document_text.h"
#include "platform/linux/text_spans.h"
#include "platform/undo_steps.h"
#include "platform/view.h"

namespace marbelot {

// Shows texts of any size at once: what does not fit into a moment is brought in piece by piece.
// Until it is complete the text can be read; what is typed waits and comes after it.
class TextView : public QPlainTextEdit {
 public:
  using Clock = std::function<std::uint64_t()>;  // milliseconds, never going back
  explicit TextView(const TextArea& area, Clock clock = steadyClock);
  ~TextView() override;

  // Nothing of the text before can be brought back by undoing. What is taken from a `concealed`
  // text says so to other programs, and selecting alone does not offer it to them.
  void setContents(SharedText text, bool concealed = false);
  // The text that was set or last asked for as long as it is unchanged; else what the document
  // stands for, to the byte. Undoing distinguishes what was typed before and after.
  SharedText contents();

  // What is typed now waits for a text that is still coming in.
  bool keysWait() const { return editable_ && arriving_; }

 protected:
  QMimeData* createMimeDataFromSelection() const override;
  void insertFromMimeData(const QMimeData* source) override;
  void keyPressEvent(QKeyEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;

 private:
  void startAfresh();
  void bringIn(SharedText text, bool pasting);
  void bringIn(std::uint64_t milliseconds);
  void finish();
  void scroll(QKeyEvent& event);
  bool edits(const QKeyEvent& event);
  void pressKey(QKeyEvent& event);
  void type(const QString& text);
  void breakLine();
  void erase(UndoSteps::Edit erasing);
  // Edits the text as a step of undoing or as a part of the last one.
  template <typename Work>
  void edit(UndoSteps::Edit edit, QChar character, Work work);
  void stepOverCut(UndoSteps::Edit erasing);
  bool isSamePlace(int position, int other) const;

  static std::uint64_t steadyClock();
  const Clock clock_;
  const bool editable_;
  const double margin_;  // pixels
  SharedText original_;  // never null
  bool concealed_ = false;
  DocumentText form_;
  mutable TextSpans spans_;

  UndoSteps steps_;
  bool typing_ = false;

  // What is being brought in, and where.
  SharedText arriving_;
  std::string_view rest_;
  QTextCursor place_;
  bool pasting_ = false;
  bool inserting_ = false;
  QTimer timer_;
  std::deque<std::unique_ptr<QEvent>> waiting_;  // for that
};

}  // namespace marbelot
