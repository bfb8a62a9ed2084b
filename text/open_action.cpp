#include "text/open_action.h"

#include <algorithm>
#include <array>

#include "platform/text.h"
#include "text/endpoints.h"

namespace marbelot {
namespace {

template <class Object>
std::shared_ptr<const Object> objectOf(const MenuItem& sender) {
  const auto* object = std::get_if<std::shared_ptr<const RepresentedObject>>(&sender.represented);
  return object ? std::dynamic_pointer_cast<const Object>(*object) : nullptr;
}

// Also a backslash, which browsers take for a slash and others do not.
bool isTreacherousCharacter(char32_t c) {
  return c <= 0x20 || c == U'\\' || (c >= 0x7F && c <= 0xA0) || (c >= 0x2000 && c <= 0x200F) ||
         (c >= 0x2028 && c <= 0x202F) || (c >= 0x2060 && c <= 0x206F) || c == 0xFEFF || c == 0xFFFD;
}

std::string schemeOf(std::string_view url) {
  const std::size_t colon = url.find(':');
  return colon == std::string_view::npos ? std::string() : text::lowercased(url.substr(0, colon));
}

bool isWebScheme(std::string_view scheme) { return scheme == "http" || scheme == "https"; }

// What stands between the "//" and the path, empty where there is no "//".
std::string_view authorityOf(std::string_view url) {
  const std::size_t colon = url.find(':');
  if (colon == std::string_view::npos || url.substr(colon + 1, 2) != "//") return {};
  const std::string_view rest = url.substr(colon + 3);
  return rest.substr(0, rest.find_first_of("/?#"));
}

}  // namespace

std::shared_ptr<const OpenAction> openAction(const MenuItem& sender) {
  return objectOf<OpenAction>(sender);
}

std::shared_ptr<const DetectedText> detectedText(const MenuItem& sender) {
  if (const auto* text = std::get_if<std::string>(&sender.represented))
    return std::make_shared<const DetectedText>(share(*text), "");
  return objectOf<DetectedText>(sender);
}

bool isHonest(std::string_view url) {
  constexpr std::array<std::string_view, 5> programs{"javascript", "vbscript", "data", "blob",
                                                     "filesystem"};
  const std::string scheme = schemeOf(url);
  return !scheme.empty() && url.size() > scheme.size() + 1 && !isTreacherous(url) &&
         std::find(programs.begin(), programs.end(), scheme) == programs.end() &&
         authorityOf(url).find('@') == std::string_view::npos;
}

bool isTreacherous(std::string_view url) {
  for (std::size_t at = 0; at < url.size();) {
    const auto [scalar, bytes] = text::scalarAt(url, at);
    if (isTreacherousCharacter(scalar)) return true;
    at += bytes;
  }
  return false;
}

bool isOpenable(std::string_view url) {
  if (url.size() > longestLink || !isHonest(url)) return false;
  const std::string scheme = schemeOf(url);
  if (isWebScheme(scheme)) return !authorityOf(url).empty();
  constexpr std::array<std::string_view, 24> others{
      "mailto", "tel",    "callto",  "facetime", "sms",     "sip",   "sips",   "xmpp",
      "irc",    "ircs",   "matrix",  "skype",    "msteams", "slack", "zoomus", "zoommtg",
      "tg",     "webcal", "webcals", "geo",      "ftp",     "ftps",  "sftp",   "magnet"};
  return std::find(others.begin(), others.end(), scheme) != others.end();
}

bool isWebLink(std::string_view url) { return isWebScheme(schemeOf(url)) && isOpenable(url); }

std::string_view hostOf(std::string_view url) {
  std::string_view host = authorityOf(url);
  if (const std::size_t at = host.rfind('@'); at != std::string_view::npos)
    host.remove_prefix(at + 1);
  if (host.starts_with('[')) return host.substr(0, host.find(']') + 1);
  return host.substr(0, host.find(':'));
}

}  // namespace marbelot
