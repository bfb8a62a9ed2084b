#include "platform/linux/selected_text.h"

#include <QClipboard>
#include <QGuiApplication>

#include "platform/concealed_types.h"

namespace marbelot {
namespace {

const QString plainText = QStringLiteral("text/plain");
// Clipboard managers leave out what has this.
const QString secretHint = QString::fromUtf8(passwordHint.data(), passwordHint.size());

}  // namespace

QStringList SelectedText::formats() const {
  return concealed_ ? QStringList{plainText, secretHint} : QStringList{plainText};
}

QVariant SelectedText::retrieveData(const QString& format, QMetaType type) const {
  if (concealed_ && format == secretHint) return QByteArray("secret");
  if (format != plainText) return {};
  QByteArray bytes;
  bytes.reserve(static_cast<qsizetype>(sizeOf(parts_)));
  for (const TextPart& part : parts_)
    bytes.append(part.bytes.data(), static_cast<qsizetype>(part.bytes.size()));
  // A receiver takes the bytes; only a paste into this program takes characters.
  if (type.id() == QMetaType::QByteArray) return bytes;
  return QString::fromUtf8(bytes);
}

void SelectedText::withdrawConcealedSelection() {
  QClipboard* const clipboard = QGuiApplication::clipboard();
  if (!clipboard->ownsSelection()) return;
  const auto* selected =
      dynamic_cast<const SelectedText*>(clipboard->mimeData(QClipboard::Selection));
  if (selected && selected->concealed_) clipboard->clear(QClipboard::Selection);
}

}  // namespace marbelot
