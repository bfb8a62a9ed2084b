// The public suffixes of one label: the delegations in the root zone of the domain name system
// (https://www.iana.org/domains/root/db), as of February 2023, in three classes.
#include "detection/tlds.h"

#include <unicode/idna.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "detection/scan.h"

namespace marbelot::detection {
namespace {

// Seen bare in running text, and nothing else: "example.com".
constexpr std::string_view kPlain =
    "academy ad ae aero af ag agency ai al amsterdam ao aq ar asia attorney au aw ax az ba "
    "bayern bb bd berlin bf bg bh bi bike biz bj blog bm bn bo boston boutique br brussels bs "
    "bt bv bw bzh ca capetown cd cf cg ch ci ck clinic cloud club cm cn co college cologne com "
    "community company consulting coop corsica cr cu cv cw cx cy cz de dental dev digital dj "
    "dk dm domains durban dz ec edu ee eg email engineering enterprises er es et eu eus fi fj "
    "fk fm fo foundation fr ga gal gb ge gf gg gh gi gl gm gmbh gn gov gp gq gr gt gu guru gw "
    "gy hamburg hk hn hosting hr ht hu ie il im inc industries info institute international io "
    "iq ir istanbul je jm jo jobs joburg jp ke kg kh ki km kn koeln kp kr kw ky kyoto kz "
    "lawyer lb lc li lk llc london lr ls lt ltd lu lv ly ma management marketing mc melbourne "
    "mg mh miami mil mn mobi moscow mp mq mr mt mu museum mv mw mx mz na nc net nf ng ngo ni "
    "nl np nr nu nyc nz ong online org osaka pa paris pe pf pg ph photography pk pn pr pt pw "
    "qa quebec restaurant rio ro ru ruhr rw sa saarland sb scot sd se services sg shop si sj "
    "sk sl sm sn software solutions ss studio su sx sy sydney systems sz tc td tech technology "
    "tg th tirol tj tk tl tn tokyo tr travel tv tw tz ua ug uk university uy uz vc ve vegas "
    "ventures vg vlaanderen vn vu wales website wf wien wiki ws xn--11b4c3d xn--1ck2e1b "
    "xn--1qqw23a xn--2scrj9c xn--30rr7y xn--3bst00m xn--3ds443g xn--3e0b707e xn--3hcrj9c "
    "xn--3pxu8k xn--42c2d9a xn--45br5cyl xn--45brj9c xn--45q11c xn--4dbrk0ce xn--4gbrim "
    "xn--54b7fta0cc xn--55qw42g xn--55qx5d xn--5su34j936bgsg xn--5tzm5g xn--6frz82g "
    "xn--6qq986b3xl xn--80adxhks xn--80ao21a xn--80aqecdr1a xn--80asehdb xn--80aswg "
    "xn--8y0a063a xn--90a3ac xn--90ae xn--90ais xn--9dbq2a xn--9et52u xn--9krt00a "
    "xn--b4w605ferd xn--bck1b9a5dre4c xn--c1avg xn--c2br7g xn--cck2b3b xn--cckwcxetd "
    "xn--cg4bki xn--clchc0ea0b2g2a9gcd xn--czr694b xn--czrs0t xn--czru2d xn--d1acj3b xn--d1alf "
    "xn--e1a4c xn--eckvdtc9d xn--efvy88h xn--fct429k xn--fhbei xn--fiq228c5hs xn--fiq64b "
    "xn--fiqs8s xn--fiqz9s xn--fjq720a xn--flw351e xn--fpcrj9c3d xn--fzc2c9e2c "
    "xn--fzys8d69uvgm xn--g2xx48c xn--gckr3f0f xn--gecrj9c xn--gk3at1e xn--h2breg3eve "
    "xn--h2brj9c xn--h2brj9c8c xn--hxt814e xn--i1b6b1a6a2e xn--imr513n xn--io0a7i xn--j1aef "
    "xn--j1amh xn--j6w193g xn--jlq480n2rg xn--jvr189m xn--kcrx77d1x4a xn--kprw13d xn--kpry57d "
    "xn--kput3i xn--l1acc xn--lgbbat1ad8j xn--mgb2ddes xn--mgb9awbf xn--mgba3a3ejt "
    "xn--mgba3a4f16a xn--mgba3a4fra xn--mgba7c0bbn0a xn--mgbaakc7dvf xn--mgbaam7a8h "
    "xn--mgbab2bd xn--mgbah1a3hjkrd xn--mgbai9a5eva00b xn--mgbai9azgqp6j xn--mgbayh7gpa "
    "xn--mgbbh1a xn--mgbbh1a71e xn--mgbc0a9azcg xn--mgbca7dzdo xn--mgbcpq6gpa1a "
    "xn--mgberp4a5d4a87g xn--mgberp4a5d4ar xn--mgbgu82a xn--mgbi4ecexp xn--mgbpl2fh "
    "xn--mgbqly7c0a67fbc xn--mgbqly7cvafr xn--mgbt3dhd xn--mgbtf8fl xn--mgbtx2b xn--mgbx4cd0ab "
    "xn--mix082f xn--mix891f xn--mk1bu44c xn--mxtq1m xn--ngbc5azd xn--ngbe9e0a xn--ngbrx "
    "xn--nnx388a xn--node xn--nqv7f xn--nqv7fs00ema xn--nyqy26a xn--o3cw4h xn--ogbpf8fl "
    "xn--otu796d xn--p1acf xn--p1ai xn--pgbs0dh xn--pssy2u xn--q7ce6a xn--q9jyb4c xn--qcka1pmc "
    "xn--qxa6a xn--qxam xn--rhqv96g xn--rovu88b xn--rvc1e0am3e xn--s9brj9c xn--ses554g "
    "xn--t60b56a xn--tckwe xn--tiq49xqyj xn--unup4y xn--vermgensberater-ctb "
    "xn--vermgensberatung-pwb xn--vhquv xn--vuq861b xn--w4r85el8fhu5dnra xn--w4rs40l "
    "xn--wgbh1c xn--wgbl6a xn--xhq521b xn--xkc2al3hye2a xn--xkc2dl3a5ee0h xn--y9a3aq "
    "xn--yfro4i67o xn--ygbi2ammx xn--zfr164b xyz ye yt za zm zw";

// Countries whose code is a common word: "example.it", but not "do.it".
constexpr std::string_view kShortWord = "at be in it me my no us";

// File extensions, members of objects and other words, and names of companies, which are hardly
// ever seen as bare hosts.
constexpr std::string_view kWord =
    "aaa aarp abarth abb abbott abbvie abc able abogado abudhabi ac accenture accountant "
    "accountants aco actor ads adult aeg aetna afl africa agakhan aig airbus airforce airtel "
    "akdn alfaromeo alibaba alipay allfinanz allstate ally alsace alstom am amazon "
    "americanexpress americanfamily amex amfam amica analytics android anquan anz aol "
    "apartments app apple aquarelle arab aramco archi army art arte as asda associates athleta "
    "auction audi audible audio auspost author auto autos avianca aws axa azure baby baidu "
    "banamex bananarepublic band bank bar barcelona barclaycard barclays barefoot bargains "
    "baseball basketball bauhaus bbc bbt bbva bcg bcn beats beauty beer bentley best bestbuy "
    "bet bharti bible bid bing bingo bio black blackfriday blockbuster bloomberg blue bms bmw "
    "bnpparibas boats boehringer bofa bom bond boo book booking bosch bostik bot box bradesco "
    "bridgestone broadway broker brother build builders business buy buzz by bz cab cafe cal "
    "call calvinklein cam camera camp canon capital capitalone car caravan cards care career "
    "careers cars casa case cash casino cat catering catholic cba cbn cbre cbs cc center ceo "
    "cern cfa cfd chanel channel charity chase chat cheap chintai christmas chrome church "
    "cipriani circle cisco citadel citi citic city cityeats cl claims cleaning click clinique "
    "clothing clubmed coach codes coffee comcast commbank compare computer comsec condos "
    "construction contact contractors cooking cookingchannel cool country coupon coupons "
    "courses cpa credit creditcard creditunion cricket crown crs cruise cruises cuisinella "
    "cymru cyou dabur dad dance data date dating datsun day dclk dds deal dealer deals degree "
    "delivery dell deloitte delta democrat dentist desi design dhl diamonds diet direct "
    "directory discount discover dish diy dnp do docs doctor dog dot download drive dtv dubai "
    "dunlop dupont dvag dvr earth eat eco edeka education emerck energy engineer epson "
    "equipment ericsson erni esq estate etisalat eurovision events exchange expert exposed "
    "express extraspace fage fail fairwinds faith family fan fans farm farmers fashion fast "
    "fedex feedback ferrari ferrero fiat fidelity fido film final finance financial fire "
    "firestone firmdale fish fishing fit fitness flickr flights flir florist flowers fly foo "
    "food foodnetwork football ford forex forsale forum fox free fresenius frl frogans "
    "frontdoor frontier ftr fujitsu fun fund furniture futbol fyi gallery gallo gallup game "
    "games gap garden gay gbiz gd gdn gea gent genting george ggee gift gifts gives giving "
    "glass gle global globo gmail gmo gmx godaddy gold goldpoint golf goo goodyear goog google "
    "gop got grainger graphics gratis green gripe grocery group gs guardian gucci guge guide "
    "guitars hair hangout haus hbo hdfc hdfcbank health healthcare help helsinki here hermes "
    "hgtv hiphop hisamitsu hitachi hiv hkt hm hockey holdings holiday homedepot homegoods "
    "homes homesense honda horse hospital host hot hoteles hotels hotmail house how hsbc "
    "hughes hyatt hyundai ibm icbc ice icu id ieee ifm ikano imamat imdb immo immobilien "
    "infiniti ing ink insurance insure int intuit investments ipiranga irish is ismaili ist "
    "itau itv jaguar java jcb jeep jetzt jewelry jio jll jmp jnj jot joy jpmorgan jprs juegos "
    "juniper kaufen kddi kerryhotels kerrylogistics kerryproperties kfh kia kids kim kinder "
    "kindle kitchen kiwi komatsu kosher kpmg kpn krd kred kuokgroup la lacaixa lamborghini "
    "lamer lancaster lancia land landrover lanxess lasalle lat latino latrobe law lds lease "
    "leclerc lefrak legal lego lexus lgbt lidl life lifeinsurance lifestyle lighting like "
    "lilly limited limo lincoln linde link lipsy live living llp loan loans locker locus lol "
    "lotte lotto love lpl lplfinancial ltda lundbeck luxe luxury macys madrid maif maison "
    "makeup man mango map market markets marriott marshalls maserati mattel mba mckinsey md "
    "med media meet meme memorial men menu merckmsd microsoft mini mint mit mitsubishi mk ml "
    "mlb mls mm mma mo mobile moda moe moi mom monash money monster mormon mortgage moto "
    "motorcycles mov movie ms msd mtn mtr music mutual nab nagoya name natura navy nba ne nec "
    "netbank netflix network neustar new news next nextdirect nexus nfl nhk nico nike nikon "
    "ninja nissan nissay nokia northwesternmutual norton now nowruz nowtv nra nrw ntt obi "
    "observer office okinawa olayan olayangroup oldnavy ollo om omega one onl ooo open oracle "
    "orange organic origins otsuka ott ovh page panasonic pars partners parts party passagens "
    "pay pccw pet pfizer pharmacy phd philips phone photo photos physio pics pictet pictures "
    "pid pin ping pink pioneer pizza pl place play playstation plumbing plus pm pnc pohl poker "
    "politie porn post pramerica praxi press prime pro prod productions prof progressive promo "
    "properties property protection pru prudential ps pub pwc py qpon quest racing radio re "
    "read realestate realtor realty recipes red redstone redumbrella rehab reise reisen reit "
    "reliance ren rent rentals repair report republican rest review reviews rexroth rich "
    "richardli ricoh ril rip rocher rocks rodeo rogers room rs rsvp rugby run rwe ryukyu safe "
    "safety sakura sale salon samsclub samsung sandvik sandvikcoromant sanofi sap sarl sas "
    "save saxo sbi sbs sc sca scb schaeffler schmidt scholarships school schule schwarz "
    "science search seat secure security seek select sener seven sew sex sexy sfr sh shangrila "
    "sharp shaw shell shia shiksha shoes shopping shouji show showtime silk sina singles site "
    "ski skin sky skype sling smart smile sncf so soccer social softbank sohu solar song sony "
    "soy spa space sport spot sr srl st stada staples star statebank statefarm stc stcgroup "
    "stockholm storage store stream study style sucks supplies supply support surf surgery "
    "suzuki sv swatch swiss tab taipei talk taobao target tatamotors tatar tattoo tax taxi tci "
    "tdk team tel temasek tennis teva tf thd theater theatre tiaa tickets tienda tiffany tips "
    "tires tjmaxx tjx tkmaxx tm tmall to today tools top toray toshiba total tours town toyota "
    "toys trade trading training travelchannel travelers travelersinsurance trust trv tt tube "
    "tui tunes tushu tvs ubank ubs unicom uno uol ups va vacations vana vanguard verisign "
    "versicherung vet vi viajes video vig viking villas vin vip virgin visa vision viva vivo "
    "vodka volkswagen volvo vote voting voto voyage vuelos walmart walter wang wanggou watch "
    "watches weather weatherchannel webcam weber wedding weibo weir whoswho williamhill win "
    "windows wine winners wme wolterskluwer woodside work works world wow wtc wtf xbox xerox "
    "xfinity xihuan xin xxx yachts yahoo yamaxun yandex yodobashi yoga yokohama you youtube "
    "yun zappos zara zero zip zone zuerich";

using Table = std::unordered_map<std::string, Tld>;

void addAll(Table& table, std::string_view words, Tld tld) {
  while (!words.empty()) {
    const std::size_t end = std::min(words.find(' '), words.size());
    table.emplace(std::string(words.substr(0, end)), tld);
    words.remove_prefix(std::min(end + 1, words.size()));
  }
}

void addUnicodeForms(Table& table) {
  UErrorCode error = U_ZERO_ERROR;
  const std::unique_ptr<icu::IDNA> idna(icu::IDNA::createUTS46Instance(0, error));
  if (U_FAILURE(error)) return;
  Table unicode;
  for (const auto& [label, tld] : table) {
    if (!label.starts_with("xn--")) continue;
    std::string form;
    icu::StringByteSink<std::string> sink(&form);
    icu::IDNAInfo info;
    error = U_ZERO_ERROR;
    idna->labelToUnicodeUTF8(label, sink, info, error);
    if (U_SUCCESS(error) && !info.hasErrors()) unicode.emplace(form, tld);
  }
  table.merge(unicode);
}

Table makeTable() {
  Table table;
  table.reserve(2048);
  addAll(table, kPlain, Tld::plain);
  addAll(table, kShortWord, Tld::shortWord);
  addAll(table, kWord, Tld::word);
  addUnicodeForms(table);
  return table;
}

const Table& table() {
  static const Table tlds = makeTable();
  return tlds;
}

}  // namespace

bool mayBeTld(std::string_view label) {
  const auto slot = [](std::string_view word) {
    return (static_cast<unsigned char>(lower(word[0])) * 31u +
            static_cast<unsigned char>(lower(word[1]))) %
           1024u;
  };
  static const std::array<std::uint32_t, 1024> lengths = [&] {
    std::array<std::uint32_t, 1024> result{};
    for (const auto& [known, tld] : table()) {
      if (known.size() >= 2) result[slot(known)] |= 1u << std::min<std::size_t>(known.size(), 31);
    }
    return result;
  }();
  return label.size() >= 2 &&
         (lengths[slot(label)] >> std::min<std::size_t>(label.size(), 31) & 1u) != 0;
}

Tld classifyTld(const std::string& label) {
  const auto found = table().find(label);
  return found == table().end() ? Tld::unknown : found->second;
}

}  // namespace marbelot::detection
