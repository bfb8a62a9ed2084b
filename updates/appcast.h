// The feed that tells of new versions. No state; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marbelot {

struct AppcastItem {
  std::string version;          // that programs compare
  std::string shownVersion;     // that people read
  std::string minimumSystem;    // the oldest system that it runs on; empty: any
  std::string maximumSystem;    // the newest
  std::string notes;            // what is new, as text; empty when only the page below tells
  std::string notesAddress;     // of that page
  std::string downloadAddress;  // secure, for the browser
};

// The items that are for this kind of system ("linux") and for everybody. Those that cannot be had
// by a secure address, that have no version, or that are only for the users of a channel, are left
// out. None when it is no feed at all.
std::optional<std::vector<AppcastItem>> appcastItems(std::string_view xml, std::string_view system);

// The newest that runs on that version of the system, when it is newer than `version`.
std::optional<AppcastItem> newerItem(const std::vector<AppcastItem>& items,
                                     std::string_view version, std::string_view systemVersion);

}  // namespace marbelot
