#include "platform/fast_path.h"

#include <atomic>
#include <cstring>

namespace marbelot {
namespace {

// How many a test has; operations on all threads ask. NOLINTNEXTLINE(*-avoid-non-const-global-*)
std::atomic<int> plainOnly{0};

void copyPlain(const std::uint8_t* from, std::uint8_t* to, std::int64_t count) {
  std::memcpy(to, from, static_cast<std::size_t>(count) * 4);
}

#ifdef MARBELOT_AVX2
struct Copied {
  const std::uint8_t* from;
  MARBELOT_AVX2_INLINE __m256i operator()(std::int64_t i) const { return loadPixels(from + 4 * i); }
};

MARBELOT_AVX2 void copyFast(const std::uint8_t* from, std::uint8_t* to, std::int64_t count) {
  if (count < vectorPixels) return copyPlain(from, to, count);
  streamPixels(to, count, Copied{from});
}
#endif

}  // namespace

PlainPathOnly::PlainPathOnly() { ++plainOnly; }
PlainPathOnly::~PlainPathOnly() { --plainOnly; }

bool usesFastPath() {
#ifdef MARBELOT_AVX2
  static const bool supported = __builtin_cpu_supports("avx2");
  return supported && plainOnly.load(std::memory_order_relaxed) == 0;
#else
  return false;
#endif
}

void finishStreaming() {
#ifdef MARBELOT_AVX2
  _mm_sfence();
#endif
}

void copyPixels(const std::uint8_t* from, std::uint8_t* to, std::int64_t count) {
  MARBELOT_FASTEST(copyPlain, copyFast)(from, to, count);
}

}  // namespace marbelot
