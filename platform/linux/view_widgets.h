// The widgets of labels, buttons, pictures and containers.
#pragma once

#include <QAbstractButton>
#include <QLabel>

#include "platform/linux/picture_cache.h"
#include "platform/linux/view_box.h"

namespace marbelot {

// A window may become narrower than the text.
class TextLabel : public QLabel {
 public:
  explicit TextLabel(const Label& label);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  const Label described_;
};

// Without a border, of a bar.
class FlatButton : public QAbstractButton {
 public:
  explicit FlatButton(const Button& button);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  const Button described_;
};

QAbstractButton* makeButton(const Button& described);
void setButtonTitle(QAbstractButton& button, const std::string& title);
std::string buttonTitle(const QAbstractButton& button);
// Its symbol's name where it has no title.
std::string shownTitle(const QAbstractButton& button);

class PictureView : public QWidget {
 public:
  PictureView(Image image, PictureCache& pictures);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  const Image image_;
  PictureCache& pictures_;
};

class ContainerView : public ViewBox {
 public:
  ContainerView(const Container& container, Size size)
      : ViewBox(size), background_(container.background), cornerRadius_(container.cornerRadius) {}

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  const Color background_;
  const double cornerRadius_;
};

}  // namespace marbelot
