// Which tokens of a text look like passwords. Every token is read once or twice and given up after
// 128 characters; the tokens of ordinary prose are told by their bytes alone.
#include "classification/password_tokens.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cstdint>

#include "classification/classifier.h"
#include "platform/ascii.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::size_t longestSecret = 128;
constexpr std::string_view edgePunctuation = "\"'`.,;:()[]{}<>=";

constexpr std::array<bool, 256> isEdge = [] {
  std::array<bool, 256> edges{};
  for (const char c : edgePunctuation) edges[static_cast<unsigned char>(c)] = true;
  return edges;
}();

bool isEdgePunctuation(char c) { return isEdge[static_cast<unsigned char>(c)]; }

// What a character is to the tests.
enum : std::uint8_t { lowerBit = 1, upperBit = 2, digitBit = 4, symbolBit = 8, letterBit = 16 };

constexpr std::array<std::uint8_t, 128> asciiTraits = [] {
  std::array<std::uint8_t, 128> traits{};
  for (unsigned c = 0; c < 128; ++c) {
    if (c >= 'a' && c <= 'z') {
      traits[c] = lowerBit | letterBit;
    } else if (c >= 'A' && c <= 'Z') {
      traits[c] = upperBit | letterBit;
    } else if (c >= '0' && c <= '9') {
      traits[c] = digitBit;
    } else {
      traits[c] = symbolBit;
    }
  }
  return traits;
}();

std::uint8_t traitsOf(char32_t c) {
  if (c < 128) return asciiTraits[c];
  const bool letter = text::isLetter(c), number = text::isNumber(c);
  unsigned traits = 0;
  if (letter) {
    traits |= letterBit;
    if (text::isLowercase(c)) traits |= lowerBit;
    if (text::isUppercase(c)) traits |= upperBit;
  }
  if (number) traits |= digitBit;
  if (!letter && !number) traits |= symbolBit;
  return static_cast<std::uint8_t>(traits);
}

// The scalars of two bytes (Latin, Greek, Cyrillic, Hebrew, Arabic …), so that prose in these
// scripts costs a look-up per letter.
std::uint8_t quickTraitsOf(char32_t c) {
  constexpr char32_t tableEnd = 0x800;
  static const std::array<std::uint8_t, tableEnd> table = [] {
    std::array<std::uint8_t, tableEnd> traits{};
    for (char32_t scalar = 0; scalar < tableEnd; ++scalar) traits[scalar] = traitsOf(scalar);
    return traits;
  }();
  return c < tableEnd ? table[c] : traitsOf(c);
}

// What both tests want to know about the characters of a trimmed token.
struct Characters {
  std::size_t count = 0;
  std::size_t distinct = 0;
  unsigned present = 0;       // the traits that occur
  bool consonantRun = false;  // four letters in a row, none a vowel
  bool letterAfterNumber = false;

  int classes() const { return static_cast<int>(std::bitset<4>(present & 15).count()); }
};

class CharacterReader {
 public:
  void add(std::uint8_t traits, bool vowel) {
    ++seen_.count;
    seen_.present |= traits;
    const bool letter = traits & letterBit;
    if (letter && afterNumber_) seen_.letterAfterNumber = true;
    afterNumber_ = traits & digitBit;
    run_ = letter && !vowel ? run_ + 1 : 0;
    if (run_ >= 4) seen_.consonantRun = true;
  }
  const Characters& seen() const { return seen_; }

 private:
  Characters seen_;
  int run_ = 0;
  bool afterNumber_ = false;
};

bool isVowel(char c) { return std::string_view("aeiouAEIOU").find(c) != std::string_view::npos; }

Characters readAscii(std::string_view token) {
  CharacterReader reader;
  std::bitset<128> distinct;
  for (const char c : token) {
    reader.add(asciiTraits[static_cast<unsigned char>(c)], isVowel(c));
    distinct.set(static_cast<unsigned char>(c));
  }
  Characters seen = reader.seen();
  seen.distinct = distinct.count();
  return seen;
}

