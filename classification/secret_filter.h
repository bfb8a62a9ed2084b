// The fast half of the secret scanner: passes over a text and names the few places where a secret
// could begin. It may name a place in vain; it never misses one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace marbelot::secret_filter {

// The text is looked at in steps of 64 bytes.
inline constexpr std::size_t stepBytes = 64;

// A long hexadecimal run has no rare bytes to look for. Eight bytes are sampled every 32 instead: a
// run of 40 holds at least one such sample, wherever it begins.
inline constexpr std::size_t hexStride = 32;
inline constexpr std::size_t hexSampleBytes = 8;

// Whether the bytes `a`, `b`, `c` that follow one another are an anchor: a few bytes that are rare
// in prose and in source code, and that every literal prefix of a secret holds somewhere. T is a
// character, or a vector of characters, of which it then answers for every lane.
template <typename T>
constexpr auto isAnchor(T a, T b, T c) {
  return ((a == 'y') & (b == 'J')) |                                  // eyJ
         ((a == 'k') & ((b == '-') |                                  // sk-
                        ((b == '_') & ((c == 'l') | (c == 't'))))) |  // sk_live_ sk_test_
         ((a == 'h') & ((c == '_') | (c == 'b'))) |                   // ghp_ github_pat_
         ((a == 'I') & ((b == 'A') | (b == 'z'))) |                   // AKIA AIza
         ((a == 'a') & (b == '2')) |                                  // ya29.
         ((a == 'x') & (b == 'o'));                                   // xoxb-
}

struct Step {
  std::size_t at = 0;            // its first byte; the size of the text when there is no such step
  std::uint64_t anchors = 0;     // bit i: an anchor begins at byte at + i
  std::uint32_t hexSamples = 0;  // bit i: the sample at byte at + i * hexStride is hexadecimal
};

// The first step that holds anything, of those that begin at `from` (a multiple of stepBytes).
Step nextStep(std::string_view text, std::size_t from);

}  // namespace marbelot::secret_filter
