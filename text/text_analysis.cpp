#include "text/text_analysis.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>
#include <vector>

#include "classification/masking.h"

namespace marbelot {

namespace {

// Characters of a title: longer texts keep these many of their beginning and their end, where
// paths, links and statements differ most.
constexpr std::size_t titleCharacters = 64;
constexpr std::size_t headCharacters = 42;
constexpr std::size_t tailCharacters = 20;
// A character may be made of any number of bytes; a title may not.
constexpr std::size_t bytesPerCharacter = 16;

constexpr std::size_t beginningBytes = 4096;

// Classifying takes at most 150 µs for a kilobyte; this keeps an event under 5 ms.
constexpr std::size_t mainThreadBytes = std::size_t{16} << 10;
constexpr std::size_t eventBytes = std::size_t{32} << 10;
constexpr std::size_t entryLimit = 128;

std::size_t boundaryBefore(std::string_view text, std::size_t at) {
  if (at >= text.size()) return text.size();
  while (at > 0 && text::isContinuation(text[at])) --at;
  return at;
}

std::string_view firstBytes(std::string_view text, std::size_t bytes) {
  return text.substr(0, boundaryBefore(text, bytes));
}

std::string_view lastBytes(std::string_view text, std::size_t bytes) {
  return bytes >= text.size() ? text : text.substr(boundaryBefore(text, text.size() - bytes));
}

std::string_view firstCharacters(std::string_view text, std::size_t count) {
  const std::string_view piece = firstBytes(text, count * bytesPerCharacter);
  return piece.substr(0, text::prefixBytes(piece, count));
}

std::string_view lastCharacters(std::string_view text, std::size_t count) {
  const std::string_view piece = lastBytes(text, count * bytesPerCharacter);
  return piece.substr(piece.size() - text::suffixBytes(piece, count));
}

// Marks that turn the direction of what follows could make a title read as another.
bool isInvisible(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x200E || c == 0x200F || c == 0xFEFF ||
         (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

// Line breaks as "⏎", every run of blanks as one space, nothing that a menu cannot show.
std::string oneLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const auto [value, bytes] = text::scalarAt(text, at);
    at += bytes;
    if (value == U'\r' || value == U'\n' || value == 0x85 || value == 0x2028 || value == 0x2029) {
      if (value == U'\r' && at < text.size() && text[at] == '\n') ++at;
      if (line.ends_with(' ')) line.pop_back();
      line += "⏎";
    } else if (text::isBlank(value)) {
      if (!line.ends_with(' ') && !line.ends_with("⏎")) line += ' ';
    } else if (!isInvisible(value)) {
      text::appendScalar(line, value);
    }
  }
  return line;
}

std::string quoted(std::string_view line) { return "“" + std::string(line) + "”"; }

std::string shortened(std::string_view beginning, std::string_view end, bool whole) {
  if (whole && beginning.empty()) return "(empty)";
  if (whole && firstCharacters(beginning, titleCharacters).size() == beginning.size())
    return quoted(beginning);
  return quoted(std::string(firstCharacters(beginning, headCharacters)) + "…" +
                std::string(lastCharacters(end, tailCharacters)));
}

std::size_t commonPrefix(std::string_view a, std::string_view b) {
  const auto [at, other] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
  return static_cast<std::size_t>(at - a.begin());
}

// The text around the byte at which it differs, with its first words to know it by.
std::string pieceAt(std::string_view text, std::size_t at) {
  at = boundaryBefore(text, at);
  const std::string_view head = firstCharacters(text.substr(0, at), 20);
  const std::string_view before = lastCharacters(text.substr(head.size(), at - head.size()), 10);
  const std::string_view after = firstCharacters(text.substr(at), 30);
  return quoted(std::string(head) + "…" + std::string(before) + std::string(after) +
                (at + after.size() < text.size() ? "…" : ""));
}

}  // namespace

TextAnalysis analyse(std::string_view text) {
  TextAnalysis analysis;
  const TextFacts facts = factsOf(text);
  analysis.category = facts.category;
  analysis.language = facts.language;

  // The whole text is masked before anything of it is cut, so that no cut can part a secret from
  // what gives it away.
  const std::string masked = marbelot::masked(text, facts.secrets);
  analysis.beginning = oneLine(firstBytes(masked, beginningBytes));
  const bool whole = masked.size() <= beginningBytes;
  const std::string end = whole ? analysis.beginning : oneLine(lastBytes(masked, 1024));
  analysis.title = shortened(analysis.beginning, end, whole);
  analysis.targets = std::make_shared<const TextTargets>(findTargets(text));
  return analysis;
}

std::vector<std::string> titlesAtDifference(const std::vector<std::string_view>& beginnings) {
  // In sorted order the longest prefix shared with any other text is shared with a neighbour.
  std::vector<std::size_t> order(beginnings.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::size_t a, std::size_t b) { return beginnings[a] < beginnings[b]; });
  std::vector<std::size_t> same(beginnings.size());
  for (std::size_t k = 1; k < order.size(); ++k) {
    const std::size_t shared = commonPrefix(beginnings[order[k - 1]], beginnings[order[k]]);
    for (const std::size_t i : {order[k - 1], order[k]}) same[i] = std::max(same[i], shared);
  }
  std::vector<std::string> titles;
  titles.reserve(beginnings.size());
  for (std::size_t i = 0; i < beginnings.size(); ++i)
    titles.push_back(same[i] < beginnings[i].size() ? pieceAt(beginnings[i], same[i]) : "");
  return titles;
}

