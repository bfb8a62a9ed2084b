// Text recognition by Vision.
#include "platform/text_recognizer.h"

#include <Vision/Vision.h>
#include <dispatch/dispatch.h>

#include <memory>
#include <utility>

#include "platform/macos/bitmap_image.h"
#include "platform/macos/conversions.h"
#include "platform/macos/services.h"

namespace marbelot {
namespace {

VNRecognizeTextRequest* makeRequest() {
  VNRecognizeTextRequest* const request = [[VNRecognizeTextRequest alloc] init];
  request.recognitionLevel = VNRequestTextRecognitionLevelAccurate;
  request.usesLanguageCorrection = YES;
  return request;
}

Recognition performed(VNRecognizeTextRequest* request, const Bitmap& bitmap) {
  @autoreleasepool {
    const CodedPicture picture = pictureOf(bitmap);
    if (!picture) return {};
    VNImageRequestHandler* const handler =
        [[VNImageRequestHandler alloc] initWithCGImage:picture.get() options:@{}];
    NSError* error = nil;
    if (![handler performRequests:@[ request ] error:&error]) return {};
    Recognition result{Recognition::Outcome::read, {}, {}};
    for (VNObservation* observation in request.results) {
      if (![observation isKindOfClass:[VNRecognizedTextObservation class]]) continue;
      VNRecognizedTextObservation* const line =
          static_cast<VNRecognizedTextObservation*>(observation);
      VNRecognizedText* const best = [line topCandidates:1].firstObject;
      if (best != nil) result.lines.push_back(utf8(best.string));
    }
    return result;
  }
}

// Dropped, it cancels the request, and whoever waits hears no more of it.
struct Reading {
  VNRecognizeTextRequest* request;
  ~Reading() { [request cancel]; }
};

class VisionRecognizer final : public TextRecognizer {
 public:
  explicit VisionRecognizer(MainQueue& queue) : queue_(queue) {}

  Task recognize(SharedBitmap picture, std::function<void(Recognition)> then) override {
    VNRecognizeTextRequest* const request = makeRequest();
    const auto reading = std::make_shared<Reading>(Reading{request});
    const std::weak_ptr<Reading> alive = reading;
    MainQueue& queue = queue_;
    dispatch_async(dispatch_get_global_queue(QOS_CLASS_USER_INITIATED, 0), ^{
      Recognition result = performed(request, *picture);
      queue.post([alive, then, result] {
        if (alive.lock()) then(result);
      });
    });
    return Task(reading);
  }

 private:
  MainQueue& queue_;
};

}  // namespace

Recognition recognizedText(const Bitmap& picture) { return performed(makeRequest(), picture); }

std::unique_ptr<TextRecognizer> makeTextRecognizer(MainQueue& queue) {
  return std::make_unique<VisionRecognizer>(queue);
}

}  // namespace marbelot
