// The screens and the pointer.
#import <AppKit/AppKit.h>

#include <cmath>
#include <vector>

#include "platform/macos/services.h"

namespace marbelot {
namespace {

Rect rectOf(NSRect rect) {
  return {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
}

class SystemScreens final : public Screens {
 public:
  SystemScreens() {
    observer_ = [NSNotificationCenter.defaultCenter
        addObserverForName:NSApplicationDidChangeScreenParametersNotification
                    object:nil
                     queue:nil
                usingBlock:^(NSNotification*) {
                  tell();
                }];
  }
  ~SystemScreens() override { [NSNotificationCenter.defaultCenter removeObserver:observer_]; }
  SystemScreens(const SystemScreens&) = delete;
  SystemScreens& operator=(const SystemScreens&) = delete;

  // The first screen is the one whose bottom left corner is the origin.
  std::vector<Screen> all() const override {
    std::vector<Screen> found;
    @autoreleasepool {
      for (NSScreen* screen in NSScreen.screens)
        found.push_back(
            {rectOf(screen.frame), rectOf(screen.visibleFrame), screen.backingScaleFactor});
    }
    return found;
  }

  Point pointer() const override {
    const NSPoint at = NSEvent.mouseLocation;
    // In a screen's uppermost row it is the upper edge, which belongs to the screen above.
    return {at.x, std::nextafter(at.y, at.y - 1)};
  }

  Task onChange(std::function<void()> changed) override {
    const auto token = std::make_shared<char>();
    changed_.emplace_back(token, std::move(changed));
    return Task(token);
  }

 private:
  void tell() {
    std::erase_if(changed_, [](const auto& handler) { return handler.first.expired(); });
    for (const auto& [token, changed] : std::vector(changed_))
      if (token.lock()) changed();
  }

  std::vector<std::pair<std::weak_ptr<void>, std::function<void()>>> changed_;
  id observer_;
};

}  // namespace

std::unique_ptr<Screens> makeScreens() { return std::make_unique<SystemScreens>(); }

}  // namespace marbelot
