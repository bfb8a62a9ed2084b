#include "platform/linux/text_view.h"

#include <QFontDatabase>

namespace marbelot {

QFont qtFont(const Font& font) {
  QFont made = font.monospaced ? QFontDatabase::systemFont(QFontDatabase::FixedFont)
                               : QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  made.setPixelSize(static_cast<int>(font.size));
  return made;
}

TextView::TextView(const View& view) {
  setFont(qtFont(view.font));
  setReadOnly(!view.editable);
  setFrameShape(view.bordered ? QFrame::StyledPanel : QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  document()->setDocumentMargin(0);
  setViewportMargins(static_cast<int>(view.inset.width), static_cast<int>(view.inset.height),
                     static_cast<int>(view.inset.width), static_cast<int>(view.inset.height));
  setTabChangesFocus(false);
  setContents(share(view.text));
}

void TextView::setContents(const SharedText& text) {
  setPlainText(QString::fromUtf8(text->data(), static_cast<qsizetype>(text->size())));
}

std::string TextView::contents() const { return toPlainText().toStdString(); }

}  // namespace marbelot
