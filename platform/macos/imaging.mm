// The system's codecs.
#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>

#include <memory>

#include "platform/image_codec.h"
#include "platform/macos/bitmap_image.h"
#include "platform/macos/conversions.h"
#include "platform/macos/drawn_image.h"

namespace marbelot {
namespace {

using Context = std::unique_ptr<CGContext, decltype(&CGContextRelease)>;
using Provider = std::unique_ptr<CGDataProvider, decltype(&CGDataProviderRelease)>;

constexpr std::size_t bitsPerPart = 8;
constexpr std::size_t bitsPerPixel = 32;

// Drawn at its size in pixels, into what is transparent before.
std::optional<Bitmap> drawn(CGImageRef picture) {
  const std::size_t width = CGImageGetWidth(picture);
  const std::size_t height = CGImageGetHeight(picture);
  if (width > Bitmap::maximumSide || height > Bitmap::maximumSide) return std::nullopt;
  std::optional<Bitmap> bitmap =
      Bitmap::makeClear(static_cast<std::int64_t>(width), static_cast<std::int64_t>(height));
  if (!bitmap) return std::nullopt;
  const Context context(
      CGBitmapContextCreate(bitmap->data(), width, height, bitsPerPart, bitmap->bytesPerRow(),
                            sRgb().get(), kCGImageAlphaPremultipliedLast),
      CGContextRelease);
  if (!context) return std::nullopt;
  CGContextSetBlendMode(context.get(), kCGBlendModeCopy);
  CGContextDrawImage(context.get(),
                     NSMakeRect(0, 0, static_cast<CGFloat>(width), static_cast<CGFloat>(height)),
                     picture);
  return bitmap;
}

}  // namespace

ColorSpace sRgb() { return {CGColorSpaceCreateWithName(kCGColorSpaceSRGB), CGColorSpaceRelease}; }

CodedPicture pictureOf(const Bitmap& bitmap) {
  const auto width = static_cast<std::size_t>(bitmap.width());
  const auto height = static_cast<std::size_t>(bitmap.height());
  const Provider provider(
      CGDataProviderCreateWithData(nullptr, bitmap.data(), bitmap.bytesPerRow() * height, nullptr),
      CGDataProviderRelease);
  return {CGImageCreate(width, height, bitsPerPart, bitsPerPixel, bitmap.bytesPerRow(),
                        sRgb().get(), kCGImageAlphaPremultipliedLast, provider.get(), nullptr,
                        false, kCGRenderingIntentDefault),
          CGImageRelease};
}

SharedBitmap decode(const Image& image) {
  if (SharedBitmap pixels = image.pixels()) return pixels;
  const SharedBytes bytes = image.bytes();
  if (bytes == nullptr || !Bitmap::fits(image.width(), image.height())) return nullptr;
  @autoreleasepool {
    // The image object turns a photo upright, and takes an animation's first picture.
    NSImage* const object = [[NSImage alloc] initWithData:nsData(bytes)];
    CGImageRef const picture = [object CGImageForProposedRect:nullptr context:nil hints:nil];
    std::optional<Bitmap> bitmap = picture != nullptr ? drawn(picture) : std::nullopt;
    return bitmap ? std::make_shared<const Bitmap>(*std::move(bitmap)) : nullptr;
  }
}

std::optional<Image> drawnImage(NSImage* image) {
  NSRect all = NSMakeRect(0, 0, image.size.width, image.size.height);
  CGImageRef const picture = [image CGImageForProposedRect:&all context:nil hints:nil];
  if (picture == nullptr) return std::nullopt;
  std::optional<Bitmap> bitmap = drawn(picture);
  if (!bitmap) return std::nullopt;
  return Image::fromPixels(std::make_shared<const Bitmap>(*std::move(bitmap)));
}

SharedBytes encodePng(const Bitmap& bitmap) {
  @autoreleasepool {
    const CodedPicture picture = pictureOf(bitmap);
    if (!picture) return nullptr;
    NSBitmapImageRep* const rep = [[NSBitmapImageRep alloc] initWithCGImage:picture.get()];
    return sharedBytes([rep representationUsingType:NSBitmapImageFileTypePNG properties:@{}]);
  }
}

SharedBytes pngBytes(const Image& image) {
  const SharedBytes bytes = image.bytes();
  if (bytes == nullptr || image.format() == ImageFormat::png) return bytes;
  @autoreleasepool {
    NSBitmapImageRep* bitmap = [NSBitmapImageRep imageRepWithData:nsData(bytes)];
    return sharedBytes([bitmap representationUsingType:NSBitmapImageFileTypePNG properties:@{}]);
  }
}

}  // namespace marbelot
