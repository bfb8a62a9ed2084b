// The little of CoreGraphics that the codecs call, over GNUstep's image representations: pictures
// of eight bits a part, drawn at their own size.
#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>
#include <objc/runtime.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <vector>

// Rows of red, green, blue and alpha, premultiplied, without gaps.
struct CGImage {
  std::size_t width;
  std::size_t height;
  std::vector<std::uint8_t> pixels;
};

struct CGContext {
  std::uint8_t* data;
  std::size_t width;
  std::size_t height;
  std::size_t bytesPerRow;
};

struct CGDataProvider {
  const std::uint8_t* data;
};

struct CGColorSpace {};

namespace {

std::uint8_t times(unsigned part, unsigned alpha) {
  return static_cast<std::uint8_t>((part * alpha + 127) / 255);
}

// Null for what is not in eight bits a part.
CGImage* imageOf(NSBitmapImageRep* rep) {
  const auto samples = static_cast<std::size_t>(rep.samplesPerPixel);
  if (rep == nil || rep.bitsPerSample != 8 || rep.isPlanar || samples > 4) return nullptr;
  auto* const image = new CGImage{
      static_cast<std::size_t>(rep.pixelsWide), static_cast<std::size_t>(rep.pixelsHigh), {}};
  image->pixels.resize(image->width * image->height * 4);
  const bool premultiplied = (rep.bitmapFormat & NSAlphaNonpremultipliedBitmapFormat) == 0;
  for (std::size_t y = 0; y < image->height; ++y) {
    const std::uint8_t* from = rep.bitmapData + y * static_cast<std::size_t>(rep.bytesPerRow);
    std::uint8_t* to = &image->pixels[y * image->width * 4];
    for (std::size_t x = 0; x < image->width; ++x, from += samples, to += 4) {
      const unsigned alpha = rep.hasAlpha ? from[samples - 1] : 255;
      for (std::size_t part = 0; part < 3; ++part) {
        const unsigned value = from[samples < 3 ? 0 : part];
        to[part] = premultiplied ? static_cast<std::uint8_t>(value) : times(value, alpha);
      }
      to[3] = static_cast<std::uint8_t>(alpha);
    }
  }
  return image;
}

}  // namespace

const CFStringRef kCGColorSpaceSRGB = (__bridge CFStringRef) @"kCGColorSpaceSRGB";

CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef) { return new CGColorSpace; }
void CGColorSpaceRelease(CGColorSpaceRef space) { delete space; }

CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height, std::size_t,
                                   std::size_t bytesPerRow, CGColorSpaceRef, std::uint32_t) {
  return new CGContext{static_cast<std::uint8_t*>(data), width, height, bytesPerRow};
}
void CGContextRelease(CGContextRef context) { delete context; }
void CGContextSetBlendMode(CGContextRef, CGBlendMode) {}
void CGContextDrawImage(CGContextRef context, CGRect, CGImageRef image) {
  for (std::size_t y = 0; y < std::min(context->height, image->height); ++y)
    std::copy_n(&image->pixels[y * image->width * 4], std::min(context->width, image->width) * 4,
                context->data + y * context->bytesPerRow);
}

std::size_t CGImageGetWidth(CGImageRef image) { return image->width; }
std::size_t CGImageGetHeight(CGImageRef image) { return image->height; }
void CGImageRelease(CGImageRef image) { delete image; }

CGDataProviderRef CGDataProviderCreateWithData(void*, const void* data, std::size_t,
                                               CGDataProviderReleaseDataCallback) {
  return new CGDataProvider{static_cast<const std::uint8_t*>(data)};
}
void CGDataProviderRelease(CGDataProviderRef provider) { delete provider; }

CGImageRef CGImageCreate(std::size_t width, std::size_t height, std::size_t, std::size_t,
                         std::size_t bytesPerRow, CGColorSpaceRef, std::uint32_t,
                         CGDataProviderRef provider, const CGFloat*, bool, CGColorRenderingIntent) {
  auto* const image = new CGImage{width, height, {}};
  for (std::size_t y = 0; y < height; ++y)
    image->pixels.insert(image->pixels.end(), provider->data + y * bytesPerRow,
                         provider->data + y * bytesPerRow + width * 4);
  return image;
}

