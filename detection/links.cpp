// Links: with a scheme, e-mail addresses, and bare host names of the public domain name system.
#include <algorithm>
#include <array>
#include <string>

#include "detection/finder.h"
#include "detection/hosts.h"
#include "detection/scan.h"
#include "detection/tlds.h"
#include "detection/tokens.h"
#include "platform/text.h"

namespace marbelot::detection {
namespace {

constexpr std::size_t longestScheme = 32;
constexpr std::size_t longestLocalPart = 64;  // RFC 5321, 4.5.3.1.1

// Schemes that name a host after "//"; others only need something to follow.
constexpr std::array<std::string_view, 18> hostSchemes = {
    "http", "https", "ftp",   "ftps", "sftp", "ssh",  "ws",  "wss", "git",
    "svn",  "ldap",  "ldaps", "smb",  "nfs",  "rtsp", "vnc", "irc", "telnet"};

bool contains(const auto& words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::string lowered(std::string_view word) {
  std::string result(word);
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}

bool isSchemeByte(char c) { return isAlnum(c) || c == '+' || c == '-'; }

bool isLocalByte(char c) {
  return isAlnum(c) || c == '.' || c == '_' || c == '-' || c == '+' || c == '%' || c == '\'' ||
         c == '&';
}

// What a path, query or fragment is made of, the bytes outside ASCII aside.
bool isUrlByte(char c) {
  return c > ' ' && c < 0x7F && c != '"' && c != '<' && c != '>' && c != '\\' && c != '`';
}

bool isUrlScalar(char32_t c) {
  return text::isLetter(c) || text::isNumber(c) || (c >= 0x300 && c < 0x370) || c >= 0x1F000;
}

std::string percentEncoded(std::string_view tail) {
  constexpr std::string_view hex = "0123456789ABCDEF";
  std::string result;
  result.reserve(tail.size());
  for (const char c : tail) {
    if (isAscii(c) && c != '{' && c != '}' && c != '|' && c != '^') {
      result += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      result += {'%', hex[byte >> 4], hex[byte & 15]};
    }
  }
  return result;
}

// As RFC 6068, 2, wants it in a URL.
std::string quotedLocalPart(std::string_view local) {
  std::string result;
  for (const char c : local) {
    if (c == '"') {
      result += "%22";
    } else if (c == ' ') {
      result += "%20";
    } else {
      result += c;
    }
  }
  return percentEncoded(result);
}

class LinkFinder final : public TriggerFinder {
 public:
  using TriggerFinder::TriggerFinder;

 private:
  std::size_t nextTrigger(std::size_t from, std::size_t end) const override {
    return findByte<LinkClass>(text(), from, end);
  }

  std::optional<Detection> examine(std::size_t trigger) override {
    switch (text()[trigger]) {
      case ':':
        return schemeLink(trigger);
      case '@':
        return mailLink(trigger);
      default:
        return bareLink(trigger);
    }
  }

  std::optional<Detection> schemeLink(std::size_t colon);
  std::optional<Detection> hostLink(Range scheme, std::size_t authority);
  std::optional<Detection> opaqueLink(Range scheme);
  std::optional<Detection> mailLink(std::size_t at);
  std::size_t localPartStart(std::size_t at) const;
  std::optional<Detection> bareLink(std::size_t dot);
  bool isCredibleHost(std::string_view host, Tld tld, std::size_t end) const;

  char byteAt(std::size_t at) const { return marbelot::byteAt(text(), at); }
  char byteBefore(std::size_t at) const { return at > 0 ? text()[at - 1] : '\0'; }

  // "example..com": what stood before the dots is no name of a host. An ellipsis ends a sentence.
  bool isBrokenAt(std::size_t hostEnd) const {
    return slice(hostEnd, hostEnd + 2) == ".." && isAlnum(byteAt(hostEnd + 2));
  }
  std::size_t portEnd(std::size_t at) const;
  bool hasBadPort(std::size_t at) const;
  std::size_t tailEnd(std::size_t start, std::size_t from) const;
  // Whether the next link of a list begins here.
  bool startsAnother(std::size_t at) const {
    return text().substr(at, 7) == "http://" || text().substr(at, 8) == "https://";
  }
  // Past the port, path, query and fragment that follow a host; 0 when there is no such port.
  std::size_t afterHost(std::size_t start, std::size_t hostEnd) const {
    const std::size_t port = portEnd(hostEnd);
    if (port == hostEnd && hasBadPort(hostEnd)) return 0;
    const char next = byteAt(port);
    return next == '/' || next == '?' || next == '#' ? tailEnd(start, port) : port;
  }

  Detection link(std::size_t start, std::size_t end, std::string value) const {
    return {DetectionKind::link, {start, end - start}, std::move(value)};
  }
  std::string_view slice(std::size_t start, std::size_t end) const {
    return text().substr(start, end - start);
  }
};

std::size_t LinkFinder::portEnd(std::size_t at) const {
  if (byteAt(at) != ':') return at;
  std::size_t end = at + 1;
  while (end < at + 6 && isDigit(byteAt(end))) ++end;
  if (end == at + 1 || isAlnum(byteAt(end))) return at;
  constexpr int largest = 65535;
  return numberOf(slice(at + 1, end)) > largest ? at : end;
}

// Whether five digits or more stand where a port should, and are none.
bool LinkFinder::hasBadPort(std::size_t at) const {
  if (byteAt(at) != ':') return false;
  std::size_t end = at + 1;
  while (end < at + 7 && isDigit(byteAt(end))) ++end;
  return end > at + 5;
}

// The end of a URL that started at `start` and goes on freely at `from`: brackets stay when they
// are balanced inside it, closing punctuation of the sentence around it does not belong to it.
std::size_t LinkFinder::tailEnd(std::size_t start, std::size_t from) const {
  constexpr std::string_view openers = "([{";
  constexpr std::string_view closers = ")]}";
  const char before = byteBefore(start);
  // In a text without spaces the words around a link touch it.
  const bool running = start > 0 && isWide(text::scalarBefore(text(), start).value);
  std::array<std::size_t, 3> open{};
  std::size_t end = from;
  while (end < text().size()) {
    const char c = text()[end];
    if (!isAscii(c)) {
      const text::Scalar scalar = text::scalarAt(text(), end);
      if (!isUrlScalar(scalar.value)) break;
      if (running && isWide(scalar.value) && isAlnum(text()[end - 1])) break;
      end += scalar.bytes;
      continue;
    }
    if ((c == ',' || c == ';' || c == '|') && startsAnother(end + 1)) break;
    if (!isUrlByte(c) || (c == '\'' && before == '\'')) break;
    if (const std::size_t i = openers.find(c); i != std::string_view::npos) ++open[i];
    if (const std::size_t i = closers.find(c); i != std::string_view::npos && open[i]-- == 0) break;
    ++end;
  }
  const auto isTrailing = [&](char c) {
    constexpr std::string_view punctuation = ".,;:!?'|([{";
    return punctuation.find(c) != std::string_view::npos ||
           (c == before && (c == '*' || c == '_' || c == '~'));
  };
  while (end > from && isTrailing(text()[end - 1])) --end;
  if (end > from + 2 && slice(end - 2, end) == "'s") end -= 2;
  return end;
}

std::optional<Detection> LinkFinder::schemeLink(std::size_t colon) {
  const bool hierarchical = slice(colon, colon + 3) == "://";
  const char next = byteAt(colon + 1);
  if (!hierarchical && !(isAlnum(next) || next == '+' || next == '?')) return std::nullopt;
  std::size_t start = colon;
  while (start > floor() && colon - start < longestScheme && isSchemeByte(text()[start - 1])) {
    --start;
  }
  while (start < colon && !isAlpha(text()[start])) ++start;
  if (colon - start < 2) return std::nullopt;
  // "_http://example.com_" is emphasised, "a_http://" is some identifier's.
  if (byteBefore(start) == '_' && isAlnum(byteBefore(start - 1))) return std::nullopt;
  const Range scheme{start, colon - start};
  return hierarchical ? hostLink(scheme, colon + 3) : opaqueLink(scheme);
}

std::optional<Detection> LinkFinder::hostLink(Range scheme, std::size_t authority) {
  const std::string name = lowered(slice(scheme.start, scheme.end()));
  const std::string prefix = name + "://";
  if (!contains(hostSchemes, name)) {
    // "$scheme://" and "a.scheme://" are hardly links of a scheme nobody knows.
    const char before = byteBefore(scheme.start);
    if (before == '.' || before == '$') return std::nullopt;
    if (name.ends_with("http") || name.ends_with("https")) return std::nullopt;
    const std::size_t end = tailEnd(scheme.start, authority);
    const std::string_view rest = slice(authority, end);
    if (std::none_of(rest.begin(), rest.end(), isAlnum)) return std::nullopt;
    return link(scheme.start, end, prefix + percentEncoded(rest));
  }

  std::size_t host = authority;
  for (std::size_t i = authority; i < text().size(); ++i) {
    const char c = text()[i];
    if (c == '@') host = i + 1;
    if (c == '/' || c == '?' || c == '#' || (isAscii(c) && !isUrlByte(c))) break;
  }
  std::size_t end = host;
  std::optional<std::string> ascii;
  if (byteAt(host) == '[') {
    const std::string_view inside = text().substr(host + 1, 46);
    const std::string_view address = inside.substr(0, inside.find(']'));
    if (!isIpv6(address) || address.size() == inside.size()) return std::nullopt;
    end = host + address.size() + 2;
    ascii = std::string(slice(host, end));
  } else {
    const bool wide = host < text().size() && isWide(text::scalarAt(text(), host).value);
    end = hostEnd(text(), host, wide, Symbols::allowed);
    ascii = asciiHost(slice(host, end));
  }
  if (!ascii || isBrokenAt(end)) return std::nullopt;
  const std::size_t linkEnd = afterHost(scheme.start, end);
  if (linkEnd == 0) return std::nullopt;
  return link(scheme.start, linkEnd,
              prefix + percentEncoded(slice(authority, host)) + *ascii +
                  percentEncoded(slice(end, linkEnd)));
}

std::optional<Detection> LinkFinder::opaqueLink(Range scheme) {
  constexpr std::array<std::string_view, 6> mail = {"mailto", "sip",    "sips",
                                                    "xmpp",   "jabber", "im"};
  constexpr std::array<std::string_view, 4> numberBit = {"tel", "sms", "facetime", "geo"};
  const std::string name = lowered(slice(scheme.start, scheme.end()));
  const std::size_t rest = scheme.end() + 1;
  std::size_t from = rest;
  if (contains(mail, name)) {
    while (from - rest <= longestLocalPart && isLocalByte(byteAt(from))) ++from;
    if (from == rest || byteAt(from) != '@') return std::nullopt;
    const std::size_t host = from + 1;
    const std::size_t end = hostEnd(text(), host, wideAround(text(), from));
    const std::optional<std::string> ascii = asciiHost(slice(host, end));
    if (!ascii || isBrokenAt(end)) return std::nullopt;
    const std::size_t linkEnd = byteAt(end) == '?' ? tailEnd(scheme.start, end) : end;
    return link(
        scheme.start, linkEnd,
        name + ':' + std::string(slice(rest, host)) + *ascii + percentEncoded(slice(end, linkEnd)));
  }
  if (contains(numberBit, name)) {
    std::size_t digits = 0;
    for (char c = byteAt(from);
         isDigit(c) || (c != '\0' && std::string_view("+-.,()").find(c) != std::string_view::npos);
         c = byteAt(++from)) {
      digits += isDigit(c);
    }
    if (digits < 3) return std::nullopt;
  } else if (name != "magnet" || slice(rest, rest + 4) != "?xt=") {
    return std::nullopt;
  }
  const std::size_t end = tailEnd(scheme.start, rest);
  return link(scheme.start, end, name + ':' + percentEncoded(slice(rest, end)));
}

// The start of the local part that ends at `at`, in quotes or not; `at` when there is none.
std::size_t LinkFinder::localPartStart(std::size_t at) const {
  std::size_t start = at;
  if (byteBefore(at) == '"') {
    for (--start; start > floor() && at - start < longestLocalPart; --start) {
      const char c = text()[start - 1];
      if (c == '\n') break;
      if (c != '"') continue;
      return at - start > 1 && !isAlnum(byteBefore(start - 1)) ? start - 1 : at;
    }
    return at;
  }
  while (start > floor() && at - start <= longestLocalPart) {
    const char c = text()[start - 1];
    if (isAscii(c)) {
      if (!isLocalByte(c) || (c == '.' && text()[start] == '.')) break;
      --start;
    } else {
      const text::Scalar scalar = text::scalarBefore(text(), start);
      if (start - scalar.bytes < floor() || isWide(scalar.value) || !text::isLetter(scalar.value)) {
        break;
      }
      start -= scalar.bytes;
    }
  }
  while (start < at && isAscii(text()[start]) && !isAlnum(text()[start]) && text()[start] != '_') {
    ++start;
  }
  return at - start > longestLocalPart || byteBefore(at) == '.' ? at : start;
}

std::optional<Detection> LinkFinder::mailLink(std::size_t at) {
  if (!isAlnum(byteAt(at + 1)) && isAscii(byteAt(at + 1))) return std::nullopt;
  const std::size_t start = localPartStart(at);
  if (start == at || byteBefore(start) == '@') return std::nullopt;
  const std::size_t host = at + 1;
  const std::size_t end = hostEnd(text(), host, isWide(text::scalarAt(text(), host).value));
  const std::string_view name = slice(host, end);
  if (byteAt(end) == '@' || !isTld(lastLabel(name))) return std::nullopt;
  // "user@host:path" is a file on another machine.
  if (const char c = byteAt(end + 1);
      byteAt(end) == ':' && (isAlnum(c) || c == '/' || c == '~' || c == '.')) {
    return std::nullopt;
  }
  const std::optional<std::string> ascii = asciiHost(name);
  if (!ascii || isBrokenAt(end)) return std::nullopt;
  std::string local(slice(start, host));
  if (local.front() == '"') local = quotedLocalPart(local);
  return link(start, end, "mailto:" + local + *ascii);
}

// Whether a host without a scheme is meant as one: much in programs, file names and hurried
// sentences has the same shape.
bool LinkFinder::isCredibleHost(std::string_view host, Tld tld, std::size_t end) const {
  const char after = byteAt(end);
  const bool path = after == '/' && isAlnum(byteAt(end + 1));
  const std::size_t dot = host.rfind('.');
  const std::string_view suffix = host.substr(dot + 1);
  const std::size_t secondDot = dot == 0 ? std::string_view::npos : host.rfind('.', dot - 1);
  const std::size_t nameStart = secondDot == std::string_view::npos ? 0 : secondDot + 1;
  const std::string_view name = host.substr(nameStart, dot - nameStart);
  constexpr std::array<std::string_view, 7> registries = {"co",  "com", "org", "net",
                                                          "edu", "gov", "ac"};
  const bool www = secondDot != std::string_view::npos && lowered(host.substr(0, 4)) == "www.";
  const bool registry = secondDot != std::string_view::npos && contains(registries, name);
  const bool upper = std::any_of(host.begin(), host.end(), isUpper);
  const bool lower = std::any_of(host.begin(), host.end(), isLower);

  if (after == '\\' || name.back() == '_') return false;
  if (www) return true;
  // "end.Start", "logging.INFO", "Foo.NET": a capital after the dot begins a sentence or names a
  // member, unless all are capitals, the name stands like a title or no member is named so.
  constexpr std::array<std::string_view, 3> titles = {"Com", "Org", "Net"};
  constexpr std::array<std::string_view, 4> shouted = {"COM", "ORG", "EDU", "GOV"};
  if (isUpper(suffix.front()) && lower && !(isUpper(host.front()) && contains(titles, suffix)) &&
      !contains(shouted, suffix) && !(path && suffix == "NET")) {
    return false;
  }
  if (registry) return true;
  switch (tld) {
    case Tld::word:
      return path && !upper;
    case Tld::shortWord:
      return path || (!upper && name.size() >= 4 && after != '[' && after != '=');
    case Tld::plain:
      break;
  }
  // Abbreviations and numbered things: "B.Sc", "2.de".
  const bool country = suffix.size() == 2;
  const bool digits = std::all_of(name.begin(), name.end(), isDigit);
  return !country || path || (name.size() > 1 && !digits);
}

std::optional<Detection> LinkFinder::bareLink(std::size_t dot) {
  const char before = byteBefore(dot);
  const char after = byteAt(dot + 1);
  if (!(isAlnum(before) || !isAscii(before)) || !(isAlnum(after) || !isAscii(after))) {
    return std::nullopt;
  }
  const bool wide = (!isAscii(before) || !isAscii(after)) && wideAround(text(), dot);
  std::size_t start = labelStart(text(), dot, floor(), wide);
  const std::size_t end = hostEnd(text(), start, wide);
  skipTo(end);
  while (start < dot && text()[start] == '_') ++start;
  if (start == dot || end <= dot) return std::nullopt;
  constexpr std::string_view glue = "@/\\$#%&~-.+";
  const char outside = byteBefore(start);
  if (outside != '\0' && glue.find(outside) != std::string_view::npos) return std::nullopt;
  if (outside == ':' && byteBefore(start - 1) == ':') return std::nullopt;
  if (byteAt(end) == '@' || byteAt(end) == '(') return std::nullopt;

  const std::string_view host = slice(start, end);
  if (isIpv4(host)) {
    // Without a port or a path it may as well be a version, and "/8" is a network's size.
    if (portEnd(end) == end && !(byteAt(end) == '/' && isAlpha(byteAt(end + 1)))) {
      return std::nullopt;
    }
  } else {
    const std::string label = lastLabel(host);
    if (label.empty() || !isCredibleHost(host, classifyTld(label), end) || !isTld(label)) {
      return std::nullopt;
    }
  }
  const std::optional<std::string> ascii = asciiHost(host);
  if (!ascii || isBrokenAt(end)) return std::nullopt;
  const std::size_t linkEnd = afterHost(start, end);
  if (linkEnd == 0) return std::nullopt;
  return link(start, linkEnd, "http://" + *ascii + percentEncoded(slice(end, linkEnd)));
}

}  // namespace

std::unique_ptr<Finder> makeLinkFinder(std::string_view text, const DetectionContext&) {
  return std::make_unique<LinkFinder>(text);
}

}  // namespace marbelot::detection
