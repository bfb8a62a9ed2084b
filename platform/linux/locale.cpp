// The user's language and region from the environment; collation by ICU.
#include "platform/locale.h"

#include <unicode/timezone.h>
#include <unicode/ucol.h>
#include <unicode/uloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "platform/ascii.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::size_t mostBytes = std::size_t{1} << 30;  // ICU counts in int32_t

struct CloseCollator {
  void operator()(UCollator* collator) const { ucol_close(collator); }
};

// One per thread: opening a collator costs a hundred times what a comparison does. Null when ICU
// lacks its data.
const UCollator* userCollator() {
  thread_local const std::unique_ptr<UCollator, CloseCollator> collator = [] {
    UErrorCode error = U_ZERO_ERROR;
    const char* locale = uloc_getDefault();
    // The C locale orders by code, and so by case; a user without a language gets Unicode's order.
    if (std::strstr(locale, "POSIX")) locale = "";
    std::unique_ptr<UCollator, CloseCollator> opened(ucol_open(locale, &error));
    if (U_FAILURE(error)) opened.reset();
    // The second level tells accents apart and leaves case alone.
    if (opened) ucol_setStrength(opened.get(), UCOL_SECONDARY);
    return opened;
  }();
  return collator.get();
}

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

std::string findRegion() {
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

std::string findLanguage() {
  char language[ULOC_LANG_CAPACITY] = {};
  UErrorCode error = U_ZERO_ERROR;
  uloc_getLanguage(uloc_getDefault(), language, sizeof language, &error);
  return U_SUCCESS(error) && language[0] != '\0' ? language : "en";
}

}  // namespace

std::weak_ordering text::localizedCompare(std::string_view a, std::string_view b) {
  if (a == b) return std::weak_ordering::equivalent;
  UErrorCode error = U_ZERO_ERROR;
  if (const UCollator* collator = userCollator()) {
    const auto length = [](std::string_view text) {
      return static_cast<std::int32_t>(std::min(text.size(), mostBytes));
    };
    const UCollationResult order =
        ucol_strcollUTF8(collator, a.data(), length(a), b.data(), length(b), &error);
    if (U_SUCCESS(error)) return static_cast<int>(order) <=> 0;
  }
  return lowercased(a).compare(lowercased(b)) <=> 0;
}

const std::string& locale::region() {
  static const std::string found = findRegion();
  return found;
}

const std::string& locale::language() {
  static const std::string found = findLanguage();
  return found;
}

}  // namespace marbelot
