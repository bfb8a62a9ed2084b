#include "platform/linux/qt_windows.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "platform/linux/secondary_text.h"
#include "platform/linux/text_view.h"
#include "platform/linux/tool_tip.h"

namespace marbelot {
namespace {

constexpr const char* windowIdProperty = "marbelotWindow";
constexpr const char* alertIdProperty = "marbelotAlert";

// Presses the default button from a text, which keeps Return for itself.
const QKeySequence defaultButtonKey(Qt::CTRL | Qt::Key_Return);

QString defaultButtonTip() { return defaultButtonKey.toString(QKeySequence::NativeText); }

void bringToFront(QWidget& window) {
  window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
  window.show();
  window.raise();
  window.activateWindow();
}

// One that fills a screen stays there.
void centreOnScreen(QWidget& window) {
  if (window.isMaximized() || window.isFullScreen()) return;
  const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
  if (!screen) screen = QGuiApplication::primaryScreen();
  if (!screen) return;
  const QRect available = screen->availableGeometry();
  QRect frame(QPoint(), window.frameGeometry().size());
  frame.moveCenter(available.center());
  frame.moveTo(std::max(frame.left(), available.left()), std::max(frame.top(), available.top()));
  window.move(frame.topLeft());
}

// A window may become narrower than its hints.
class HintLabel : public QLabel {
 public:
  HintLabel(const QString& text, bool secondary) : QLabel(text), secondary_(secondary) {}

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    QPalette colours = palette();
    if (secondary_) colours.setColor(foregroundRole(), secondaryText(colours));
    style()->drawItemText(
        &painter, contentsRect(), static_cast<int>(alignment()), colours, isEnabled(),
        fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()), foregroundRole());
  }

 private:
  const bool secondary_;
};

}  // namespace

ViewPane::ViewPane(Size designed, std::vector<View> views,
                   std::function<void(const std::string&)> pressed, std::function<void()> closed)
    : designed_(designed),
      views_(std::move(views)),
      pressed_(std::move(pressed)),
      closed_(std::move(closed)) {
  for (const View& view : views_) {
    QWidget* widget = make(view);
    widget->setParent(this);
    widgets_[view.id] = widget;
  }
}

QWidget* ViewPane::make(const View& view) {
  switch (view.kind) {
    case ViewKind::label: {
      auto* label = new HintLabel(QString::fromStdString(view.text), view.secondary);
      label->setTextFormat(Qt::PlainText);
      label->setFont(qtFont(view.font));
      return label;
    }
    case ViewKind::button: {
      auto* button = new QPushButton(QString::fromStdString(view.text).replace("&", "&&"));
      button->setDefault(view.defaultKey);
      // A click leaves the focus where something is written.
      button->setFocusPolicy(Qt::TabFocus);
      if (view.defaultKey) button->setToolTip(defaultButtonTip());
      connect(button, &QPushButton::clicked, this, [this, id = view.id] {
        if (pressed_) pressed_(id);
      });
      return button;
    }
    case ViewKind::text: {
      auto* text = new TextView(view);
      text->installEventFilter(this);
      return text;
    }
  }
  return new QWidget;
}

void ViewPane::resizeEvent(QResizeEvent*) {
  const double growWidth = width() - designed_.width;
  const double growHeight = height() - designed_.height;
  for (const View& view : views_) {
    Rect frame = view.frame;
    if (view.resizing.leftMargin) frame.x += growWidth;
    if (view.resizing.width) frame.width += growWidth;
    if (view.resizing.height) frame.height += growHeight;
    // From an origin at the bottom left to Qt's at the top left.
    widgets_[view.id]->setGeometry(static_cast<int>(std::lround(frame.x)),
                                   static_cast<int>(std::lround(height() - frame.y - frame.height)),
                                   static_cast<int>(std::lround(frame.width)),
                                   static_cast<int>(std::lround(frame.height)));
  }
}

bool ViewPane::eventFilter(QObject* watched, QEvent* event) {
  const auto* text = dynamic_cast<TextView*>(watched);
  if (event->type() == QEvent::KeyPress && !(text && text->keysWait())) {
    const auto* key = static_cast<QKeyEvent*>(event);
    const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
    if (isReturn && key->modifiers() & Qt::ControlModifier) {
      for (const View& view : views_) {
        if (view.kind != ViewKind::button || !view.defaultKey) continue;
        static_cast<QPushButton*>(widgets_[view.id])->click();
        return true;
      }
    }
  }
  return QWidget::eventFilter(watched, event);
}