// Reads at most one character more than a secret can have.
Characters readClusters(std::string_view token) {
  CharacterReader reader;
  std::array<std::string_view, longestSecret + 1> clusters;
  std::size_t count = 0;
  while (!token.empty() && count < clusters.size()) {
    const std::size_t bytes = text::prefixBytes(token, 1);
    const char32_t first = text::scalarAt(token, 0).value;
    // A letter with an accent is none of the vowels that count, however it is encoded.
    reader.add(quickTraitsOf(first), bytes == 1 && isVowel(static_cast<char>(first)));
    clusters[count++] = token.substr(0, bytes);
    token.remove_prefix(bytes);
  }
  const auto end = clusters.begin() + static_cast<std::ptrdiff_t>(count);
  std::sort(clusters.begin(), end);
  Characters seen = reader.seen();
  seen.distinct = static_cast<std::size_t>(std::unique(clusters.begin(), end) - clusters.begin());
  return seen;
}

bool isStrongPassword(const Characters& seen) {
  return seen.count >= 8 && seen.count <= longestSecret && seen.classes() >= 3 && seen.distinct > 5;
}

bool isRandomString(const Characters& seen) {
  if (seen.count < 10 || seen.count > longestSecret) return false;
  if (!(seen.present & letterBit)) return false;
  if (!(seen.present & symbolBit) && !(seen.present & digitBit)) return false;
  return seen.distinct * 2 >= seen.count && (seen.consonantRun || seen.letterAfterNumber);
}

// Skips the scalars that `wanted` accepts; returns how many.
template <typename Wanted>
std::size_t skip(std::string_view& token, Wanted wanted) {
  std::size_t count = 0;
  while (!token.empty()) {
    const text::Scalar scalar = text::scalarAt(token, 0);
    if (!wanted(scalar.value)) break;
    token.remove_prefix(scalar.bytes);
    ++count;
  }
  return count;
}

bool isAsciiLetter(char32_t c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// A cheap no for nearly every word of prose: too short, or of too few classes whatever its
// characters are. A character has at least one scalar and takes its traits from one of them.
bool cannotBeSecret(std::string_view token) {
  if (token.size() < 8) return true;
  // Every character takes one scalar at least, and at most two of ASCII (CR LF).
  constexpr std::size_t tooLong = 2 * longestSecret;
  unsigned present = 0;
  std::size_t scalars = 0, ascii = 0;
  for (std::size_t at = 0; at < token.size();) {
    if (isAscii(token[at])) {
      present |= asciiTraits[static_cast<unsigned char>(token[at++])];
      if (++ascii > tooLong) return true;
    } else {
      const text::Scalar scalar = text::scalarAt(token, at);
      present |= quickTraitsOf(scalar.value);
      at += scalar.bytes;
    }
    // Long tokens show their classes early.
    if (++scalars >= longestSecret && (present & (digitBit | symbolBit))) return false;
  }
  return scalars < 8 || !(present & letterBit) || !(present & (digitBit | symbolBit));
}

// The token less the punctuation at its edges. A mark that combines with a punctuation character
// makes another character of the two, which stays.
Range stripped(std::string_view text, Range token) {
  std::string_view rest = text.substr(token.start, token.length);
  while (!rest.empty() && isEdgePunctuation(rest.front())) {
    if (rest.size() > 1 && !isAscii(rest[1]) && text::prefixBytes(rest, 1) > 1) break;
    rest.remove_prefix(1);
  }
  while (!rest.empty() && isEdgePunctuation(rest.back())) rest.remove_suffix(1);
  return {static_cast<std::size_t>(rest.data() - text.data()), rest.size()};
}

// Calls `visit` with each run of \S+ until it returns true; returns whether it did.
template <typename Visit>
bool anyToken(std::string_view text, Visit visit) {
  std::size_t at = 0;
  while (at < text.size()) {
    std::size_t space = 0;
    std::size_t start = at;
    while (at < text.size()) {
      const char c = text[at];
      if (isAscii(c)) {
        if (c == ' ' || (c >= '\t' && c <= '\r')) {
          space = 1;
          break;
        }
        ++at;
        continue;
      }
      const text::Scalar scalar = text::scalarAt(text, at);
      if (text::isBlankOrNewline(scalar.value)) {
        space = scalar.bytes;
        break;
      }
      at += scalar.bytes;
    }
    if (at > start && visit(Range{start, at - start})) return true;
    at += space;
  }
  return false;
}

bool isSecretRange(std::string_view text, Range token, Range& found) {
  if (token.length < 8) return false;
  found = stripped(text, token);
  return looksLikeSecretToken(text.substr(found.start, found.length));
}

// Which of the words start with these three letters, one bit each word.
constexpr std::array<std::string_view, 13> secretWords = {
    "password", "passwd",  "passphrase", "pwd",        "secret",      "token", "apikey",
    "api key",  "api-key", "credential", "access key", "private key", "pin"};

struct WordStarts {
  std::array<std::array<std::uint16_t, 256>, 3> at{};
};

constexpr WordStarts wordStarts = [] {
  WordStarts starts;
  for (std::size_t word = 0; word < secretWords.size(); ++word) {
    for (std::size_t letter = 0; letter < 3; ++letter) {
      const auto c = static_cast<unsigned char>(secretWords[word][letter]);
      const auto bit = static_cast<std::uint16_t>(1u << word);
      starts.at[letter][c] |= bit;
      starts.at[letter][c & ~0x20u] |= bit;
    }
  }
  return starts;
}();

char lowercaseAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

bool startsWithLowercased(std::string_view text, std::string_view word) {
  return text.size() >= word.size() &&
         std::equal(word.begin(), word.end(), text.begin(),
                    [](char expected, char c) { return lowercaseAscii(c) == expected; });
}

bool mentionsSecretInAscii(std::string_view text) {
  if (text.size() < 3) return false;
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  for (std::size_t at = 0; at + 2 < text.size(); ++at) {
    unsigned candidates = wordStarts.at[0][bytes[at]] & wordStarts.at[1][bytes[at + 1]] &
                          wordStarts.at[2][bytes[at + 2]];
    for (; candidates; candidates &= candidates - 1) {
      const auto word = static_cast<std::size_t>(__builtin_ctz(candidates));
      if (startsWithLowercased(text.substr(at), secretWords[word])) return true;
    }
  }
  return false;
}

}  // namespace

