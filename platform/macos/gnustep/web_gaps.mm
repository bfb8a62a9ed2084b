// The classes for pages and maps, which GNUstep does not have: views that stay empty, and a
// geocoder that finds nothing.
#import <MapKit/MapKit.h>
#import <WebKit/WebKit.h>

@implementation WKNavigation
@end

@implementation WKWebsiteDataStore
+ (WKWebsiteDataStore*)nonPersistentDataStore {
  return [[self alloc] init];
}
@end

@implementation WKWebViewConfiguration
@end

@implementation WKWebView
- (instancetype)initWithFrame:(NSRect)frame configuration:(WKWebViewConfiguration*)configuration {
  return [super initWithFrame:frame];
}
- (WKNavigation*)loadRequest:(NSURLRequest*)request {
  return nil;
}
@end

@implementation MKPointAnnotation
@end

@implementation MKMapView
- (void)setRegion:(MKCoordinateRegion)region animated:(BOOL)animated {
}
- (void)addAnnotation:(id<MKAnnotation>)annotation {
}
@end

MKCoordinateRegion MKCoordinateRegionMakeWithDistance(CLLocationCoordinate2D center,
                                                      CLLocationDistance, CLLocationDistance) {
  return {center, {}};
}

@implementation CLLocation
@end

@implementation CLPlacemark
@end

@implementation CLGeocoder
- (void)geocodeAddressString:(NSString*)address
           completionHandler:(CLGeocodeCompletionHandler)handler {
  handler(nil, nil);
}
- (void)cancelGeocode {
}
@end
