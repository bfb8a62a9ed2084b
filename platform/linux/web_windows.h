// Windows on the web, in processes of their own: what the web sends never comes near the clipboard.
#pragma once

#include "platform/web_windows.h"

namespace marbelot {

class HelperWebWindows : public WebWindows {
 public:
  std::unique_ptr<WebWindow> open(WebWindowDescription description) override;
};

}  // namespace marbelot
