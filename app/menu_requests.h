// The menu and the history for those who are not looking at them: printed, searched and driven from
// the command line.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "clipboard/history_requests.h"
#include "platform/platform.h"
#include "shell/shell.h"

namespace marbelot {

class MenuRequests {
 public:
  // `open` does what opening the menu does: brings it up to date.
  MenuRequests(Platform& platform, const ActionTable& actions, std::shared_ptr<Menu> menu,
               HistoryRequests& history, std::function<void()> open);

  void serve();

 private:
  std::string menu();
  std::string invokeTitles(const std::string& titles);
  std::string invokeAction(const std::string& action, const std::optional<std::string>& object);
  std::string press(const std::string& kind, const std::string& spec);
  std::string windowsJson() const;

  Platform& platform_;
  const ActionTable& actions_;
  const std::shared_ptr<Menu> menu_;
  HistoryRequests& history_;
  const std::function<void()> open_;
};

}  // namespace marbelot
