#include "platform/linux/drawing.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <algorithm>
#include <cmath>

#include "platform/linux/secondary_text.h"

namespace marbelot {
namespace {

QColor roleColor(Color::Role role, const QPalette& palette) {
  switch (role) {
    case Color::Role::label:
      return palette.color(QPalette::WindowText);
    case Color::Role::secondaryLabel:
      return secondaryText(palette);
    case Color::Role::windowBackground:
      return palette.color(QPalette::Window);
    case Color::Role::accent:
      return palette.color(QPalette::Highlight);
    case Color::Role::fixed:
      break;
  }
  return Qt::black;
}

KeyCode keyCode(int key) {
  switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return KeyCode::returnKey;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
      return KeyCode::tab;
    case Qt::Key_Space:
      return KeyCode::space;
    case Qt::Key_Escape:
      return KeyCode::escape;
    case Qt::Key_Left:
      return KeyCode::leftArrow;
    case Qt::Key_Right:
      return KeyCode::rightArrow;
    case Qt::Key_Down:
      return KeyCode::downArrow;
    case Qt::Key_Up:
      return KeyCode::upArrow;
    default:
      return KeyCode::other;
  }
}

}  // namespace

QColor qtColor(const Color& color, const QPalette& palette) {
  const auto component = [](double value) { return static_cast<float>(std::clamp(value, 0., 1.)); };
  QColor made =
      color.role == Color::Role::fixed
          ? QColor::fromRgbF(component(color.red), component(color.green), component(color.blue))
          : roleColor(color.role, palette);
  made.setAlphaF(made.alphaF() * component(color.alpha));
  return made;
}

QFont qtFont(const Font& font) {
  QFont made = font.monospaced ? QFontDatabase::systemFont(QFontDatabase::FixedFont)
                               : QFontDatabase::systemFont(QFontDatabase::GeneralFont);
  made.setPixelSize(std::max(1, static_cast<int>(std::lround(font.size))));
  if (font.weight == Font::Weight::semibold) made.setWeight(QFont::DemiBold);
  if (font.weight == Font::Weight::bold) made.setWeight(QFont::Bold);
  return made;
}

double textWidth(const std::string& text, const Font& font) {
  return QFontMetricsF(qtFont(font)).horizontalAdvance(QString::fromStdString(text));
}

Qt::Alignment qtAlignment(Alignment alignment) {
  switch (alignment) {
    case Alignment::centre:
      return Qt::AlignHCenter;
    case Alignment::right:
      return Qt::AlignRight | Qt::AlignAbsolute;
    case Alignment::left:
      break;
  }
  return Qt::AlignLeft | Qt::AlignAbsolute;
}

bool isModifier(const QKeyEvent& event) {
  const int key = event.key();
  return (key >= Qt::Key_Shift && key <= Qt::Key_ScrollLock) ||
         (key >= Qt::Key_Super_L && key <= Qt::Key_Hyper_R && key != Qt::Key_Menu) ||
         key == Qt::Key_AltGr || key == Qt::Key_Mode_switch;
}

KeyEvent keyEvent(const QKeyEvent& event) {
  const Qt::KeyboardModifiers modifiers = event.modifiers();
  KeyEvent made;
  made.code = keyCode(event.key());
  made.command = modifiers & Qt::ControlModifier;
  made.control = modifiers & Qt::MetaModifier;
  made.option = modifiers & Qt::AltModifier;
  made.shift = modifiers & Qt::ShiftModifier;
  made.isRepeat = event.isAutoRepeat();
  return made;
}

}  // namespace marbelot
