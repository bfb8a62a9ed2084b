// Keys seen on their way to windows.
#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/keyboard.h"

namespace marbelot {

class GlobalKeys;

class QtKeyMonitors : public QObject, public KeyMonitors {
 public:
  QtKeyMonitors();
  ~QtKeyMonitors() override;
  Task addLocal(std::function<bool(const KeyEvent&)> pressed) override;
  Task addGlobal(std::function<void(const KeyEvent&)> pressed) override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  template <class Handler>
  struct Monitor {
    std::weak_ptr<void> token;
    Handler pressed;
  };
  bool tellLocal(const KeyEvent& event);
  void tellGlobal(const KeyEvent& event);

  std::vector<Monitor<std::function<bool(const KeyEvent&)>>> local_;
  std::vector<Monitor<std::function<void(const KeyEvent&)>>> global_;
  // The key that shortcuts were asked about and that follows as a press, and whether it was taken.
  struct Asked {
    int key;
    quint64 timestamp;
    bool taken;
  };
  std::optional<Asked> asked_;
  std::unique_ptr<GlobalKeys> keys_;  // while somebody listens
};

}  // namespace marbelot