QWidget* ViewPane::find(const std::string& viewId) const {
  const auto found = widgets_.find(viewId);
  return found == widgets_.end() ? nullptr : found->second;
}

void ViewPane::setText(const std::string& viewId, const SharedText& text, bool concealed) {
  QWidget* widget = find(viewId);
  if (auto* view = dynamic_cast<TextView*>(widget)) {
    view->setContents(text, concealed);
  } else if (auto* label = qobject_cast<QLabel*>(widget)) {
    label->setText(QString::fromStdString(*text));
  } else if (auto* button = qobject_cast<QPushButton*>(widget)) {
    button->setText(QString::fromStdString(*text).replace("&", "&&"));
  }
}

SharedText ViewPane::text(const std::string& viewId) const {
  QWidget* widget = find(viewId);
  if (auto* view = dynamic_cast<TextView*>(widget)) return view->contents();
  const auto* label = qobject_cast<const QLabel*>(widget);
  return share(label ? label->text().toStdString() : std::string());
}

void ViewPane::closeEvent(QCloseEvent* event) {
  QWidget::closeEvent(event);
  if (closed_) closed_();
}

namespace {

class QtWindow : public Window {
 public:
  explicit QtWindow(WindowDescription description)
      : pane_({description.contentSize.width, description.contentSize.height},
              std::move(description.views), std::move(description.pressed),
              std::move(description.closed)) {
    const QSize size(static_cast<int>(description.contentSize.width),
                     static_cast<int>(description.contentSize.height));
    Qt::WindowFlags flags =
        Qt::Window | Qt::WindowTitleHint | Qt::CustomizeWindowHint | Qt::WindowSystemMenuHint;
    if (description.closable) flags |= Qt::WindowCloseButtonHint;
    if (description.miniaturizable) flags |= Qt::WindowMinimizeButtonHint;
    if (description.resizable) flags |= Qt::WindowMaximizeButtonHint;
    pane_.setWindowFlags(flags);
    pane_.setProperty(windowIdProperty, QString::fromStdString(description.id));
    pane_.setWindowTitle(QString::fromStdString(description.title));
    pane_.resize(size);
    if (description.resizable) {
      pane_.setMinimumSize(240, 160);
    } else {
      pane_.setFixedSize(size);
    }
    auto* close = new QAction(&pane_);
    close->setShortcuts(QKeySequence::keyBindings(QKeySequence::Close));
    if (description.escapeCloses) close->setShortcuts(close->shortcuts() << Qt::Key_Escape);
    QObject::connect(close, &QAction::triggered, &pane_, &QWidget::close);
    pane_.addAction(close);
  }

  void show() override { bringToFront(pane_); }
  void center() override { centreOnScreen(pane_); }
  bool isVisible() const override { return pane_.isVisible(); }
  void setTitle(const std::string& title) override {
    pane_.setWindowTitle(QString::fromStdString(title));
  }
  using Window::setText;
  void setText(const std::string& viewId, const SharedText& text, bool concealed) override {
    pane_.setText(viewId, text, concealed);
  }
  SharedText text(const std::string& viewId) const override { return pane_.text(viewId); }
  void focus(const std::string& viewId) override {
    if (QWidget* view = pane_.find(viewId)) view->setFocus();
  }

 private:
  ViewPane pane_;
};

}  // namespace

std::unique_ptr<Window> QtWindows::create(WindowDescription description) {
  return std::make_unique<QtWindow>(std::move(description));
}

std::vector<WindowInfo> QtWindows::visible() const {
  std::vector<WindowInfo> infos;
  for (const QWidget* window : QApplication::topLevelWidgets()) {
    if (!window->isVisible()) continue;
    QString id = window->property(windowIdProperty).toString();
    if (id.isEmpty() && window->inherits("QMenu")) id = "menu";
    if (id.isEmpty()) continue;
    const QRect frame = window->frameGeometry();
    infos.push_back({id.toStdString(),
                     window->windowTitle().toStdString(),
                     {static_cast<double>(frame.x()), static_cast<double>(frame.y()),
                      static_cast<double>(frame.width()), static_cast<double>(frame.height())}});
  }
  return infos;
}

