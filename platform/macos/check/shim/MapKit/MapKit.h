// What the macOS sources use of MapKit. Declarations only, by the documented API.
#pragma once
#import <AppKit/AppKit.h>
#import <CoreLocation/CoreLocation.h>

struct MKCoordinateSpan {
  double latitudeDelta, longitudeDelta;
};
struct MKCoordinateRegion {
  CLLocationCoordinate2D center;
  MKCoordinateSpan span;
};
extern "C" MKCoordinateRegion MKCoordinateRegionMakeWithDistance(CLLocationCoordinate2D center,
                                                                 CLLocationDistance northSouth,
                                                                 CLLocationDistance eastWest);

@protocol MKAnnotation <NSObject>
@property(readonly) CLLocationCoordinate2D coordinate;
@end

@interface MKPointAnnotation : NSObject <MKAnnotation>
@property CLLocationCoordinate2D coordinate;
@property(copy) NSString *title;
@end

@interface MKMapView : NSView
- (void)setRegion:(MKCoordinateRegion)region animated:(BOOL)animated;
- (void)addAnnotation:(id<MKAnnotation>)annotation;
@end
