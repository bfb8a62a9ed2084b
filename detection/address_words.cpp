#include "detection/address_words.h"

#include <array>

#include "detection/scan.h"
#include "detection/tokens.h"

namespace marbelot::detection {
namespace {

// Matches a shape of A (letter) and 9 (digit) at the start of the text; a blank may be missing.
std::size_t shapeLength(std::string_view text, std::string_view shape) {
  std::size_t at = 0;
  for (const char want : shape) {
    const char c = at < text.size() ? text[at] : '\0';
    if (want == ' ') {
      at += c == ' ';
      continue;
    }
    if (want == 'A' ? !isUpper(c) : !isDigit(c)) return 0;
    ++at;
  }
  return at < text.size() && isAlnum(text[at]) ? 0 : at;
}

}  // namespace

StreetType englishStreetType(const std::string& word) {
  // The common ones of Publication 28 of the US Postal Service, appendix C1, and British ones.
  static const WordSet clear(
      "street st avenue ave av road rd lane ln boulevard blvd crescent cres parkway pkwy");
  static const WordSet vague(
      "drive dr way court ct place pl square sq terrace ter tce close circle cir trail trl highway "
      "hwy "
      "expressway expy freeway fwy turnpike tpke alley loop row walk mews gardens gdns grove grv "
      "green hill rise view park wharf quay esplanade esp parade pde plaza plz path pike ridge "
      "run commons crossing cove cv point pt broadway embankment yard gate bypass promenade "
      "strand heights hts circus bridge mall route");
  return clear.has(word)   ? StreetType::clear
         : vague.has(word) ? StreetType::vague
                           : StreetType::none;
}

StreetType frenchStreetType(const std::string& word) {
  static const WordSet clear("rue avenue boulevard impasse allée chaussée bd");
  static const WordSet vague(
      "av place quai cours chemin square route passage faubourg ruelle esplanade promenade "
      "villa cité rond-point allées sentier");
  return clear.has(word)   ? StreetType::clear
         : vague.has(word) ? StreetType::vague
                           : StreetType::none;
}

StreetType germanStreetType(const std::string& word, bool& standalone) {
  struct Ending {
    std::string_view text;
    StreetType type;
  };
  static constexpr std::array<Ending, 19> kEndings = {{
      {"straße", StreetType::clear},    {"strasse", StreetType::clear},
      {"str", StreetType::clear},       {"allee", StreetType::clear},
      {"gasse", StreetType::clear},     {"chaussee", StreetType::clear},
      {"weg", StreetType::vague},       {"platz", StreetType::vague},
      {"ring", StreetType::vague},      {"damm", StreetType::vague},
      {"ufer", StreetType::vague},      {"markt", StreetType::vague},
      {"steig", StreetType::vague},     {"pfad", StreetType::vague},
      {"hof", StreetType::vague},       {"graben", StreetType::vague},
      {"promenade", StreetType::vague}, {"zeile", StreetType::vague},
      {"wall", StreetType::vague},
  }};
  for (const Ending& ending : kEndings) {
    if (!word.ends_with(ending.text)) continue;
    standalone = word.size() == ending.text.size();
    // "str" alone ends nothing but an abbreviated street of some name.
    return standalone || word.size() > ending.text.size() + 1 ? ending.type : StreetType::none;
  }
  return StreetType::none;
}

bool isDirection(const std::string& word) {
  static const WordSet words("n s e w ne nw se sw north south east west");
  return words.has(word);
}

bool isUnitWord(const std::string& word) {
  static const WordSet words(
      "apt apartment suite ste unit flat floor fl level room rm building bldg shop bâtiment bat "
      "appt étage appartement");
  return words.has(word);
}

bool isFrenchParticle(const std::string& word) {
  static const WordSet words("de du des la le les à au aux en et sur");
  return words.has(word);
}

bool isGermanParticle(const std::string& word) {
  static const WordSet words("am an auf der den dem des im in zum zur unter von vor bei hinter");
  return words.has(word);
}

bool isNoStreetName(const std::string& word) {
  static const WordSet words(
      "about a an best top most more things ways reasons tips how why what when who to for from in "
      "on at is are was with by or if we i you they this that these those my our your his her "
      "days hours minutes years weeks months people percent times million billion");
  return words.has(word);
}

bool isCityParticle(const std::string& word) {
  static const WordSet words("am an der im in bei ob vor upon on de la le les sur en du cedex");
  return words.has(word);
}

bool isUsState(const std::string& word) {
  static const WordSet words(
      "al ak az ar ca co ct de fl ga hi id il in ia ks ky la me md ma mi mn ms mo mt ne nv nh nj "
      "nm "
      "ny nc nd oh ok or pa ri sc sd tn tx ut vt va wa wv wi wy dc pr gu vi");
  return words.has(word);
}

bool isUsStateName(const std::string& words) {
  static const WordSet names(
      "alabama alaska arizona arkansas california colorado connecticut delaware florida georgia "
      "hawaii idaho illinois indiana iowa kansas kentucky louisiana maine maryland massachusetts "
      "michigan minnesota mississippi missouri montana nebraska nevada new-hampshire new-jersey "
      "new-mexico new-york north-carolina north-dakota ohio oklahoma oregon pennsylvania "
      "rhode-island south-carolina south-dakota tennessee texas utah vermont virginia washington "
      "west-virginia wisconsin wyoming");
  return names.has(words);
}

bool startsUsStateName(const std::string& word) {
  static const WordSet words("new north rhode south west");
  return words.has(word);
}

bool isAustralianState(const std::string& word) {
  static const WordSet words("nsw vic qld sa wa tas act nt");
  return words.has(word);
}

bool isCanadianProvince(const std::string& word) {
  static const WordSet words("ab bc mb nb nl ns nt nu on pe qc sk yt");
  return words.has(word);
}

bool isCountry(const std::string& words) {
  static const WordSet names(
      "usa us united-states uk united-kingdom england scotland wales ireland northern-ireland "
      "great-britain germany deutschland france australia canada austria österreich switzerland "
      "schweiz suisse belgium belgique allemagne frankreich");
  return names.has(words);
}

std::size_t ukPostcodeLength(std::string_view text) {
  if (text.size() < 5 || !isUpper(text[0]) || !(isDigit(text[1]) || isDigit(text[2]))) return 0;
  for (const std::string_view shape :
       {"A9 9AA", "A99 9AA", "AA9 9AA", "AA99 9AA", "A9A 9AA", "AA9A 9AA"}) {
    if (const std::size_t length = shapeLength(text, shape)) return length;
  }
  return 0;
}

std::size_t canadianPostcodeLength(std::string_view text) { return shapeLength(text, "A9A 9A9"); }

}  // namespace marbelot::detection
