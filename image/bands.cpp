#include "image/bands.h"

#include <algorithm>
#include <future>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace marbelot {
namespace {

// Made in the time that it takes to start a thread.
constexpr std::int64_t fewPixels = 1 << 16;
// More do not help where all wait for the memory.
constexpr int mostBands = 4;

int bandsFor(std::int64_t pixels) {
  static const int processors = static_cast<int>(std::thread::hardware_concurrency());
  return pixels < fewPixels ? 1 : std::clamp(processors, 1, mostBands);
}

// None when there is no thread to be had.
std::optional<std::future<void>> onThread(const std::function<void()>& work) {
  try {
    return std::async(std::launch::async, work);
  } catch (const std::system_error&) {
    return std::nullopt;
  }
}

}  // namespace

void inBands(int rows, std::int64_t pixels, const std::function<void(int begin, int end)>& make) {
  const int bands = bandsFor(pixels);
  const auto from = [=](int band) { return static_cast<int>(std::int64_t{rows} * band / bands); };
  std::vector<std::future<void>> others;
  int band = 1;
  for (; band < bands; ++band) {
    auto other = onThread([&make, begin = from(band), end = from(band + 1)] { make(begin, end); });
    if (!other) break;
    others.push_back(std::move(*other));
  }
  make(0, from(1));
  if (band < bands) make(from(band), rows);
  for (std::future<void>& other : others) other.get();
}

}  // namespace marbelot
