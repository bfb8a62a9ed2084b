// Texts for Qt's tool tips, which take what looks like markup for markup.
#pragma once

#include <QString>
#include <QTextDocument>
#include <string>

namespace marbelot {

inline QString plainToolTip(const std::string& text) {
  return text.empty() ? QString() : Qt::convertFromPlainText(QString::fromStdString(text));
}

}  // namespace marbelot