namespace {

// Whether a dialog with that id is open; it is in front then.
bool raiseOpen(const QString& id) {
  for (QWidget* open : QApplication::topLevelWidgets()) {
    if (id.isEmpty() || !open->isVisible() || open->property(alertIdProperty) != id) continue;
    bringToFront(*open);
    return true;
  }
  return false;
}

void presentNow(const Alert& alert, const std::function<void(AlertAnswer)>& answered) {
  const QString id = QString::fromStdString(alert.id);
  if (raiseOpen(id)) return;
  auto* dialog = new QDialog;
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setProperty(windowIdProperty, "alert");
  dialog->setProperty(alertIdProperty, id);
  dialog->setWindowTitle("Marbelot");
  dialog->setModal(true);
  auto* column = new QVBoxLayout(dialog);
  column->setContentsMargins(20, 20, 20, 16);
  column->setSpacing(10);

  auto* message = new QLabel(QString::fromStdString(alert.message));
  QFont bold = message->font();
  bold.setBold(true);
  message->setFont(bold);
  auto* informative = new QLabel(QString::fromStdString(alert.informative));
  for (QLabel* label : {message, informative}) {
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMinimumWidth(380);
    if (label->text().isEmpty()) {
      delete label;
    } else {
      column->addWidget(label);
    }
  }

  ViewPane* accessory = nullptr;
  if (!alert.accessory.empty()) {
    const Rect frame = alert.accessory.front().frame;
    accessory = new ViewPane({frame.width, frame.height}, alert.accessory);
    accessory->setFixedHeight(static_cast<int>(frame.height));
    accessory->setMinimumWidth(static_cast<int>(frame.width));
    column->addWidget(accessory);
  }

  // Answered once, whichever way the dialog ends.
  const auto answer = [alert, answered](std::size_t button, ViewPane* from) {
    answered({button, from ? *from->text(alert.accessory.front().id) : std::string()});
  };
  auto* row = new QHBoxLayout;
  row->addStretch();
  for (std::size_t index = alert.buttons.size(); index-- > 0;) {
    auto* button = new QPushButton(QString::fromStdString(alert.buttons[index]).replace("&", "&&"));
    button->setDefault(index == 0);
    button->setAutoDefault(index == 0);
    row->addWidget(button);
    QObject::connect(button, &QPushButton::clicked, dialog,
                     [dialog, index] { dialog->done(static_cast<int>(index) + 1); });
    if (index == 0) button->setToolTip(plainToolTip(alert.toolTip));
    if (index == 0 && accessory) {
      button->setToolTip(defaultButtonTip());
      auto* press = new QAction(dialog);
      press->setShortcuts({defaultButtonKey, QKeySequence(Qt::CTRL | Qt::Key_Enter)});
      QObject::connect(press, &QAction::triggered, button, &QPushButton::click);
      dialog->addAction(press);
    }
  }
  column->addLayout(row);
  QObject::connect(dialog, &QDialog::finished, dialog,
                   [answer, accessory, last = alert.buttons.size() - 1](int result) {
                     answer(result > 0 ? static_cast<std::size_t>(result) - 1 : last, accessory);
                   });
  dialog->adjustSize();
  dialog->setFixedSize(dialog->size());
  centreOnScreen(*dialog);
  bringToFront(*dialog);
  if (accessory) {
    if (QWidget* text = accessory->find(alert.accessory.front().id)) text->setFocus();
  }
}

}  // namespace

void QtDialogs::chooseFolder(FolderPanel panel,
                             std::function<void(const std::string& folder)> chosen) {
  bus_.whenKnown([panel = std::move(panel), chosen = std::move(chosen)] {
    const QString id = QString::fromStdString(panel.id);
    if (raiseOpen(id)) return;
    auto* dialog = new QFileDialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setProperty(windowIdProperty, "folder");
    dialog->setProperty(alertIdProperty, id);
    dialog->setWindowTitle(QString::fromStdString(panel.message));
    dialog->setLabelText(QFileDialog::Accept, QString::fromStdString(panel.prompt));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setModal(true);
    QObject::connect(dialog, &QFileDialog::accepted, dialog, [dialog, chosen] {
      const QStringList folders = dialog->selectedFiles();
      if (!folders.isEmpty()) chosen(QFile::encodeName(folders.first()).toStdString());
    });
    centreOnScreen(*dialog);
    bringToFront(*dialog);
  });
}

void QtDialogs::present(Alert alert, std::function<void(AlertAnswer)> answered) {
  // Whatever comes on the screen is told to the accessibility bridge, which waits for the bus.
  bus_.whenKnown(
      [alert = std::move(alert), answered = std::move(answered)] { presentNow(alert, answered); });
}

}  // namespace marbelot
