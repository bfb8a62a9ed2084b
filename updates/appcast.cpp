#include "updates/appcast.h"

#include <pugixml.hpp>

#include "platform/text.h"
#include "updates/page_text.h"
#include "updates/version.h"
#include "updates/web_address.h"

namespace marbelot {
namespace {

constexpr std::size_t mostItems = 1000;

std::string childText(const pugi::xml_node& node, const char* name) {
  return std::string(text::trimmedBlanksAndNewlines(node.child(name).text().get()));
}

std::string attribute(const pugi::xml_node& node, const char* name) {
  return std::string(text::trimmedBlanksAndNewlines(node.attribute(name).value()));
}

// What stands between the last "_" of the file's name and its extension, in old feeds that name
// the version nowhere else.
std::string versionInName(const std::string& address) {
  const std::size_t underscore = address.rfind('_');
  const std::size_t dot = address.rfind('.');
  if (underscore == address.npos || dot == address.npos || dot < underscore) return {};
  return address.substr(underscore + 1, dot - underscore - 1);
}

// The download for this system, else one that names none.
pugi::xml_node enclosureFor(const pugi::xml_node& item, std::string_view system) {
  pugi::xml_node anySystem;
  for (const pugi::xml_node& enclosure : item.children("enclosure")) {
    const std::string of = attribute(enclosure, "sparkle:os");
    if (of == system) return enclosure;
    if (of.empty() && !anySystem) anySystem = enclosure;
  }
  return anySystem;
}

AppcastItem itemFrom(const pugi::xml_node& node, std::string_view system) {
  AppcastItem item;
  const pugi::xml_node enclosure = enclosureFor(node, system);
  const auto either = [&](const char* name) {
    std::string text = childText(node, name);
    return text.empty() ? attribute(enclosure, name) : text;
  };
  const std::string file = attribute(enclosure, "url");
  item.version = either("sparkle:version");
  if (item.version.empty()) item.version = versionInName(file);
  item.shownVersion = either("sparkle:shortVersionString");
  if (item.shownVersion.empty()) item.shownVersion = item.version;
  item.minimumSystem = childText(node, "sparkle:minimumSystemVersion");
  item.maximumSystem = childText(node, "sparkle:maximumSystemVersion");

  const pugi::xml_node description = node.child("description");
  const std::string format = attribute(description, "sparkle:format");
  const std::string notes(text::trimmedBlanksAndNewlines(description.text().get()));
  item.notes = format == "plain-text" || format == "markdown" ? plainText(notes) : pageText(notes);
  const std::string notesAddress = childText(node, "sparkle:releaseNotesLink");
  if (isSecureAddress(notesAddress)) item.notesAddress = notesAddress;

  // A page is better than a file for another system.
  const std::string page = childText(node, "link");
  const bool isForSystem = attribute(enclosure, "sparkle:os") == system;
  for (const std::string& address : {isForSystem ? file : page, isForSystem ? page : file})
    if (item.downloadAddress.empty() && isSecureAddress(address)) item.downloadAddress = address;
  return item;
}

}  // namespace

std::optional<std::vector<AppcastItem>> appcastItems(std::string_view xml,
                                                     std::string_view system) {
  pugi::xml_document document;
  const unsigned options = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_eol;
  if (!document.load_buffer(xml.data(), xml.size(), options)) return std::nullopt;
  const pugi::xml_node channel = document.child("rss").child("channel");
  if (!channel) return std::nullopt;
  std::vector<AppcastItem> items;
  for (const pugi::xml_node& node : channel.children("item")) {
    if (items.size() == mostItems) break;
    if (!childText(node, "sparkle:channel").empty()) continue;
    AppcastItem item = itemFrom(node, system);
    if (!item.version.empty() && !item.downloadAddress.empty()) items.push_back(std::move(item));
  }
  return items;
}

std::optional<AppcastItem> newerItem(const std::vector<AppcastItem>& items,
                                     std::string_view version, std::string_view systemVersion) {
  const AppcastItem* newest = nullptr;
  for (const AppcastItem& item : items) {
    const bool runs =
        (item.minimumSystem.empty() || compareVersions(item.minimumSystem, systemVersion) <= 0) &&
        (item.maximumSystem.empty() || compareVersions(systemVersion, item.maximumSystem) <= 0);
    const std::string_view best = newest ? std::string_view(newest->version) : version;
    if (runs && compareVersions(item.version, best) > 0) newest = &item;
  }
  return newest ? std::optional(*newest) : std::nullopt;
}

}  // namespace marbelot