@implementation NSBitmapImageRep (MarbelotGaps)
// Not premultiplied, as PNG stores it: GNUstep writes what it has.
- (instancetype)initWithCGImage:(CGImageRef)image {
  self = [self initWithBitmapDataPlanes:nullptr
                             pixelsWide:static_cast<NSInteger>(image->width)
                             pixelsHigh:static_cast<NSInteger>(image->height)
                          bitsPerSample:8
                        samplesPerPixel:4
                               hasAlpha:YES
                               isPlanar:NO
                         colorSpaceName:NSDeviceRGBColorSpace
                           bitmapFormat:NSAlphaNonpremultipliedBitmapFormat
                            bytesPerRow:static_cast<NSInteger>(image->width * 4)
                           bitsPerPixel:32];
  if (self == nil) return nil;
  std::uint8_t* to = self.bitmapData;
  for (std::size_t at = 0; at < image->pixels.size(); ++at) {
    const unsigned alpha = image->pixels[at | 3];
    const unsigned part = image->pixels[at];
    to[at] = static_cast<std::uint8_t>(
        at % 4 == 3 || alpha == 0 ? part : (part * 255 + alpha / 2) / alpha);
  }
  return self;
}
@end

@interface GapPicture : NSObject {
 @public
  CGImage* image;
}
@end

@implementation GapPicture
- (void)dealloc {
  delete image;
}
@end

// The picture lasts as long as the object that it is of.
@implementation NSImage (MarbelotPictures)
- (CGImageRef)CGImageForProposedRect:(NSRect*)rect
                             context:(NSGraphicsContext*)context
                               hints:(NSDictionary*)hints {
  static char key;
  for (NSImageRep* rep in self.representations) {
    if (![rep isKindOfClass:[NSBitmapImageRep class]]) continue;
    GapPicture* const picture = [[GapPicture alloc] init];
    picture->image = imageOf((NSBitmapImageRep*)rep);
    objc_setAssociatedObject(self, &key, picture, OBJC_ASSOCIATION_RETAIN);
    return picture->image;
  }
  return nullptr;
}
@end

// No key closes a menu here.
CFTimeInterval CGEventSourceSecondsSinceLastEventType(CGEventSourceStateID, CGEventType type) {
  return type == kCGEventKeyDown ? 1 : 0;
}

// Nobody is asked for leave here.
bool CGPreflightScreenCaptureAccess(void) { return true; }
bool CGRequestScreenCaptureAccess(void) { return true; }

// The window server's list, as far as menus are looked for: those of this program that are open,
// the one opened last first.
const CFStringRef kCGWindowOwnerPID = (__bridge CFStringRef) @"kCGWindowOwnerPID";
const CFStringRef kCGWindowLayer = (__bridge CFStringRef) @"kCGWindowLayer";
const CFStringRef kCGWindowNumber = (__bridge CFStringRef) @"kCGWindowNumber";
const CFStringRef kCGWindowBounds = (__bridge CFStringRef) @"kCGWindowBounds";

CGWindowLevel CGWindowLevelForKey(CGWindowLevelKey) { return NSPopUpMenuWindowLevel; }

CFArrayRef CGWindowListCopyWindowInfo(uint32_t, CGWindowID) {
  NSScreen* const first = NSScreen.screens.firstObject;
  const CGFloat top = NSMaxY(first.frame);
  NSMutableArray* const found = [NSMutableArray array];
  for (NSWindow* window in NSApp.windows) {
    if (!window.isVisible || window.level != NSPopUpMenuWindowLevel) continue;
    const NSRect frame = window.frame;
    [found insertObject:@{
      @"kCGWindowOwnerPID" : @(getpid()),
      @"kCGWindowLayer" : @(window.level),
      @"kCGWindowBounds" : @{
        @"X" : @(NSMinX(frame)),
        @"Y" : @(top - NSMaxY(frame)),
        @"Width" : @(NSWidth(frame)),
        @"Height" : @(NSHeight(frame))
      }
    }
                atIndex:0];
  }
  return (__bridge_retained CFArrayRef)found;
}
