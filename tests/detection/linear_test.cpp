// Searching takes time in proportion to the text, whatever stands in it: counted, not timed.
#include <gtest/gtest.h>

#include <string>

#include "detection/detection.h"
#include "tests/support/work.h"

namespace marbelot {
namespace {

constexpr unsigned all = DetectionKind::link | DetectionKind::phone |
                         static_cast<unsigned>(DetectionKind::address) |
                         static_cast<unsigned>(DetectionKind::date);
constexpr double now = 1795255200;

// Broken UTF-8 and cut sequences too: they must not be read beyond the end, which the sanitizers
// watch.
const char* const pieces[] = {
    "1",           "1 ",      "a.",    "@",       "(((",       "555-0100 ", "12 Main ",
    "a:",          "://",     "aa://", "\xE2",    "\xC2\xA0",  "é.",        "a@a",
    "1.1.1.1 ",    "1st A ",  "may ",  "1-",      "+",         "1:1",       "Apt 1 ",
    "rue 1 ",      "1 rue ",  "\n",    "12, ",    "in 1 ",     "http://a",  "[(",
    "a'",          "3.5.",    "\"a@",  "at 1 ",   "may-",      "1 may to ", "the 1st ",
    "half past ",  "ten to ", "last ", "1 hour ", "Mon ",      "Box 1 ",    "One A ",
    "12 a CA 123", "N1W1 ",   "a b ",  "1 to ",   "first of ", "St. "};

// How much more work eight times the text is. Linear steps give 8, quadratic ones 64.
double growth(const std::string& piece) {
  constexpr std::size_t textBytes = std::size_t{1} << 13;
  const auto work = [&](std::size_t bytes) {
    std::string text;
    while (text.size() < bytes) text += piece;
    const std::uint64_t before = workDone();
    for (const Detection& found : detection::detectAll(text, all, {now, "DE", "de"})) {
      EXPECT_LE(found.range.end(), text.size());
    }
    return static_cast<double>(workDone() - before);
  };
  work(textBytes);  // what is made once
  const double once = work(textBytes);
  return work(8 * textBytes) / once;
}

TEST(DetectionWork, GrowsWithTheText) {
  for (const char* piece : pieces) {
    EXPECT_LT(growth(piece), 14) << piece;
    std::string text;
    while (text.size() < 40) text += piece;
    for (std::size_t length = 0; length < 40; ++length) {
      detection::detectAll(text.substr(0, length), all, {now, "US", "en"});
    }
  }
}

}  // namespace
}  // namespace marbelot
