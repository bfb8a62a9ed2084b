// Data detection by the program's own detectors, for this user and this moment.
#include "detection/detection.h"

#include "platform/locale.h"

namespace marbelot {
namespace {

DetectionContext filled(DetectionContext context) {
  if (context.now == 0) context.now = text::now();
  if (context.region.empty()) context.region = locale::region();
  if (context.language.empty()) context.language = locale::language();
  return context;
}

}  // namespace

std::vector<Detection> detect(std::string_view text, unsigned kinds,
                              const DetectionContext& context) {
  return detection::detectAll(text, kinds, filled(context));
}

std::optional<Detection> firstDetection(std::string_view text, unsigned kinds,
                                        const DetectionContext& context) {
  return detection::detectFirst(text, kinds, filled(context));
}

}  // namespace marbelot
