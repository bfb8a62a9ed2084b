// The views of a window, made from their description.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/linux/picture_cache.h"
#include "platform/linux/view_box.h"
#include "platform/window.h"

class QAbstractButton;

namespace marbelot {

class ViewPane : public ViewBox {
 public:
  // `designed` is the size that the frames are meant for. A text that is clicked asks for the keys.
  ViewPane(Size designed, const std::vector<View>& views, PictureCache& pictures,
           std::function<void(const std::string&)> pressed,
           std::function<void()> textClicked = nullptr);

  void setContent(Size designed, const std::vector<View>& views);
  // Canvases and buttons tell nobody any more.
  void detach();

  QWidget* find(const std::string& viewId) const;
  void setText(const std::string& viewId, const SharedText& text, bool concealed);
  SharedText text(const std::string& viewId) const;
  bool press(const std::string& viewId);
  // Presses the default button; false when there is none that is enabled.
  bool pressDefault();
  std::vector<ButtonInfo> buttons() const;
  // The id of the uppermost view there that has one.
  std::string viewAt(QPoint position) const;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Named {
    std::string id;
    QWidget* widget;
  };
  void fill(ViewBox& box, const std::vector<View>& views);
  QWidget* make(const View& view);
  QWidget* makeText(const TextArea& area);
  QWidget* makePressable(const std::string& id, const Button& described);

  PictureCache& pictures_;
  std::function<void(const std::string&)> pressed_;
  std::function<void()> textClicked_;
  std::vector<Named> widgets_;  // what holds views before what it holds
  QAbstractButton* default_ = nullptr;
};

}  // namespace marbelot
