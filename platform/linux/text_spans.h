// What the stretches of a document stand for in bytes, as far as that is known.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/value.h"

namespace marbelot {

// A part of a text that somebody keeps alive.
struct TextPart {
  SharedText owner;
  std::string_view bytes;
};

// A text in parts, for the moment when somebody asks for it. It does not change any more.
using TextSnapshot = std::vector<TextPart>;
std::size_t sizeOf(const TextSnapshot& snapshot);
std::string joined(const TextSnapshot& snapshot);

// Follows a document's changes, so that a text of any size can be had at once: only what was
// changed since it was last asked for has to be read from the document. Positions and lengths are
// the document's.
class TextSpans {
 public:
  // Appends the document's text between two positions; the first returns a position not far behind
  // `start`, at most `end`, where a text may well be parted.
  struct Reader {
    std::function<int(int start, int end)> part;
    std::function<void(int start, int end, std::string& text)> append;
  };
  explicit TextSpans(Reader reader) : reader_(std::move(reader)) {}

  void clear() { spans_.clear(), length_ = 0; }
  // A stretch came in, in the place of `removed`, that stands for `part`.
  void inserted(int at, int removed, int length, TextPart part);
  // `removed` gave way to `added`; `length` is what the document has now.
  void changed(int at, int removed, int added, int length);

  TextSnapshot snapshot(int start, int end);
  TextSnapshot snapshot() { return snapshot(0, length_); }

 private:
  struct Span {
    int length = 0;
    TextPart part;  // without an owner when it is not known
  };
  // Into stretches of moderate size, where it is not known what they stand for.
  void part();
  TextPart read(int start, int end) const;

  const Reader reader_;
  std::vector<Span> spans_;
  int length_ = 0;
};

}  // namespace marbelot
