#import "platform/macos/pictures.h"

#include <algorithm>
#include <cstring>

#include "platform/image_codec.h"

namespace marbelot {
namespace {

constexpr std::int64_t mostBytes = 96 << 20;

NSImage* imageOf(const Bitmap& bitmap) {
  NSBitmapImageRep* const rep =
      [[NSBitmapImageRep alloc] initWithBitmapDataPlanes:nullptr
                                              pixelsWide:bitmap.width()
                                              pixelsHigh:bitmap.height()
                                           bitsPerSample:8
                                         samplesPerPixel:4
                                                hasAlpha:YES
                                                isPlanar:NO
                                          colorSpaceName:NSDeviceRGBColorSpace
                                             bytesPerRow:0
                                            bitsPerPixel:32];
  for (int y = 0; y < bitmap.height(); ++y)
    std::memcpy(rep.bitmapData + rep.bytesPerRow * y, bitmap.row(y),
                static_cast<std::size_t>(bitmap.width()) * Bitmap::pixelBytes);
  NSImage* const image = [[NSImage alloc] initWithSize:NSMakeSize(bitmap.width(), bitmap.height())];
  [image addRepresentation:rep];
  return image;
}

}  // namespace

NSImage* Pictures::ready(const Image& image, NSView* view) {
  const auto found = std::find_if(entries_.begin(), entries_.end(), [&image](const Entry& entry) {
    return entry.image.isSame(image);
  });
  if (found == entries_.end()) {
    entries_.push_front(Entry{image});
  } else {
    entries_.splice(entries_.begin(), entries_, found);
  }
  Entry& entry = entries_.front();
  if (entry.isReady) return entry.made;
  [entry.views addObject:view];
  if (entry.decoding) return nil;
  // The entry stays where it is in memory, and goes with its task.
  entry.decoding = queue_.inBackground([image] { return decode(image); },
                                       [this, &entry](const SharedBitmap& bitmap) {
                                         entry.isReady = true;
                                         if (bitmap) entry.made = imageOf(*bitmap);
                                         for (NSView* waiting in entry.views)
                                           [waiting setNeedsDisplay:YES];
                                         [entry.views removeAllObjects];
                                         trim();
                                       });
  return nil;
}

void Pictures::trim() {
  std::int64_t kept = 0;
  for (auto entry = entries_.begin(); entry != entries_.end();) {
    if (entry->isReady)
      kept += std::int64_t{entry->image.width()} * entry->image.height() * Bitmap::pixelBytes;
    const bool drop = entry->isReady && entry != entries_.begin() && kept > mostBytes;
    entry = drop ? entries_.erase(entry) : std::next(entry);
  }
}

}  // namespace marbelot
