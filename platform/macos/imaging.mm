// Conversion of images to PNG by AppKit.
#import <AppKit/AppKit.h>

#include "platform/image.h"
#include "platform/macos/conversions.h"

namespace marbelot {

SharedBytes pngBytes(const Image& image) {
  const SharedBytes bytes = image.bytes();
  if (bytes == nullptr || image.format() == ImageFormat::png) return bytes;
  @autoreleasepool {
    NSBitmapImageRep* bitmap = [NSBitmapImageRep imageRepWithData:nsData(bytes)];
    return sharedBytes([bitmap representationUsingType:NSBitmapImageFileTypePNG properties:@{}]);
  }
}

}  // namespace marbelot
