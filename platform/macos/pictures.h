// Images ready to be drawn: decoded off the main thread.
#pragma once

#import <AppKit/AppKit.h>

#include <list>

#include "platform/image.h"
#include "platform/main_queue.h"

namespace marbelot {

// Keeps what was drawn last, up to a limit of bytes.
class Pictures {
 public:
  explicit Pictures(MainQueue& queue) : queue_(queue) {}
  // Nil while it is being decoded, and for one that is damaged; `view` is drawn again when it is
  // there. One point a pixel.
  NSImage* ready(const Image& image, NSView* view);

 private:
  struct Entry {
    Image image;
    NSImage* made = nil;
    bool isReady = false;
    Task decoding{};
    NSHashTable<NSView*>* views = [NSHashTable weakObjectsHashTable];
  };
  void trim();

  MainQueue& queue_;
  std::list<Entry> entries_;  // the one drawn last first
};

}  // namespace marbelot
