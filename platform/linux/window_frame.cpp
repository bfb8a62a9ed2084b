#include "platform/linux/window_frame.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QTimer>
#include <QWindow>
#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/linux/drawing.h"
#include "platform/linux/sway_windows.h"
#include "platform/linux/window_shadow.h"
#include "platform/linux/x11_desktop.h"

namespace marbelot {
namespace {

constexpr QSize leastSize(240, 160);
// Less than this is taken for the smooth edge of a shape where nothing can be translucent.
constexpr int leastAlpha = 40;
constexpr std::size_t rememberedMoves = 32;  // more than an animation has

Qt::WindowFlags flagsFor(const WindowDescription& description) {
  // An overlay is a tool, because Wayland compositors give any other one the focus by themselves.
  const bool tool = description.panel || description.level == WindowLevel::overlay;
  Qt::WindowFlags flags = tool ? Qt::Tool : Qt::Window;
  if (description.titled) {
    flags |= Qt::WindowTitleHint | Qt::CustomizeWindowHint | Qt::WindowSystemMenuHint;
    if (description.closable) flags |= Qt::WindowCloseButtonHint;
    if (description.miniaturizable) flags |= Qt::WindowMinimizeButtonHint;
    if (description.resizable) flags |= Qt::WindowMaximizeButtonHint;
  } else {
    flags |= Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint;
  }
  if (description.level != WindowLevel::normal) flags |= Qt::WindowStaysOnTopHint;
  // Sway puts floating windows in the middle, wherever they ask to be, but gives keys to no others.
  const bool misplaced = description.panel && description.level == WindowLevel::floating &&
                         !description.keyDown && isSway();
  // No window manager puts one of its windows above those in full-screen mode, but all of them
  // leave windows alone that are none of theirs.
  if (description.level >= WindowLevel::raised || misplaced) flags |= Qt::BypassWindowManagerHint;
  if (description.panel) flags |= Qt::WindowDoesNotAcceptFocus;
  if (description.ignoresMouse) flags |= Qt::WindowTransparentForInput;
  return flags;
}

QSize wholeSize(Size size) {
  return {static_cast<int>(std::lround(size.width)), static_cast<int>(std::lround(size.height))};
}

QRegion solidPart(const QImage& image) {
  std::vector<QRect> spans;
  for (int y = 0; y < image.height(); ++y) {
    const auto* const row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
    for (int x = 0; x < image.width();) {
      const int from = x;
      while (x < image.width() && qAlpha(row[x]) >= leastAlpha) ++x;
      if (x > from) spans.emplace_back(from, y, x - from, 1);
      while (x < image.width() && qAlpha(row[x]) < leastAlpha) ++x;
    }
  }
  QRegion region;
  region.setRects(spans.data(), static_cast<int>(spans.size()));
  return region;
}

}  // namespace

WindowFrame::WindowFrame(const WindowDescription& description, PictureCache& pictures,
                         Events events)
    : titled_(description.titled),
      panel_(description.panel),
      resizable_(description.resizable),
      shadow_(description.shadow),
      everySpace_(description.everySpace),
      ignoresMouse_(description.ignoresMouse),
      movableByBackground_(description.movableByBackground),
      events_(std::move(events)),
      pane_(description.contentSize, description.views, pictures, description.pressed,
            [this] { acceptFocus(); }) {
  setWindowFlags(flagsFor(description));
  setWindowTitle(QString::fromStdString(description.title));
  setAttribute(Qt::WA_AlwaysShowToolTips);
  if (!titled_) {
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_NoSystemBackground);
  }
  if (description.alpha < 1) setWindowOpacity(description.alpha);
  pane_.setParent(this);
  takeFirstFocus();
  setPaneSize(wholeSize(description.contentSize));
  if (titled_ && description.closable) {
    auto* close = new QAction(this);
    close->setShortcuts(QKeySequence::keyBindings(QKeySequence::Close));
    if (description.escapeCloses) close->setShortcuts(close->shortcuts() << Qt::Key_Escape);
    connect(close, &QAction::triggered, this, &QWidget::close);
    addAction(close);
  }
}

// A text has the focus, else nothing: Qt would give it to the first button.
void WindowFrame::takeFirstFocus() {
  const auto texts = pane_.findChildren<QPlainTextEdit*>();
  const auto live = std::find_if(texts.begin(), texts.end(),
                                 [](const QWidget* text) { return !text->isHidden(); });
  QWidget* const first = live == texts.end() ? static_cast<QWidget*>(this) : *live;
  first->setFocus();
}

void WindowFrame::detach() {
  events_ = {};
  pane_.detach();
}

QRect WindowFrame::shownFrame() const {
  if (wanted_) return *wanted_;
  return titled_ ? frameGeometry() : geometry().adjusted(margin_, margin_, -margin_, -margin_);
}

void WindowFrame::setShownFrame(const QRect& frame) {
  told_ = frame.topLeft();
  if (asked_.size() >= rememberedMoves) asked_.erase(asked_.begin());
  asked_.push_back(told_);
  if (titled_) {
    // How large the title bar is turns out on the screen.
    if (!framed_) wanted_ = frame;
    setPaneSize(frame.size() - (frameGeometry().size() - size()));
    move(frame.topLeft());
  } else {
    setPaneSize(frame.size());
    move(frame.topLeft() - QPoint(margin_, margin_));
  }
}

void WindowFrame::fitWanted() {
  const QRect wanted = *wanted_;
  wanted_.reset();
  setShownFrame(wanted);
}

void WindowFrame::setPaneSize(QSize size) {
  const QSize whole = size + QSize(2 * margin_, 2 * margin_);
  if (resizable_) {
    setMinimumSize(leastSize.boundedTo(whole));
    resize(whole);
  } else {
    setFixedSize(whole);
  }
}

