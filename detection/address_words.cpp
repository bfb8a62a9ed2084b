#include "detection/address_words.h"

#include <array>

#include "detection/tokens.h"
#include "platform/ascii.h"

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
  // Publication 28 of the US Postal Service, appendix C1, and British ones.
  static const WordSet clear(
      "street st str streets avenue ave av aven avenu avn avnue road rd roads rds lane ln "
      "boulevard blvd boul boulv parkway pkwy parkwy pkway pky parkways pkwys");
  static const WordSet vague(
      "alley aly allee ally annex anx arcade arc bayou byu beach bch bend bnd bluff blf bluffs "
      "blfs bottom btm branch br brnch bridge brg brdge brook brk brooks brks burg bg burgs bypass "
      "byp camp cp cmp canyon cyn canyn cape cpe causeway cswy causwa center ctr cent centr centre "
      "cntr centers ctrs circle cir circ circl crcl crcle circles cirs cliff clf cliffs clfs club "
      "clb common cmn commons cmns corner cor corners cors course crse court ct courts cts cove cv "
      "coves cvs creek crk crescent cres crsent crsnt crest crst crossing xing crssng crossroad "
      "xrd crossroads xrds curve curv dale dl dam dm divide dv dvd drive dr driv drv drives drs "
      "estate est estates ests expressway expy exp expr express expw extension ext extn extnsn "
      "exts fall falls fls ferry fry frry field fld fields flds flat flt flats flts ford frd fords "
      "frds forest frst forests forge frg forges frgs fork frk forks frks fort ft frt freeway fwy "
      "frwy garden gdn gardn gardens gdns grdns gateway gtwy gatewy glen gln glens glns green grn "
      "greens grns grove grv groves grvs harbor hbr harb harbors hbrs haven hvn heights hts ht "
      "highway hwy highwy hiway hiwy hway hill hl hills hls hollow holw hllw hollows inlet inlt "
      "island is islnd islands iss isle isles junction jct jctn junctn junctions jcts key ky keys "
      "kys knoll knl knolls knls lake lk lakes lks land landing lndg lndng light lgt lights loaf "
      "lf lock lck locks lcks lodge ldg ldge loop loops mall manor mnr manors mnrs meadow mdw "
      "meadows mdws medows mews mill ml mills mls mission msn missn motorway mtwy mount mt mnt "
      "mountain mtn mntn mountains mtns neck nck orchard orch oval ovl overpass opas park parks "
      "pass passage psge path paths pike pikes pine pne pines pnes place pl plain pln plains plns "
      "plaza plz plza point pt points pts port prt ports prairie pr prr radial radl ramp ranch "
      "rnch ranches rapid rpd rapids rpds rest rst ridge rdg rdge ridges rdgs river riv rvr route "
      "rte row rue run shoal shl shoals shls shore shr shores shrs skyway skwy spring spg sprng "
      "springs spgs sprngs spur spurs square sq sqr sqre squ squares sqs station sta statn "
      "stravenue stra stream strm summit smt sumit terrace ter terr throughway trwy trace trce "
      "traces track trak tracks trk trafficway trfy trail trl trails trls trailer trlr tunnel tunl "
      "turnpike tpke trnpk turnpk underpass upas union un unions valley vly valleys viaduct vdct "
      "via view vw views vws village vlg vill villg villages ville vl vista vis vst vsta walk "
      "walks wall way wy ways well wl wells wls broadway promenade esplanade wharf quay chase "
      "embankment gate hospital close yard mile");
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
  static constexpr std::array<Ending, 19> endings = {{
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
  for (const Ending& ending : endings) {
    if (!word.ends_with(ending.text)) continue;
    standalone = word.size() == ending.text.size();
    // "str" alone ends nothing but an abbreviated street of some name.
    return standalone || word.size() > ending.text.size() + 1 ? ending.type : StreetType::none;
  }
  return StreetType::none;
}

bool isDirection(const std::string& word) {
  static const WordSet words(
      "n s e w ne nw se sw north south east west northeast northwest southeast southwest");
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
      "wheel hour bedroom year days hours minutes years weeks months people percent million "
      "billion");
  return words.has(word);
}

bool isCityParticle(const std::string& word) {
  static const WordSet words("am an der im in bei ob vor upon on de la le les sur en du cedex");
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

bool isCanadianProvinceName(const std::string& word) {
  static const WordSet words(
      "alberta manitoba newfoundland ontario quebec québec saskatchewan yukon nunavut columbia "
      "brunswick scotia");  // the last words of those that have two
  return words.has(word);
}

bool isCountry(const std::string& words) {
  static const WordSet names(
      "usa us united-states uk united-kingdom england scotland wales ireland northern-ireland "
      "great-britain germany deutschland france australia canada austria österreich switzerland "
      "schweiz suisse belgium belgique allemagne frankreich italy italia spain españa netherlands "
      "nederland new-zealand");
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
