// What a text view gives to the clipboard and to a drag.
#pragma once

#include <QMimeData>

#include "platform/linux/text_spans.h"

namespace marbelot {

// A part of a text as it was when it was selected. It is put together when somebody asks for it,
// which with the primary selection hardly ever happens.
class SelectedText : public QMimeData {
 public:
  SelectedText(TextSnapshot parts, bool concealed)
      : parts_(std::move(parts)), concealed_(concealed) {}

  QStringList formats() const override;
  const TextSnapshot& parts() const { return parts_; }

  // Whatever is selected becomes the primary selection, which any program may read and many show.
  static void withdrawConcealedSelection();

 protected:
  QVariant retrieveData(const QString& format, QMetaType type) const override;

 private:
  const TextSnapshot parts_;
  const bool concealed_;
};

}  // namespace marbelot
