// A huge text of which only the two ends may be looked at: who reads further ends the test.
#pragma once

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace marbelot {

class PartlyReadableText {
 public:
  // `piece` over and over.
  explicit PartlyReadableText(std::string_view piece)
      : data_(static_cast<char*>(
            mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0))) {
    char* const end = data_ + bytes;
    for (char* part : {data_, end - readableBytes})
      if (mprotect(part, readableBytes, PROT_READ | PROT_WRITE) != 0) std::abort();
    for (std::size_t at = 0; at < readableBytes; at += piece.size()) {
      const std::size_t size = std::min(piece.size(), readableBytes - at);
      std::copy_n(piece.data(), size, data_ + at);
      std::copy_n(piece.data() + piece.size() - size, size, end - at - size);
    }
  }
  ~PartlyReadableText() { munmap(data_, bytes); }
  PartlyReadableText(const PartlyReadableText&) = delete;
  PartlyReadableText& operator=(const PartlyReadableText&) = delete;

  std::string_view text() const { return {data_, bytes}; }

 private:
  static constexpr std::size_t bytes = 64u << 20;
  static constexpr std::size_t readableBytes = 64u << 10;  // at each end; whole pages
  char* const data_;
};

}  // namespace marbelot
