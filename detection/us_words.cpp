#include "detection/us_words.h"

#include "detection/tokens.h"
#include "platform/ascii.h"

namespace marbelot::detection {
namespace {

Token read(std::string_view text, std::size_t at) { return tokenAt(text, at, Hyphens::join); }

bool isUpperWord(std::string_view text, const Token& token) {
  for (std::size_t i = token.range.start; i < token.end(); ++i) {
    if (!isUpper(text[i])) return false;
  }
  return token.isWord();
}

bool isStateCode(const std::string& word) {
  static const WordSet codes(
      "al ak az ar ca co ct de fl ga hi id il in ia ks ky la me md ma mi mn ms mo mt ne nv nh nj "
      "nm ny nc nd oh ok or pa ri sc sd tn tx ut vt va wa wv wi wy dc pr gu vi as mp aa ae ap");
  return codes.has(word);
}

// As newspapers shorten them.
bool isStateAbbreviation(const std::string& word) {
  static const WordSet words(
      "ala ariz ark calif cal colo conn del fla ill ind kan kans mass mich minn miss mont neb nebr "
      "nev okla ore oreg penn penna tenn tex wash wis wisc wyo");
  return words.has(word);
}

bool isStateName(const std::string& words) {
  static const WordSet names(
      "alabama alaska arizona arkansas california colorado connecticut delaware florida georgia "
      "hawaii idaho illinois indiana iowa kansas kentucky louisiana maine maryland massachusetts "
      "michigan minnesota mississippi missouri montana nebraska nevada new-hampshire new-jersey "
      "new-mexico new-york north-carolina north-dakota ohio oklahoma oregon pennsylvania "
      "puerto-rico rhode-island south-carolina south-dakota tennessee texas utah vermont virginia "
      "washington west-virginia wisconsin wyoming guam");
  return names.has(words);
}

// "D.C.", "N.Y.", "N. J.": the end of two capitals with stops; 0 for none.
std::size_t dottedCodeEnd(std::string_view text, std::size_t at) {
  const auto capital = [&](std::size_t i) {
    return isUpper(byteAt(text, i)) && byteAt(text, i + 1) == '.';
  };
  if (!capital(at)) return 0;
  const std::size_t second = at + 2 + (byteAt(text, at + 2) == ' ');
  if (!capital(second) || isAlnum(byteAt(text, second + 2))) return 0;
  const std::string code{lower(text[at]), lower(text[second])};
  return isStateCode(code) ? second + 2 : 0;
}

}  // namespace

bool isLeadingStreetType(const std::string& word) {
  static const WordSet words(
      "broadway avenue avenida calle camino caminito via paseo rue route highway bowery");
  return words.has(word);
}

bool isRoadNumbered(const std::string& word) {
  static const WordSet words(
      "highway hwy route rte rt road rd fm rm sr sh cr us interstate county loop parkway pkwy "
      "bypass "
      "hiway "
      "street avenue calle");
  return words.has(word);
}

UnitWord usUnit(const std::string& word) {
  static const WordSet numbered(
      "apt apartment suite ste unit floor fl room rm building bldg department dept hangar hngr "
      "trailer trlr slip spc space lot pier shop level flat tower box bay office ofc stop key no "
      "mailstop pmb");
  static const WordSet places("basement bsmt penthouse ph lobby lbby lowr uppr frnt");
  static const WordSet everyday(
      "key lot pier slip space stop front side rear lower upper office bay tower box no shop unit "
      "level flat");
  if (everyday.has(word)) return UnitWord::everyday;
  return places.has(word)     ? UnitWord::place
         : numbered.has(word) ? UnitWord::numbered
                              : UnitWord::none;
}

State readState(std::string_view text, std::size_t at) {
  const Token token = read(text, at);
  if (!token.isWord() || !isAscii(text[token.range.start])) return {};
  if (isAlnum(byteAt(text, token.end()))) return {};  // "LA22"
  if (const std::size_t end = dottedCodeEnd(text, token.range.start)) return {end, true, false};
  if (token.range.length == 2 && isStateCode(token.lower)) {
    return {token.end(), isUpperWord(text, token), false};
  }
  const Token next = read(text, token.end());
  if (next.isWord() && next.spaced && isStateName(token.lower + '-' + next.lower)) {
    return {next.end(), false, true};
  }
  if (isStateName(token.lower)) return {token.end(), false, true};
  if (!isStateAbbreviation(token.lower)) return {};
  return {token.end() + (byteAt(text, token.end()) == '.'), false, false};
}

std::size_t readZip(std::string_view text, std::size_t at) {
  Token token = read(text, at);
  for (int i = 0; i < 2 && (token.is(',') || token.kind == Token::Kind::newline); ++i) {
    token = read(text, token.end());
  }
  if (!token.isNumber() || token.range.length != 5) return 0;
  std::size_t end = token.end();
  if (byteAt(text, end) == '-' && isDigit(byteAt(text, end + 1))) {
    const Token more = read(text, end + 1);
    if (!more.isNumber() || more.range.length != 4) return 0;
    end = more.end();
  }
  const char next = byteAt(text, end);
  if (isAlpha(next) || next == '_' || next == '%' || next == '-') return 0;
  return (next == '.' || next == ',') && isDigit(byteAt(text, end + 1)) ? 0 : end;
}

}  // namespace marbelot::detection
