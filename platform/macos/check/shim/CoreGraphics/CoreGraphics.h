// What the macOS sources use of CoreGraphics. Declarations only, by the documented API.
#pragma once
#include <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>

typedef NSRect CGRect;
typedef struct CGColorSpace *CGColorSpaceRef;
typedef struct CGDataProvider *CGDataProviderRef;
typedef void (*CGDataProviderReleaseDataCallback)(void *info, const void *data, size_t size);

enum CGImageAlphaInfo : uint32_t { kCGImageAlphaPremultipliedLast = 1 };
enum CGColorRenderingIntent : int32_t { kCGRenderingIntentDefault };
enum CGBlendMode : int32_t { kCGBlendModeCopy = 17 };

enum CGWindowListOption : uint32_t {
  kCGWindowListOptionOnScreenOnly = 1 << 0,
  kCGWindowListExcludeDesktopElements = 1 << 4,
};
typedef uint32_t CGWindowID;
constexpr CGWindowID kCGNullWindowID = 0;
typedef int32_t CGWindowLevel;
enum CGWindowLevelKey : int32_t { kCGPopUpMenuWindowLevelKey = 11 };

enum CGEventSourceStateID : int32_t { kCGEventSourceStateCombinedSessionState = 0 };
enum CGEventType : uint32_t {
  kCGEventLeftMouseDown = 1,
  kCGEventRightMouseDown = 3,
  kCGEventKeyDown = 10,
};

extern "C" {
CFTimeInterval CGEventSourceSecondsSinceLastEventType(CGEventSourceStateID, CGEventType);
extern const CFStringRef kCGWindowOwnerPID;
extern const CFStringRef kCGWindowLayer;
extern const CFStringRef kCGWindowNumber;
extern const CFStringRef kCGWindowBounds;
bool CGPreflightScreenCaptureAccess(void);
bool CGRequestScreenCaptureAccess(void);
CGWindowLevel CGWindowLevelForKey(CGWindowLevelKey);
CFArrayRef CGWindowListCopyWindowInfo(uint32_t options, CGWindowID relativeTo);
extern const CFStringRef kCGColorSpaceSRGB;
CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef);
void CGColorSpaceRelease(CGColorSpaceRef);
CGContextRef CGBitmapContextCreate(void *data, size_t width, size_t height, size_t bitsPerComponent,
                                   size_t bytesPerRow, CGColorSpaceRef, uint32_t bitmapInfo);
void CGContextRelease(CGContextRef);
void CGContextSetBlendMode(CGContextRef, CGBlendMode);
void CGContextDrawImage(CGContextRef, CGRect, CGImageRef);
size_t CGImageGetWidth(CGImageRef);
size_t CGImageGetHeight(CGImageRef);
void CGImageRelease(CGImageRef);
CGDataProviderRef CGDataProviderCreateWithData(void *info, const void *data, size_t size,
                                               CGDataProviderReleaseDataCallback);
void CGDataProviderRelease(CGDataProviderRef);
CGImageRef CGImageCreate(size_t width, size_t height, size_t bitsPerComponent, size_t bitsPerPixel,
                         size_t bytesPerRow, CGColorSpaceRef, uint32_t bitmapInfo,
                         CGDataProviderRef, const CGFloat *decode, bool interpolate,
                         CGColorRenderingIntent);
}
