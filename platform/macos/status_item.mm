// The item in the menu bar.
#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>

#include <algorithm>

#include "platform/macos/conversions.h"
#import "platform/macos/menus.h"
#include "platform/macos/services.h"

namespace marbelot {
namespace {

class BarItem final : public StatusItem {
 public:
  explicit BarItem(MainQueue& queue) : queue_(queue) { item_.menu = renderer_.menu; }
  ~BarItem() override { [NSStatusBar.systemStatusBar removeStatusItem:item_]; }
  BarItem(const BarItem&) = delete;
  BarItem& operator=(const BarItem&) = delete;

  bool setSymbol(const std::string& name, const std::string& description) override {
    @autoreleasepool {
      NSString* const spoken = description.empty() ? nil : nsString(description);
      NSImage* const symbol = [NSImage imageWithSystemSymbolName:nsString(name)
                                        accessibilityDescription:spoken];
      if (symbol == nil) return false;
      [symbol setTemplate:YES];
      item_.button.image = symbol;
      item_.button.title = @"";
      return true;
    }
  }

  void setTitle(const std::string& title) override {
    @autoreleasepool {
      item_.button.image = nil;
      item_.button.title = nsString(title);
    }
  }

  void setMenu(std::shared_ptr<Menu> menu, MenuDelegate* delegate) override {
    @autoreleasepool {
      [renderer_ showTree:std::move(menu) delegate:delegate];
    }
  }

  void menuChanged() override {
    @autoreleasepool {
      [renderer_ refresh];
    }
  }

  // From the run loop, as the call lasts until the menu closes.
  void popUpMenu() override {
    pending_ = queue_.after(0, [this] {
      [renderer_.menu popUpMenuPositioningItem:nil atLocation:NSEvent.mouseLocation inView:nil];
    });
  }

  std::optional<Rect> openMenuFrame() const override {
    @autoreleasepool {
      return [renderer_ openFrame];
    }
  }

  // The keys of an open menu come to no monitor. What was pressed last closed it.
  bool wasClosedByKey() const override {
    const auto since = [](CGEventType type) {
      return CGEventSourceSecondsSinceLastEventType(kCGEventSourceStateCombinedSessionState, type);
    };
    return since(kCGEventKeyDown) <
           std::min(since(kCGEventLeftMouseDown), since(kCGEventRightMouseDown));
  }

  // The menu bar is always there.
  void setNoHostHandler(std::function<void()>) override {}

 private:
  MainQueue& queue_;
  NSStatusItem* const item_ =
      [NSStatusBar.systemStatusBar statusItemWithLength:NSVariableStatusItemLength];
  MarbelotMenuRenderer* const renderer_ = [[MarbelotMenuRenderer alloc] init];
  Task pending_;
};

}  // namespace

std::unique_ptr<StatusItem> makeStatusItem(MainQueue& queue) {
  return std::make_unique<BarItem>(queue);
}

}  // namespace marbelot
