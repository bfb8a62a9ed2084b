// What presses the default button where a text keeps Return for itself.
#pragma once

#include <QKeySequence>
#include <QString>

namespace marbelot {

inline const QKeySequence defaultButtonKey(Qt::CTRL | Qt::Key_Return);
inline QString defaultButtonTip() { return defaultButtonKey.toString(QKeySequence::NativeText); }

}  // namespace marbelot
