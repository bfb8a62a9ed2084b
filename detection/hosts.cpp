#include "detection/hosts.h"

#include <arpa/inet.h>
#include <unicode/idna.h>

#include <algorithm>
#include <array>
#include <memory>

#include "platform/ascii.h"
#include "platform/text.h"

namespace marbelot::detection {
namespace {

// RFC 1035, 2.3.4.
constexpr std::size_t longestLabel = 63;
constexpr std::size_t longestHost = 253;

constexpr std::array<bool, 256> hostBytes = [] {
  std::array<bool, 256> table{};
  for (unsigned char c = '0'; c <= '9'; ++c) table[c] = true;
  for (unsigned char c = 'a'; c <= 'z'; ++c) table[c] = table[c - 32u] = true;
  table['-'] = table['_'] = true;
  return table;
}();

bool isHostByte(char c) { return hostBytes[static_cast<unsigned char>(c)]; }

// Emoji and arrows, which registries once let into names.
bool isSymbol(char32_t c) { return (c >= 0x2190 && c < 0x2C00) || (c >= 0x1F000 && c < 0x1FB00); }

bool isHostScalar(char32_t c, bool wide) {
  return (text::isWordCharacter(c) || text::isNumber(c)) && (wide || !isWide(c));
}

bool isPlainHost(std::string_view host) {
  bool letter = false;
  std::size_t label = 0;
  for (std::size_t i = 0; i <= host.size(); ++i) {
    if (i < host.size() && host[i] != '.') {
      if (!isHostByte(host[i])) return false;
      letter = letter || isAlpha(host[i]);
      continue;
    }
    const std::size_t length = i - label;
    if (length == 0 || length > longestLabel) return false;
    if (host[label] == '-' || host[i - 1] == '-') return false;
    label = i + 1;
  }
  return letter && host.size() <= longestHost;
}

std::optional<std::string> toAscii(std::string_view host) {
  static const std::unique_ptr<icu::IDNA> idna = [] {
    UErrorCode error = U_ZERO_ERROR;
    return std::unique_ptr<icu::IDNA>(icu::IDNA::createUTS46Instance(
        UIDNA_NONTRANSITIONAL_TO_ASCII | UIDNA_CHECK_BIDI | UIDNA_CHECK_CONTEXTJ, error));
  }();
  if (!idna || host.size() > 4 * longestHost) return std::nullopt;
  std::string ascii;
  icu::StringByteSink<std::string> sink(&ascii);
  icu::IDNAInfo info;
  UErrorCode error = U_ZERO_ERROR;
  idna->nameToASCII_UTF8(icu::StringPiece(host.data(), static_cast<int32_t>(host.size())), sink,
                         info, error);
  if (U_FAILURE(error) || info.hasErrors()) return std::nullopt;
  return ascii;
}

}  // namespace

bool isWide(char32_t c) { return c >= 0x2E80 && c < 0xFB00; }

bool wideAround(std::string_view text, std::size_t at) {
  return (at > 0 && isWide(text::scalarBefore(text, at).value)) ||
         (at + 1 < text.size() && isWide(text::scalarAt(text, at + 1).value));
}

std::size_t labelStart(std::string_view text, std::size_t end, std::size_t floor, bool wide) {
  const std::size_t bound = std::max(floor, end - std::min(end, longestLabel + 1));
  std::size_t start = end;
  while (start > bound) {
    if (isAscii(text[start - 1])) {
      if (!isHostByte(text[start - 1])) break;
      --start;
    } else {
      const text::Scalar scalar = text::scalarBefore(text, start);
      if (start - scalar.bytes < bound || !isHostScalar(scalar.value, wide)) break;
      start -= scalar.bytes;
    }
  }
  return start;
}

std::size_t hostEnd(std::string_view text, std::size_t start, bool wide, Symbols symbols) {
  std::size_t end = start;
  std::size_t dot = std::string_view::npos;
  while (end < text.size()) {
    if (isHostByte(text[end])) {
      ++end;
    } else if (isAscii(text[end])) {
      if (text[end] == '.') {
        if (end == start || dot == end - 1) break;
        dot = end;
      } else {
        break;
      }
      ++end;
    } else {
      const text::Scalar scalar = text::scalarAt(text, end);
      const bool symbol = symbols == Symbols::allowed && isSymbol(scalar.value);
      if (!symbol && !isHostScalar(scalar.value, wide)) break;
      end += scalar.bytes;
    }
  }
  while (end > start && (text[end - 1] == '.' || text[end - 1] == '-' || text[end - 1] == '_')) {
    --end;
  }
  return end;
}

std::optional<std::string> asciiHost(std::string_view host) {
  if (isIpv4(host)) return std::string(host);
  if (std::all_of(host.begin(), host.end(), isAscii)) {
    return isPlainHost(host) ? std::optional(std::string(host)) : std::nullopt;
  }
  std::optional<std::string> ascii = toAscii(host);
  return ascii && isPlainHost(*ascii) ? ascii : std::nullopt;
}

bool isIpv4(std::string_view host) {
  if (host.size() < 7 || host.size() > 15 || !isDigit(host[0])) return false;
  in_addr address;
  return inet_pton(AF_INET, std::string(host).c_str(), &address) == 1;
}

bool isIpv6(std::string_view host) {
  if (host.size() < 2 || host.size() > 45) return false;
  in6_addr address;
  return inet_pton(AF_INET6, std::string(host).c_str(), &address) == 1;
}

std::string lastLabel(std::string_view host) {
  const std::size_t dot = host.rfind('.');
  if (dot == std::string_view::npos) return {};
  std::string label(host.substr(dot + 1));
  if (label.size() > longestLabel || label.empty() || isDigit(label[0])) return {};
  std::transform(label.begin(), label.end(), label.begin(), lower);
  return label;
}

}  // namespace marbelot::detection
