// Windows and alerts made from their descriptions.
#pragma once

#include <QWidget>
#include <map>
#include <vector>

#include "platform/linux/session_bus.h"
#include "platform/window.h"

namespace marbelot {

// Lays its views out as described: frames in points with the origin at the bottom left, and each
// view following the growth of the pane on the sides that are flexible.
class ViewPane : public QWidget {
 public:
  // `designed` is the size that the frames are meant for; `closed` is called when the pane, as a
  // window, was closed.
  ViewPane(Size designed, std::vector<View> views,
           std::function<void(const std::string&)> pressed = nullptr,
           std::function<void()> closed = nullptr);

  QWidget* find(const std::string& viewId) const;
  void setText(const std::string& viewId, const SharedText& text, bool concealed);
  SharedText text(const std::string& viewId) const;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWidget* make(const View& view);
  const Size designed_;
  const std::vector<View> views_;
  const std::function<void(const std::string&)> pressed_;
  const std::function<void()> closed_;
  std::map<std::string, QWidget*> widgets_;
};

class QtWindows : public Windows {
 public:
  std::unique_ptr<Window> create(WindowDescription description) override;
  std::vector<WindowInfo> visible() const override;
};

class QtDialogs : public Dialogs {
 public:
  explicit QtDialogs(SessionBus& bus) : bus_(bus) {}
  void present(Alert alert, std::function<void(AlertAnswer)> answered) override;
  void chooseFolder(FolderPanel panel,
                    std::function<void(const std::string& folder)> chosen) override;

 private:
  SessionBus& bus_;
};

}  // namespace marbelot
