#include <unicode/timezone.h>

#include <cstdlib>
#include <memory>

#include "detection/finder.h"
#include "detection/scan.h"

namespace marbelot::detection {
namespace {

// The territory in a locale's name, as in "de_AT.UTF-8".
std::string localeRegion(std::string_view locale) {
  const std::size_t underscore = locale.find('_');
  if (underscore == std::string_view::npos) return {};
  const std::string_view region = locale.substr(underscore + 1).substr(0, 2);
  return region.size() == 2 && isUpper(region[0]) && isUpper(region[1]) ? std::string(region)
                                                                        : std::string();
}

std::string zoneRegion() {
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  icu::UnicodeString id;
  zone->getID(id);
  char region[8] = {};
  UErrorCode error = U_ZERO_ERROR;
  icu::TimeZone::getRegion(id, region, sizeof region, error);
  // Zones of no country, like UTC, have the region "001".
  return U_SUCCESS(error) && isUpper(region[0]) ? std::string(region) : std::string();
}

std::string findUserRegion() {
  for (const char* name : {"LC_ALL", "LC_TELEPHONE", "LANG"}) {
    const char* value = std::getenv(name);
    if (value == nullptr || *value == '\0') continue;
    // The first one that is set rules; "C" is no place.
    if (std::string region = localeRegion(value); !region.empty()) return region;
    break;
  }
  std::string region = zoneRegion();
  return region.empty() ? "US" : region;
}

}  // namespace

const std::string& userRegion() {
  static const std::string region = findUserRegion();
  return region;
}

}  // namespace marbelot::detection
