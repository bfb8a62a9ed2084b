// GNUstep has no text recogniser: every picture fails, as on a Mac where Vision cannot be had.
#include <Vision/Vision.h>

@implementation VNObservation
@end

@implementation VNRecognizedText
@end

@implementation VNRecognizedTextObservation
- (NSArray<VNRecognizedText*>*)topCandidates:(NSUInteger)maxCandidateCount {
  return @[];
}
@end

@implementation VNRequest
- (void)cancel {
}
@end

@implementation VNRecognizeTextRequest
@end

@implementation VNImageRequestHandler
- (instancetype)initWithCGImage:(CGImageRef)image options:(NSDictionary*)options {
  return [super init];
}
- (BOOL)performRequests:(NSArray<VNRequest*>*)requests error:(NSError**)error {
  return NO;
}
@end