void WindowFrame::setContent(Size size, const std::vector<View>& views) {
  const QRect before = shownFrame();
  const QSize bars = titled_ ? frameGeometry().size() - this->size() : QSize(0, 0);
  pane_.setContent(size, views);
  takeFirstFocus();
  QRect after(QPoint(), wholeSize(size) + bars);
  after.moveBottomLeft(before.bottomLeft());
  if (after.size() != before.size()) {
    setShownFrame(after);
  } else if (isVisible()) {
    shape();
  }
}

void WindowFrame::prepare() {
  settled_ = isVisible();
  if (!titled_) {
    const QRect frame = shownFrame();
    composited_ = isComposited();
    const int margin = shadow_ && composited_ ? shadowMargin : 0;
    if (std::exchange(margin_, margin) != margin) {
      setPaneSize(frame.size());
      move(frame.topLeft() - QPoint(margin_, margin_));
    }
    winId();
    setShadowMargin(*this, margin_);
  }
  told_ = shownFrame().topLeft();
  if (everySpace_ && !isVisible()) putOnEveryDesktop(*this);
  shape();
}

// What shows of the views, as opaque as they are: its shadow, or what is left of the window.
void WindowFrame::shape() {
  if (titled_) return;
  shadowImage_ = {};
  clearMask();
  if (composited_ && margin_ == 0) return;
  pane_.resize(size() - QSize(2 * margin_, 2 * margin_));
  const double scale = composited_ ? devicePixelRatioF() : 1;
  QImage drawn((QSizeF(pane_.size()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
  drawn.setDevicePixelRatio(scale);
  drawn.fill(Qt::transparent);
  pane_.render(&drawn, {}, {}, DrawChildren);
  if (composited_) {
    shadowImage_ = shadowOf(drawn);
    const QRegion inside(pane_.geometry());
    if (!ignoresMouse_) takeMouseOnlyIn(*this, &inside);
    update();
    return;
  }
  if (const QRegion solid = solidPart(drawn); !solid.isEmpty() && solid != QRegion(drawn.rect()))
    setMask(solid);
}

void WindowFrame::acceptFocus() {
  if (!panel_) return;
  winId();
  windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus, false);
  if (isVisible()) activateWindow();
}

bool WindowFrame::event(QEvent* event) {
  if (event->type() == QEvent::WinIdChange && windowHandle())
    windowHandle()->installEventFilter(this);
  if (event->type() == PictureCache::readyEvent && isVisible()) shape();
  if (event->type() == QEvent::WindowDeactivate && panel_ && windowHandle())
    windowHandle()->setFlag(Qt::WindowDoesNotAcceptFocus, true);
  return QWidget::event(event);
}

void WindowFrame::closeEvent(QCloseEvent* event) {
  QWidget::closeEvent(event);
  if (const auto told = events_.closed) told();
}

void WindowFrame::paintEvent(QPaintEvent* event) {
  settled_ = true;
  if (wanted_ && !framed_) QTimer::singleShot(0, this, [this] { fitWanted(); });
  framed_ = true;
  if (titled_) return;
  QPainter painter(this);
  if (!composited_) painter.fillRect(event->rect(), palette().color(QPalette::Window));
  if (!shadowImage_.isNull()) {
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(rect()), shadowImage_);
  }
}

void WindowFrame::resizeEvent(QResizeEvent*) {
  pane_.setGeometry(rect().adjusted(margin_, margin_, -margin_, -margin_));
  if (isVisible()) shape();
}

void WindowFrame::moveEvent(QMoveEvent*) {
  const QPoint now = shownFrame().topLeft();
  if (!settled_ || dragging_ || now == told_) return;
  // The server tells late of where the program has put it meanwhile.
  if (std::find(asked_.begin(), asked_.end(), now) != asked_.end()) return;
  asked_.clear();
  told_ = now;
  if (const auto told = events_.moved) told();
}

void WindowFrame::mousePressEvent(QMouseEvent* event) {
  if (movableByBackground_ && event->button() == Qt::LeftButton) drag();
}

// Every window manager would do it in its own way, and none for windows that it leaves alone.
void WindowFrame::drag() {
  if (!(QApplication::mouseButtons() & Qt::LeftButton) || std::exchange(dragging_, true)) return;
  // The pointer itself may be elsewhere by now.
  dragOffset_ = pressedAt_ - shownFrame().topLeft();
  qApp->installEventFilter(this);
}

bool WindowFrame::eventFilter(QObject* watched, QEvent* event) {
  if (watched == windowHandle() && event->type() == QEvent::MouseButtonPress)
    pressedAt_ = static_cast<QMouseEvent*>(event)->globalPosition().toPoint();
  if (!dragging_ || !watched->isWidgetType()) return QWidget::eventFilter(watched, event);
  if (event->type() == QEvent::MouseMove) {
    const QPoint corner =
        static_cast<QMouseEvent*>(event)->globalPosition().toPoint() - dragOffset_;
    if (corner != told_) {
      told_ = corner;
      move(titled_ ? corner : corner - QPoint(margin_, margin_));
      if (const auto told = events_.moved) told();
    }
    return true;
  }
  if (event->type() == QEvent::MouseButtonRelease) {
    dragging_ = false;
    qApp->removeEventFilter(this);
  }
  return false;
}

void WindowFrame::keyPressEvent(QKeyEvent* event) {
  const auto told = events_.keyDown;
  if (told && !isModifier(*event) && told(keyEvent(*event))) return;
  const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (isReturn && !(event->modifiers() & ~Qt::KeypadModifier) && pane_.pressDefault()) return;
  QWidget::keyPressEvent(event);
}

}  // namespace marbelot
