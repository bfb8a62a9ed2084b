#include "platform/linux/text_spans.h"

#include <algorithm>

namespace marbelot {

std::size_t sizeOf(const TextSnapshot& snapshot) {
  std::size_t size = 0;
  for (const TextPart& part : snapshot) size += part.bytes.size();
  return size;
}

std::string joined(const TextSnapshot& snapshot) {
  std::string text;
  text.reserve(sizeOf(snapshot));
  for (const TextPart& part : snapshot) text += part.bytes;
  return text;
}

void TextSpans::inserted(int at, int removed, int length, TextPart part) {
  if (removed > 0) changed(at, removed, 0, length_ - removed);
  Span came{length, std::move(part)};
  length_ += length;
  // A large text comes in at the end, piece by piece.
  int start = length_ - length;
  auto span = spans_.end();
  while (span != spans_.begin() && start > at) start -= (--span)->length;
  if (start < at) {
    const int after = start + span->length - at;
    *span = {at - start, {}};
    span = spans_.insert(span + 1, Span{after, {}});
  }
  spans_.insert(span, std::move(came));
}

void TextSpans::changed(int at, int removed, int added, int length) {
  // Qt counts the document's very end among the changed at times.
  removed = std::min(removed, length_ - at);
  added = std::min(added, length - at);
  if (at < 0 || removed < 0 || added < 0 || length_ - removed + added != length) {
    spans_.assign(1, Span{length, {}});
    length_ = length;
    return;
  }
  int start = 0, first = 0;
  auto from = spans_.begin();
  while (from != spans_.end() && start + from->length < at) start += (from++)->length;
  first = start;
  auto to = from;
  while (to != spans_.end() && start <= at + removed) start += (to++)->length;
  const Span unknown{start - first - removed + added, {}};
  from = spans_.erase(from, to);
  if (unknown.length > 0) spans_.insert(from, unknown);
  length_ = length;
}

TextPart TextSpans::read(int start, int end) const {
  std::string text;
  reader_.append(start, end, text);
  SharedText owner = share(std::move(text));
  return {owner, *owner};
}

void TextSpans::part() {
  if (std::all_of(spans_.begin(), spans_.end(), [](const Span& s) { return s.part.owner; })) return;
  std::vector<Span> parted;
  parted.reserve(spans_.size());
  int at = 0;
  for (Span& span : spans_) {
    const int end = at + span.length;
    if (span.part.owner) parted.push_back(std::move(span)), at = end;
    while (at < end) {
      const int next = reader_.part(at, end);
      parted.push_back({next - at, {}});
      at = next;
    }
  }
  spans_ = std::move(parted);
}

TextSnapshot TextSpans::snapshot(int start, int end) {
  part();
  TextSnapshot parts;
  int at = 0;
  for (Span& span : spans_) {
    const int next = at + span.length;
    const int from = std::max(at, start), to = std::min(next, end);
    if (from == at && to == next) {
      if (!span.part.owner) span.part = read(at, next);
      parts.push_back(span.part);
    } else if (from < to) {
      parts.push_back(read(from, to));
    }
    at = next;
  }
  return parts;
}

}  // namespace marbelot
