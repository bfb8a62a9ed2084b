#include "platform/pixel_memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <vector>

namespace marbelot {
namespace {

// Anything smaller is quick to get from the heap.
constexpr std::size_t smallestKept = std::size_t{256} << 10;
// The large pages of today's processors: a buffer made of them has few page faults.
constexpr std::size_t hugePage = std::size_t{2} << 20;
constexpr std::align_val_t heapAlignment{64};

constexpr std::size_t roundedUp(std::size_t bytes, std::size_t unit) {
  return (bytes + unit - 1) / unit * unit;
}

struct Buffer {
  std::uint8_t* address = nullptr;
  std::size_t bytes = 0;
  bool isIdle = false;  // kept, and not wanted for a while
};

// Mapped, so that it truly goes back to the system; aligned to huge pages.
Buffer mapped(std::size_t bytes) {
  const std::size_t size = roundedUp(bytes, hugePage);
  void* at =
      ::mmap(nullptr, size + hugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANON, -1, 0);
  if (at == MAP_FAILED) return {};
  auto* start = static_cast<std::uint8_t*>(at);
  const std::size_t before = roundedUp(reinterpret_cast<std::uintptr_t>(start), hugePage) -
                             reinterpret_cast<std::uintptr_t>(start);
  if (before > 0) ::munmap(start, before);
  if (before < hugePage) ::munmap(start + before + size, hugePage - before);
#ifdef MADV_HUGEPAGE
  ::madvise(start + before, size, MADV_HUGEPAGE);
#endif
  return {start + before, size};
}

class Pool {
 public:
  // No buffer is smaller than a huge page, so that there is room for all without asking for more.
  Pool() { kept_.reserve(keptPixelMemoryLimit / hugePage); }

  // The kept buffer that fits best, else a new one; never one of more than twice the size.
  Buffer take(std::size_t bytes) {
    {
      const std::lock_guard lock(mutex_);
      auto best = kept_.end();
      for (auto it = kept_.begin(); it != kept_.end(); ++it) {
        const bool suits = it->bytes >= bytes && it->bytes / 2 <= std::max(bytes, hugePage);
        if (suits && (best == kept_.end() || it->bytes <= best->bytes)) best = it;
      }
      if (best != kept_.end()) {
        const Buffer found = *best;
        kept_.erase(best);
        keptBytes_ -= found.bytes;
        return found;
      }
    }
    return mapped(bytes);
  }

  // Does not throw.
  void giveBack(Buffer buffer) {
    if (buffer.bytes > keptPixelMemoryLimit) return unmap(buffer);
    const std::lock_guard lock(mutex_);
    while (keptBytes_ + buffer.bytes > keptPixelMemoryLimit) dropOldest();
    buffer.isIdle = false;
    kept_.push_back(buffer);
    keptBytes_ += buffer.bytes;
  }

  void releaseIdle() {
    const std::lock_guard lock(mutex_);
    // In the order in which they came back, so the idle ones are in front.
    while (!kept_.empty() && kept_.front().isIdle) dropOldest();
    for (Buffer& buffer : kept_) buffer.isIdle = true;
  }

  std::size_t keptBytes() const {
    const std::lock_guard lock(mutex_);
    return keptBytes_;
  }

 private:
  static void unmap(const Buffer& buffer) { ::munmap(buffer.address, buffer.bytes); }

  void dropOldest() {
    unmap(kept_.front());
    keptBytes_ -= kept_.front().bytes;
    kept_.erase(kept_.begin());
  }

  mutable std::mutex mutex_;
  std::vector<Buffer> kept_;  // in the order in which they came back
  std::size_t keptBytes_ = 0;
};

// Never destroyed: bitmaps may outlive whatever a program destroys at its end.
Pool& pool() {
  static Pool& instance = *new Pool;
  return instance;
}

// With the address sanitizer every buffer is exact, so that it sees what is read beyond the end.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool keepsBuffers = false;
#elif defined(__has_feature)
constexpr bool keepsBuffers = !__has_feature(address_sanitizer);
#else
constexpr bool keepsBuffers = true;
#endif

}  // namespace

std::shared_ptr<std::uint8_t> pixelMemory(std::size_t bytes) {
  if (!keepsBuffers || bytes < smallestKept) {
    auto* at = static_cast<std::uint8_t*>(::operator new(bytes, heapAlignment, std::nothrow));
    if (!at) return nullptr;
    return {at, [](std::uint8_t* memory) { ::operator delete(memory, heapAlignment); }};
  }
  const Buffer buffer = pool().take(bytes);
  if (!buffer.address) return nullptr;
  return {buffer.address, [buffer](std::uint8_t*) { pool().giveBack(buffer); }};
}

std::size_t keptPixelMemory() { return pool().keptBytes(); }

void releaseIdlePixelMemory() { pool().releaseIdle(); }

}  // namespace marbelot
