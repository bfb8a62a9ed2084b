// Link previews and maps.
#import <AppKit/AppKit.h>
#import <CoreLocation/CoreLocation.h>
#import <MapKit/MapKit.h>
#import <WebKit/WebKit.h>

#include <utility>

#include "platform/macos/conversions.h"
#include "platform/macos/services.h"

@interface MarbelotWebWindow : NSWindow
@property(nonatomic, copy) void (^closedHandler)(void);
@end

@implementation MarbelotWebWindow
- (void)close {
  [super close];
  void (^const handler)(void) = self.closedHandler;
  self.closedHandler = nil;
  if (handler != nil) handler();
}
@end

namespace marbelot {
namespace {

constexpr NSTimeInterval patience = 60;
constexpr CLLocationDistance mapMetres = 1200;  // from one side to the other

WKWebView* pageView(const std::string& url, NSRect frame) {
  WKWebViewConfiguration* const configuration = [[WKWebViewConfiguration alloc] init];
  // Nothing of what is looked at stays behind.
  configuration.websiteDataStore = [WKWebsiteDataStore nonPersistentDataStore];
  WKWebView* const view = [[WKWebView alloc] initWithFrame:frame configuration:configuration];
  NSURL* const link = [NSURL URLWithString:nsString(url)];
  if (link != nil)
    [view loadRequest:[NSURLRequest requestWithURL:link
                                       cachePolicy:NSURLRequestUseProtocolCachePolicy
                                   timeoutInterval:patience]];
  return view;
}

void showPlace(MKMapView* map, CLPlacemark* place) {
  const CLLocationCoordinate2D at = place.location.coordinate;
  [map setRegion:MKCoordinateRegionMakeWithDistance(at, mapMetres, mapMetres) animated:YES];
  MKPointAnnotation* const mark = [[MKPointAnnotation alloc] init];
  mark.coordinate = at;
  mark.title = place.name;
  [map addAnnotation:mark];
}

class AppKitWebWindow final : public WebWindow {
 public:
  explicit AppKitWebWindow(WebWindowDescription description) {
    const NSRect frame =
        NSMakeRect(0, 0, description.contentSize.width, description.contentSize.height);
    window_ = [[MarbelotWebWindow alloc]
        initWithContentRect:frame
                  styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable |
                            NSWindowStyleMaskMiniaturizable | NSWindowStyleMaskResizable
                    backing:NSBackingStoreBuffered
                      defer:NO];
    window_.releasedWhenClosed = NO;
    window_.title = nsString(description.title);
    NSView* view = nil;
    if (description.kind == WebWindowDescription::Kind::map) {
      MKMapView* const map = [[MKMapView alloc] initWithFrame:frame];
      find(nsString(description.subject), map, nsString(description.notFoundTitle));
      view = map;
    } else {
      view = pageView(description.subject, frame);
    }
    view.autoresizingMask = NSViewWidthSizable | NSViewHeightSizable;
    [window_.contentView addSubview:view];
    const auto closed = std::move(description.closed);
    window_.closedHandler = ^{
      if (closed) closed("");
    };
    [window_ center];
    [NSApp activateIgnoringOtherApps:YES];
    [window_ makeKeyAndOrderFront:nil];
  }
  ~AppKitWebWindow() override {
    [geocoder_ cancelGeocode];
    window_.closedHandler = nil;
    [window_ close];
  }
  AppKitWebWindow(const AppKitWebWindow&) = delete;
  AppKitWebWindow& operator=(const AppKitWebWindow&) = delete;

 private:
  void find(NSString* address, MKMapView* map, NSString* notFoundTitle) {
    geocoder_ = [[CLGeocoder alloc] init];
    NSWindow* __weak const window = window_;
    [geocoder_ geocodeAddressString:address
                  completionHandler:^(NSArray<CLPlacemark*>* places, NSError*) {
                    CLPlacemark* const first = places.firstObject;
                    if (first.location != nil) {
                      showPlace(map, first);
                    } else {
                      window.title = notFoundTitle;
                    }
                  }];
  }

  MarbelotWebWindow* window_;
  CLGeocoder* geocoder_ = nil;
};

class AppKitWebWindows final : public WebWindows {
 public:
  std::unique_ptr<WebWindow> open(WebWindowDescription description) override {
    @autoreleasepool {
      return std::make_unique<AppKitWebWindow>(std::move(description));
    }
  }
};

}  // namespace

std::unique_ptr<WebWindows> makeWebWindows() { return std::make_unique<AppKitWebWindows>(); }

}  // namespace marbelot