bool isVersionNumber(std::string_view token) {
  if (!token.empty()) {
    const text::Scalar last = text::scalarBefore(token, token.size());
    if (!text::isBlank(last.value) && text::isBlankOrNewline(last.value)) {
      token.remove_suffix(last.bytes);
    }
  }
  const auto takeSeparator = [&token] {
    if (token.empty() || std::string_view(".-_").find(token.front()) == std::string_view::npos) {
      return false;
    }
    token.remove_prefix(1);
    return true;
  };
  if (!token.empty() && (token.front() == 'v' || token.front() == 'V')) token.remove_prefix(1);
  if (skip(token, text::isDecimalDigit) == 0) return false;
  int groups = 0;
  for (; !token.empty(); ++groups) {
    if (!takeSeparator()) return false;
    if (skip(token, text::isDecimalDigit) > 0) continue;
    if (groups == 0 || skip(token, isAsciiLetter) == 0) return false;
    skip(token, [](char32_t c) { return isAsciiLetter(c) || (c >= '0' && c <= '9'); });
    return token.empty();
  }
  return groups > 0;
}

bool looksLikeSecretToken(std::string_view token) {
  if (cannotBeSecret(token)) return false;
  const std::string_view trimmed = text::trimmedBlanksAndNewlines(token);
  // More bytes than this many characters could only be marks heaped upon marks; reading on is
  // bounded by the character count anyway.
  const bool ascii = std::all_of(
      trimmed.begin(),
      trimmed.begin() +
          std::min<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(trimmed.size()), longestSecret + 1),
      isAscii);
  if (ascii && trimmed.size() > longestSecret) return false;
  const Characters seen = ascii ? readAscii(trimmed) : readClusters(trimmed);
  if (!isStrongPassword(seen) && !isRandomString(seen)) return false;
  return token.find_first_of(" \n\t") == token.npos && token.find('@') == token.npos &&
         token.find("://") == token.npos && !isVersionNumber(token);
}

std::vector<Range> passwordTokens(std::string_view text) {
  std::vector<Range> tokens;
  anyToken(text, [&](Range token) {
    Range found;
    if (isSecretRange(text, token, found)) tokens.push_back(found);
    return false;
  });
  return tokens;
}

bool hasPasswordToken(std::string_view text) {
  return anyToken(text, [text](Range token) {
    Range found;
    return isSecretRange(text, token, found);
  });
}

bool mentionsSecret(std::string_view text) {
  if (mentionsSecretInAscii(text)) return true;
  // The one character outside ASCII that lower-casing brings into these words.
  constexpr std::string_view kelvinSign = "\u212A";
  return text.find(kelvinSign) != text.npos && mentionsSecretInAscii(text::lowercased(text));
}

}  // namespace marbelot
