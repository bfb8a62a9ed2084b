#include "platform/linux/view_widgets.h"

#include <QPainter>
#include <QPushButton>
#include <algorithm>
#include <cmath>

#include "platform/linux/drawing.h"
#include "platform/linux/symbols.h"
#include "platform/linux/tool_tip.h"

namespace marbelot {
namespace {

constexpr double barCornerRadius = 5;
constexpr double mostSymbolSize = 16;  // on which the symbols are drawn
constexpr double symbolGap = 4;

constexpr const char* symbolProperty = "marbelotSymbol";

QIcon symbolAsIcon(const std::string& name, const QColor& color, double size) {
  QIcon icon;
  for (const double scale : {1., 1.5, 2., 3.}) {
    QPixmap pixmap((QSizeF(size, size) * scale).toSize());
    pixmap.setDevicePixelRatio(scale);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    if (!drawSymbol(painter, name, QRectF(0, 0, size, size), color)) return {};
    icon.addPixmap(pixmap);
  }
  return icon;
}

}  // namespace

TextLabel::TextLabel(const Label& label)
    : QLabel(QString::fromStdString(label.text)), described_(label) {
  setTextFormat(Qt::PlainText);
  setFont(qtFont(label.font));
  setMinimumSize(0, 0);
}

void TextLabel::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setPen(qtColor(described_.color, palette()));
  const Qt::Alignment horizontal = qtAlignment(described_.alignment);
  if (described_.multiline) {
    painter.drawText(rect(), static_cast<int>(horizontal | Qt::AlignTop) | Qt::TextWordWrap,
                     text());
    return;
  }
  QString line = text();
  line.replace(u'\n', u' ');
  painter.drawText(rect(), static_cast<int>(horizontal | Qt::AlignVCenter) | Qt::TextSingleLine,
                   fontMetrics().elidedText(line, Qt::ElideRight, width()));
}

FlatButton::FlatButton(const Button& button) : described_(button) { setFont(qtFont(button.font)); }

void FlatButton::enterEvent(QEnterEvent*) { update(); }
void FlatButton::leaveEvent(QEvent*) { update(); }

void FlatButton::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  QColor tint = qtColor(described_.tint, palette());
  if (!isEnabled()) tint.setAlphaF(tint.alphaF() * 0.4F);

  QColor background = qtColor(described_.background, palette());
  painter.setPen(Qt::NoPen);
  painter.setBrush(background);
  painter.drawRoundedRect(rect(), barCornerRadius, barCornerRadius);
  if (isEnabled() && (isDown() || underMouse())) {
    QColor above = palette().color(QPalette::WindowText);
    above.setAlphaF(isDown() ? 0.2F : 0.1F);
    painter.setBrush(above);
    painter.drawRoundedRect(rect(), barCornerRadius, barCornerRadius);
  }
  if (hasFocus()) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1.5));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), barCornerRadius,
                            barCornerRadius);
  }

  const QRectF inside = rect();
  const bool withSymbol = hasSymbol(described_.symbol);
  const double side = std::min({mostSymbolSize, inside.width(), inside.height()});
  const double taken = withSymbol ? side + (text().isEmpty() ? 0 : symbolGap) : 0;
  const QFontMetricsF metrics(font());
  const QString title = metrics.elidedText(text(), Qt::ElideRight, inside.width() - taken + 0.5);
  const double width = taken + metrics.horizontalAdvance(title);
  double x = inside.center().x() - width / 2;
  if (withSymbol) {
    drawSymbol(painter, described_.symbol, QRectF(x, inside.center().y() - side / 2, side, side),
               tint);
    x += taken;
  }
  painter.setPen(tint);
  painter.drawText(QRectF(x, inside.y(), inside.right() - x, inside.height()),
                   Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextDontClip, title);
}

QAbstractButton* makeButton(const Button& described) {
  Button button = described;
  if (!hasSymbol(button.symbol)) button.symbol = button.otherSymbol;
  QAbstractButton* made = nullptr;
  if (button.flat) {
    made = new FlatButton(button);
  } else {
    auto* const push = new QPushButton;
    push->setDefault(button.defaultKey);
    push->setAutoDefault(false);
    Font font = button.font;
    if (button.small) font.size = std::min(font.size, 11.);
    if (font != Font{}) push->setFont(qtFont(font));
    if (!button.symbol.empty()) {
      push->setIcon(symbolAsIcon(button.symbol, qtColor(button.tint, push->palette()),
                                 std::min(mostSymbolSize, font.size + 1)));
    }
    made = push;
  }
  setButtonTitle(*made, button.title);
  made->setProperty(symbolProperty, QString::fromStdString(button.symbol));
  made->setToolTip(plainToolTip(button.toolTip));
  if (button.title.empty()) {
    const std::string& spoken = button.spoken.empty() ? button.toolTip : button.spoken;
    made->setAccessibleName(QString::fromStdString(spoken));
  }
  made->setEnabled(button.enabled);
  // A click leaves the focus where something is written.
  made->setFocusPolicy(Qt::TabFocus);
  return made;
}

// One "&" alone would mark a mnemonic.
void setButtonTitle(QAbstractButton& button, const std::string& title) {
  QString text = QString::fromStdString(title);
  if (qobject_cast<QPushButton*>(&button)) text.replace("&", "&&");
  button.setText(text);
}

std::string buttonTitle(const QAbstractButton& button) {
  QString text = button.text();
  if (qobject_cast<const QPushButton*>(&button)) text.replace("&&", "&");
  return text.toStdString();
}

std::string shownTitle(const QAbstractButton& button) {
  if (!button.text().isEmpty()) return buttonTitle(button);
  return button.property(symbolProperty).toString().toStdString();
}

PictureView::PictureView(Image image, PictureCache& pictures)
    : image_(std::move(image)), pictures_(pictures) {}

void PictureView::paintEvent(QPaintEvent*) {
  const double scale = std::min({1., static_cast<double>(width()) / image_.width(),
                                 static_cast<double>(height()) / image_.height()});
  const QSizeF size = QSizeF(image_.width(), image_.height()) * scale;
  const QRectF place(QPointF((width() - size.width()) / 2, (height() - size.height()) / 2), size);
  QPainter painter(this);
  pictures_.draw(painter, image_, place, *this);
}

void ContainerView::paintEvent(QPaintEvent*) {
  const QColor colour = qtColor(background_, palette());
  if (colour.alpha() == 0) return;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(colour);
  const double radius = std::min(cornerRadius_, std::min(width(), height()) / 2.);
  painter.drawRoundedRect(rect(), radius, radius);
}

}  // namespace marbelot
