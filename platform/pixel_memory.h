// The memory of bitmaps. A fresh buffer of a screenshot's size costs several times as much as
// copying it, for the system clears every page when it is first touched; so buffers are kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace marbelot {

// How much is kept for the next bitmaps, in bytes; the oldest goes first.
inline constexpr std::size_t keptPixelMemoryLimit = std::size_t{256} << 20;

// `bytes` of memory, at least 1, aligned to 64, holding whatever was there before. It goes back
// when the last owner lets go, on whatever thread. Null when there is not enough. Any thread.
std::shared_ptr<std::uint8_t> pixelMemory(std::size_t bytes);

// What is kept at the moment and in use by nobody, in bytes.
std::size_t keptPixelMemory();

// Gives to the system what is kept since before the last call: called at intervals, it leaves
// nothing of pictures that are not worked on any more. Any thread.
void releaseIdlePixelMemory();

}  // namespace marbelot
