// Text recognition, from Vision.
#pragma once
#import <AppKit/AppKit.h>
#include <CoreGraphics/CoreGraphics.h>

enum VNRequestTextRecognitionLevel : NSInteger {
  VNRequestTextRecognitionLevelAccurate = 0,
  VNRequestTextRecognitionLevelFast,
};

@interface VNObservation : NSObject
@end

@interface VNRecognizedText : NSObject
@property(readonly, copy) NSString *string;
@end

@interface VNRecognizedTextObservation : VNObservation
- (NSArray<VNRecognizedText *> *)topCandidates:(NSUInteger)maxCandidateCount;
@end

@interface VNRequest : NSObject
@property(readonly, copy) NSArray<VNObservation *> *results;
- (void)cancel;
@end

@interface VNRecognizeTextRequest : VNRequest
@property VNRequestTextRecognitionLevel recognitionLevel;
@property BOOL usesLanguageCorrection;
@end

@interface VNImageRequestHandler : NSObject
- (instancetype)initWithCGImage:(CGImageRef)image options:(NSDictionary *)options;
- (BOOL)performRequests:(NSArray<VNRequest *> *)requests error:(NSError **)error;
@end
