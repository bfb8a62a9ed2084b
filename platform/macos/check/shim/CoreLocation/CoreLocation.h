// What the macOS sources use of CoreLocation. Declarations only, by the documented API.
#pragma once
#import <Foundation/Foundation.h>

typedef double CLLocationDistance;
struct CLLocationCoordinate2D {
  double latitude, longitude;
};

@interface CLLocation : NSObject
@property(readonly) CLLocationCoordinate2D coordinate;
@end

@interface CLPlacemark : NSObject
@property(readonly, copy) CLLocation *location;
@property(readonly, copy) NSString *name;
@end

typedef void (^CLGeocodeCompletionHandler)(NSArray<CLPlacemark *> *places, NSError *error);

@interface CLGeocoder : NSObject
- (void)geocodeAddressString:(NSString *)address
           completionHandler:(CLGeocodeCompletionHandler)handler;
- (void)cancelGeocode;
@end
