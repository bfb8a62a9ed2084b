#include "text/collection.h"

#include <algorithm>
#include <utility>

#include "platform/text.h"

namespace marbelot {
namespace {

// How many characters fewer `left` + `right` has than the two apart: a CR and an LF become one, and
// a mark at the start of a piece goes onto a space before it. Only the characters at the seam can.
std::size_t charactersLostAt(std::string_view left, std::string_view right) {
  if (left.empty() || right.empty()) return 0;
  const std::size_t before = text::suffixBytes(left, 1), after = text::prefixBytes(right, 1);
  std::string seam(left.substr(left.size() - before));
  seam += right.substr(0, after);
  return 2 - text::characterCount(seam);
}

}  // namespace

std::string_view joiningText(std::string_view key) {
  for (const SeparatorDef& def : separatorDefs) {
    if (def.key == key) return def.joinsWith;
  }
  return separatorDefs[0].joinsWith;
}

Collection::Collection(std::vector<SharedText> pieces) : pieces_(std::move(pieces)) {}

bool Collection::append(SharedText text) {
  if (text::isAllBlank(*text)) return false;
  if (!pieces_.empty() && (pieces_.back() == text || *pieces_.back() == *text)) return false;
  pieces_.push_back(std::move(text));
  return true;
}

bool Collection::removeLast() {
  if (pieces_.empty()) return false;
  pieces_.pop_back();
  if (counts_.size() > pieces_.size()) counts_.pop_back();
  if (totals_.size() > pieces_.size()) totals_.pop_back();
  return true;
}

void Collection::clear() {
  pieces_.clear();
  counts_.clear();
  totals_.clear();
}

std::size_t Collection::joinedBytes(std::string_view separatorKey) const {
  if (pieces_.empty()) return 0;
  std::size_t bytes = joiningText(separatorKey).size() * (pieces_.size() - 1);
  for (const SharedText& piece : pieces_) bytes += piece->size();
  return bytes;
}

std::string Collection::joined(std::string_view separatorKey) const {
  const std::string_view separator = joiningText(separatorKey);
  std::string result;
  result.reserve(joinedBytes(separatorKey));
  for (std::size_t i = 0; i < pieces_.size(); ++i) {
    if (i > 0) result += separator;
    result += *pieces_[i];
  }
  return result;
}

std::size_t Collection::characterCount(std::string_view separatorKey) const {
  const std::string_view separator = joiningText(separatorKey);
  const std::size_t separatorCount = text::characterCount(separator);
  while (counts_.size() < pieces_.size()) {
    counts_.push_back(text::characterCount(*pieces_[counts_.size()]));
  }
  if (totalsFor_ != separator) totals_.clear();
  totalsFor_ = separator;
  while (totals_.size() < pieces_.size()) {
    const std::size_t i = totals_.size();
    std::size_t total = counts_[i];
    if (i > 0) {
      total += totals_.back() + separatorCount;
      total -= charactersLostAt(*pieces_[i - 1], separator);
      total -= charactersLostAt(separator, *pieces_[i]);
    }
    totals_.push_back(total);
  }
  return totals_.empty() ? 0 : totals_.back();
}

std::size_t Collection::uncountedBytes() const {
  std::size_t bytes = 0;
  for (std::size_t i = counts_.size(); i < pieces_.size(); ++i) bytes += pieces_[i]->size();
  return bytes;
}

void Collection::adoptCounts(const Collection& copy) {
  std::size_t same = 0;
  while (same < std::min(pieces_.size(), copy.counts_.size()) &&
         pieces_[same] == copy.pieces_[same])
    ++same;
  if (same <= counts_.size()) return;
  counts_.assign(copy.counts_.begin(), copy.counts_.begin() + static_cast<std::ptrdiff_t>(same));
}

std::string collectionTitle(std::size_t pieces) {
  if (pieces == 0) return "Collect copies";
  return "Collect copies (" + std::to_string(pieces) + ")";
}

std::string collectionSummary(std::size_t pieces, std::optional<std::size_t> characters) {
  return std::to_string(pieces) + " pieces · " + (characters ? std::to_string(*characters) : "…") +
         " characters";
}

}  // namespace marbelot
