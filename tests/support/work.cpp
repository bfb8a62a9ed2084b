#include "tests/support/work.h"

#include <cstddef>

namespace marbelot {
namespace {

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): the call has no argument
std::uint64_t steps = 0;

}  // namespace

std::uint64_t workDone() { return steps; }

}  // namespace marbelot

extern "C" {

// The compiler puts a call of this into every stretch of counted code.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): the name it calls
__attribute__((visibility("default"))) void __sanitizer_cov_trace_pc() { ++marbelot::steps; }

// In place of the C library's, whose loops are not counted.
void* memchr(const void* bytes, int wanted, std::size_t size) {
  const auto* at = static_cast<const unsigned char*>(bytes);
  for (std::size_t i = 0; i < size; ++i) {
    ++marbelot::steps;
    if (at[i] == static_cast<unsigned char>(wanted)) return const_cast<unsigned char*>(at + i);
  }
  return nullptr;
}
}