std::string byteCountTitle(std::size_t bytes) {
  if (bytes < 1000) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
  double amount = static_cast<double>(bytes);
  std::size_t unit = 0;
  constexpr std::array<const char*, 4> units{"kB", "MB", "GB", "TB"};
  for (amount /= 1000; amount >= 999.95 && unit + 1 < units.size(); amount /= 1000) ++unit;
  std::array<char, 32> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%.1f %s", amount, units[unit]);
  return buffer.data();
}

bool TextAnalyses::affordable(std::size_t bytes) {
  if (bytes > mainThreadBytes || spentBytes_ + bytes > eventBytes) return false;
  if (spentBytes_ == 0) refill_ = queue_.after(0, [this] { spentBytes_ = 0; });
  spentBytes_ += std::max<std::size_t>(bytes, 1);
  return true;
}

void TextAnalyses::forgetGone() {
  std::erase_if(entries_, [](const auto& entry) { return entry.second.text.expired(); });
}

void TextAnalyses::makeRoom() {
  if (entries_.size() < entryLimit) return;
  forgetGone();
  if (entries_.size() < entryLimit) return;
  entries_.erase(std::min_element(
      entries_.begin(), entries_.end(),
      [](const auto& a, const auto& b) { return a.second.lastUse < b.second.lastUse; }));
}

TextAnalyses::Entry& TextAnalyses::entryFor(const SharedText& text) {
  if (const auto found = entries_.find(text.get()); found != entries_.end()) {
    if (found->second.text.lock() == text) return found->second;
    entries_.erase(found);
  }
  makeRoom();
  Entry& entry = entries_[text.get()];
  entry.text = text;
  if (affordable(text->size())) {
    entry.analysis = std::make_shared<const TextAnalysis>(analyse(*text));
  } else {
    TextAnalysis provisional;
    provisional.title = "Text, " + byteCountTitle(text->size());
    provisional.provisional = true;
    entry.analysis = std::make_shared<const TextAnalysis>(std::move(provisional));
    waiting_.push_back(text);
    startNext();
  }
  return entry;
}

std::shared_ptr<const TextAnalysis> TextAnalyses::of(const SharedText& text) {
  Entry& entry = entryFor(text);
  entry.lastUse = ++uses_;
  return entry.analysis;
}

void TextAnalyses::startNext() {
  while (!busy_ && !waiting_.empty()) {
    const SharedText text = waiting_.front().lock();
    waiting_.pop_front();
    if (!text) continue;
    busy_ = true;
    running_ = queue_.inBackground(
        [text] { return analyse(*text); },
        [this, text](TextAnalysis analysis) {
          busy_ = false;
          const auto found = entries_.find(text.get());
          if (found != entries_.end()) {
            found->second.analysis = std::make_shared<const TextAnalysis>(std::move(analysis));
            if (onArrival) onArrival();
          }
          startNext();
        });
  }
}

}  // namespace marbelot
