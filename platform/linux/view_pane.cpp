#include "platform/linux/view_pane.h"

#include <QKeyEvent>
#include <algorithm>

#include "platform/linux/canvas_view.h"
#include "platform/linux/default_button.h"
#include "platform/linux/text_view.h"
#include "platform/linux/view_widgets.h"

namespace marbelot {
namespace {

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};

}  // namespace

ViewPane::ViewPane(Size designed, const std::vector<View>& views, PictureCache& pictures,
                   std::function<void(const std::string&)> pressed,
                   std::function<void()> textClicked)
    : ViewBox(designed),
      pictures_(pictures),
      pressed_(std::move(pressed)),
      textClicked_(std::move(textClicked)) {
  resize(static_cast<int>(designed.width), static_cast<int>(designed.height));
  fill(*this, views);
}

void ViewPane::setContent(Size designed, const std::vector<View>& views) {
  for (const Named& named : widgets_)
    if (auto* canvas = dynamic_cast<CanvasView*>(named.widget)) canvas->detach();
  clear();
  widgets_.clear();
  default_ = nullptr;
  setDesigned(designed);
  fill(*this, views);
}

void ViewPane::detach() {
  pressed_ = nullptr;
  textClicked_ = nullptr;
  for (const Named& named : widgets_)
    if (auto* canvas = dynamic_cast<CanvasView*>(named.widget)) canvas->detach();
}

void ViewPane::fill(ViewBox& box, const std::vector<View>& views) {
  for (const View& view : views) {
    QWidget* const widget = make(view);
    box.hold(widget, view.frame, view.resizing);
  }
}

QWidget* ViewPane::make(const View& view) {
  // Its place among the others, before what it holds.
  const std::size_t at = widgets_.size();
  widgets_.push_back({view.id, nullptr});
  const Size size = view.frame.size();
  const auto keep = [this, at, &size](auto* widget) -> QWidget* {
    widget->resize(static_cast<int>(size.width), static_cast<int>(size.height));
    widgets_[at].widget = widget;
    return widget;
  };
  return std::visit(
      Overloaded{
          [&](const Label& label) { return keep(new TextLabel(label)); },
          [&](const Button& button) { return keep(makePressable(view.id, button)); },
          [&](const TextArea& area) { return keep(makeText(area)); },
          [&](const Picture& picture) { return keep(new PictureView(picture.image, pictures_)); },
          [&](const Container& container) {
            auto* const made = new ContainerView(container, size);
            keep(made);
            fill(*made, container.views);
            return static_cast<QWidget*>(made);
          },
          [&](const Canvas& canvas) {
            auto* const made = new CanvasView(canvas.delegate, size, pictures_,
                                              [this](const std::string& id) { return find(id); });
            keep(made);
            fill(*made, canvas.views);
            made->watchMouse();
            return static_cast<QWidget*>(made);
          },
      },
      view.content);
}

QWidget* ViewPane::makeText(const TextArea& area) {
  auto* const text = new TextView(area);
  text->installEventFilter(this);
  text->viewport()->installEventFilter(this);
  return text;
}

QWidget* ViewPane::makePressable(const std::string& id, const Button& described) {
  QAbstractButton* const button = makeButton(described);
  if (described.defaultKey) {
    default_ = button;
    button->setToolTip(defaultButtonTip());
  }
  connect(button, &QAbstractButton::clicked, this, [this, id] {
    // A copy, because the callee may drop the window.
    if (const auto pressed = pressed_) pressed(id);
  });
  return button;
}

bool ViewPane::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::MouseButtonPress && textClicked_) textClicked_();
  const auto* text = dynamic_cast<TextView*>(watched);
  if (event->type() == QEvent::KeyPress && text && !text->keysWait()) {
    const auto* key = static_cast<QKeyEvent*>(event);
    const bool isReturn = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
    if (isReturn && key->modifiers() & Qt::ControlModifier && pressDefault()) return true;
  }
  return ViewBox::eventFilter(watched, event);
}

QWidget* ViewPane::find(const std::string& viewId) const {
  const auto found = std::find_if(widgets_.begin(), widgets_.end(),
                                  [&viewId](const Named& named) { return named.id == viewId; });
  return found == widgets_.end() ? nullptr : found->widget;
}

void ViewPane::setText(const std::string& viewId, const SharedText& text, bool concealed) {
  QWidget* const widget = find(viewId);
  if (auto* view = dynamic_cast<TextView*>(widget)) {
    view->setContents(text, concealed);
  } else if (auto* label = qobject_cast<QLabel*>(widget)) {
    label->setText(QString::fromStdString(*text));
  } else if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
    setButtonTitle(*button, *text);
  }
}

SharedText ViewPane::text(const std::string& viewId) const {
  QWidget* const widget = find(viewId);
  if (auto* view = dynamic_cast<TextView*>(widget)) return view->contents();
  if (const auto* button = qobject_cast<const QAbstractButton*>(widget))
    return share(buttonTitle(*button));
  const auto* label = qobject_cast<const QLabel*>(widget);
  return share(label ? label->text().toStdString() : std::string());
}

bool ViewPane::press(const std::string& viewId) {
  auto* const button = qobject_cast<QAbstractButton*>(find(viewId));
  if (!button || !button->isEnabled()) return false;
  button->click();
  return true;
}

bool ViewPane::pressDefault() {
  if (!default_ || !default_->isEnabled()) return false;
  default_->click();
  return true;
}

std::vector<ButtonInfo> ViewPane::buttons() const {
  std::vector<ButtonInfo> found;
  for (const Named& named : widgets_) {
    if (const auto* button = qobject_cast<const QAbstractButton*>(named.widget))
      found.push_back({named.id, shownTitle(*button), button->isEnabled()});
  }
  return found;
}

std::string ViewPane::viewAt(QPoint position) const {
  const auto contains = [this, position](const QWidget* widget) {
    for (; widget != this; widget = widget->parentWidget())
      if (!widget->rect().contains(widget->mapFrom(this, position))) return false;
    return true;
  };
  const auto found = std::find_if(widgets_.rbegin(), widgets_.rend(), [&](const Named& named) {
    return !named.id.empty() && contains(named.widget);
  });
  return found == widgets_.rend() ? std::string() : found->id;
}

}  // namespace marbelot
