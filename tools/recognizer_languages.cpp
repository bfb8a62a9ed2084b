#include "tools/recognizer_languages.h"

#include <unicode/locid.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace marbelot {
namespace {

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

// What decides on the language of messages, in the order in which the C library asks.
std::string wantedLocales() {
  std::string locale;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"})
    if (locale.empty()) locale = variable(name);
  if (locale.empty() || locale == "C" || locale == "POSIX" || locale.starts_with("C.")) return {};
  const std::string list = variable("LANGUAGE");
  return list.empty() ? locale : list;
}

std::string fileName(const std::string& localeName) {
  icu::Locale locale = icu::Locale::createCanonical(localeName.c_str());
  const std::string language = locale.getLanguage();
  if (language == "zh") {
    UErrorCode status = U_ZERO_ERROR;
    locale.addLikelySubtags(status);
    return std::string_view(locale.getScript()) == "Hant" ? "chi_tra" : "chi_sim";
  }
  // Norwegian's two forms share a file.
  if (language == "nb" || language == "nn") return "nor";
  return locale.getISO3Language();
}

}  // namespace

std::vector<std::string> recognizerLanguages() {
  std::vector<std::string> result;
  const std::string locales = wantedLocales();
  for (std::size_t start = 0; start < locales.size();) {
    const std::size_t end = std::min(locales.find(':', start), locales.size());
    const std::string name = fileName(locales.substr(start, end - start));
    if (!name.empty() && std::find(result.begin(), result.end(), name) == result.end())
      result.push_back(name);
    start = end + 1;
  }
  return result;
}

}  // namespace marbelot
