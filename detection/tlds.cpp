#include "detection/tlds.h"

#include <libpsl.h>

#include <algorithm>

#include "detection/tokens.h"
#include "platform/ascii.h"

namespace marbelot::detection {
namespace {

// Countries whose code is a common word: "example.it", but not "do.it".
bool isShortWord(const std::string& label) {
  static const WordSet labels("at be in it me my no us");
  return labels.has(label);
}

// Countries whose code is a file extension or the member of an object, and whose hosts are hardly
// ever seen bare.
bool isWordOfCode(const std::string& label) {
  static const WordSet labels(
      "ac am as by bz cc cl do gd gs hm id is la md mk ml mm mo ms ne om pl pm ps py re rs sc sh "
      "so "
      "sr st sv tf tm to tt va vi");
  return labels.has(label);
}

// Of the generic domains those that are seen in running text; the others are words and names.
bool isUsual(const std::string& label) {
  static const WordSet labels(
      "academy aero agency amsterdam asia attorney bayern berlin bike biz blog boston boutique "
      "brussels bzh capetown clinic cloud club college cologne com community company consulting "
      "coop corsica dental dev digital domains durban edu email engineering enterprises eus "
      "foundation gal gmbh gov guru hamburg hosting inc industries info institute "
      "international istanbul jobs joburg koeln kyoto lawyer llc london ltd management marketing "
      "melbourne miami mil mobi moscow museum net ngo nyc ong online org osaka paris photography "
      "quebec restaurant rio ruhr saarland scot services shop software solutions studio sydney "
      "systems tech technology tirol tokyo travel university vegas ventures vlaanderen wales "
      "website wien wiki xyz");
  return labels.has(label);
}

}  // namespace

Tld classifyTld(const std::string& label) {
  const bool foreign = !std::all_of(label.begin(), label.end(), isAscii);
  if (foreign || label.starts_with("xn--")) return Tld::plain;
  if (isShortWord(label)) return Tld::shortWord;
  const bool believed = label.size() == 2 ? !isWordOfCode(label) : isUsual(label);
  return believed ? Tld::plain : Tld::word;
}

bool isTld(const std::string& label) {
  // The list built into the library, as loading a newer one takes milliseconds.
  static const psl_ctx_t* const list = psl_builtin() ? psl_builtin() : psl_latest(nullptr);
  return list != nullptr &&
         psl_is_public_suffix2(list, label.c_str(), PSL_TYPE_ICANN | PSL_TYPE_NO_STAR_RULE) == 1;
}

}  // namespace marbelot::detection
