// The vocabulary of postal addresses. All words are looked up in lower case.
#pragma once

#include <string>
#include <string_view>

namespace marbelot::detection {

enum class StreetType {
  none,
  vague,  // an everyday word too: "Way", "Place"
  clear,  // hardly means anything else after a number and a name: "Street", "Ave"
};

StreetType englishStreetType(const std::string& word);  // "street" in "5 Main Street"
StreetType frenchStreetType(const std::string& word);   // "rue" in "12 rue de la Paix"
// "hauptstraße", or the word "straße" itself; `standalone` tells the latter.
StreetType germanStreetType(const std::string& word, bool& standalone);

bool isDirection(const std::string& word);       // "nw", "south"
bool isUnitWord(const std::string& word);        // "apt", "suite", what a room's number follows
bool isFrenchParticle(const std::string& word);  // "de", "la"
bool isGermanParticle(const std::string& word);  // "am", "unter", "den"
bool isNoStreetName(const std::string& word);    // capitalised in titles: "about", "best"
bool isCityParticle(const std::string& word);    // "am" in "Frankfurt am Main"

bool isAustralianState(const std::string& word);
bool isCanadianProvince(const std::string& word);      // "on"
bool isCanadianProvinceName(const std::string& word);  // "ontario"
// Names of several words are joined with hyphens: "great-britain".
bool isCountry(const std::string& words);

// "SW1A 2AA", "K1A 0B1": the bytes that the postcode at the start of `text` takes, 0 for none.
std::size_t ukPostcodeLength(std::string_view text);
std::size_t canadianPostcodeLength(std::string_view text);

}  // namespace marbelot::detection
