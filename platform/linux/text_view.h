// The plain-text view of windows and alerts.
#pragma once

#include <QPlainTextEdit>
#include <QTimer>
#include <string_view>

#include "platform/linux/document_text.h"
#include "platform/window.h"

namespace marbelot {

// The desktop's own font of that kind; points are pixels here.
QFont qtFont(const Font& font);

// Shows texts of any size at once: what does not fit into a moment is brought in piece by piece,
// and until it is complete the text can be read but not edited.
class TextView : public QPlainTextEdit {
 public:
  explicit TextView(const View& view);
  ~TextView() override;

  // Nothing of the text before can be brought back by undoing.
  void setContents(SharedText text);
  // The text that was set as long as it is unchanged; else what the document stands for, to the
  // byte.
  SharedText contents() const;

 protected:
  QMimeData* createMimeDataFromSelection() const override;
  void insertFromMimeData(const QMimeData* source) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void startAfresh();
  void bringIn();
  void finish();
  // The document's text, with what is still to come of one that is being pasted.
  std::string wholeText() const;
  std::string textBetween(int start, int end) const;
  bool breakLine();
  bool eraseAcrossMark(bool backwards);

  const bool editable_;
  const double margin_;  // pixels
  SharedText original_;  // never null
  DocumentText form_;
  bool faithful_ = true;  // the document can be turned back into the text

  // What is being brought in, and where.
  SharedText arriving_;
  std::string_view rest_;
  QTextCursor place_;
  bool pasting_ = false;
  QTimer timer_;
};

}  // namespace marbelot
