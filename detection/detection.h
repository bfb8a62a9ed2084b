// The detectors without a system: what platform/detection.h promises, for a context in which
// nothing is left to be found out. Backends without detectors of their own forward to them; others
// take from here what theirs do not tell.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/detection.h"

namespace marbelot::detection {

std::vector<Detection> detectAll(std::string_view text, unsigned kinds,
                                 const DetectionContext& context);
std::optional<Detection> detectFirst(std::string_view text, unsigned kinds,
                                     const DetectionContext& context);

}  // namespace marbelot::detection
