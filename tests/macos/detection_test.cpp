// The forms in which the seam promises what the system's detector finds.
#include "platform/detection.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace marbelot {
namespace {

constexpr unsigned allKinds = DetectionKind::link | DetectionKind::phone |
                              static_cast<unsigned>(DetectionKind::address) |
                              static_cast<unsigned>(DetectionKind::date);

TEST(SystemDetector, GivesWhatItFindsInThePromisedForms) {
  setenv("TZ", "Europe/Berlin", 1);
  const struct {
    const char *text, *piece, *value;
  } cases[] = {
      {"😀 see example.com/a", "example.com/a", "http://example.com/a"},
      {"ask ann@example.org", "ann@example.org", "mailto:ann@example.org"},
      {"call (415) 555-2671 now", "(415) 555-2671", "+14155552671"},
      {"ring +49 30 901820", "+49 30 901820", "+4930901820"},
      {"1600 Pennsylvania Ave NW,\nWashington, DC 20500", nullptr,
       "1600 Pennsylvania Ave NW, Washington, DC 20500"},
      {"on May 3, 2026", "May 3, 2026", "2026-05-03"},
      {"May 3, 2026 at 12:00", nullptr, "2026-05-03T12:00"},
      {"on 2026-05-03T14:30:05", "2026-05-03T14:30:05", "2026-05-03T14:30:05"},
      {"2026-05-03T14:30-03:30", nullptr, "2026-05-03T14:30-03:30"},
      {"2026-05-03T14:30Z", nullptr, "2026-05-03T14:30Z"},
  };
  for (const auto& [text, piece, value] : cases) {
    const std::vector<Detection> found = detect(text, allKinds);
    ASSERT_EQ(found.size(), 1U) << text;
    EXPECT_EQ(found[0].value, value) << text;
    EXPECT_EQ(std::string(text).substr(found[0].range.start, found[0].range.length),
              piece != nullptr ? piece : text);
    EXPECT_EQ(firstDetection(text, allKinds)->value, value);
  }
  EXPECT_FALSE(firstDetection("nothing but words", allKinds));
}

}  // namespace
}  // namespace marbelot
