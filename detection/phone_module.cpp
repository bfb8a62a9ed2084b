#include "detection/phone_module.h"

// Headers of others, with warnings of their own.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#include <phonenumbers/logger.h>
#include <phonenumbers/phonenumber.pb.h>
#include <phonenumbers/phonenumbermatch.h>
#include <phonenumbers/phonenumbermatcher.h>
#include <phonenumbers/phonenumberutil.h>
#pragma GCC diagnostic pop

#include <cstring>
#include <string>

namespace {

using i18n::phonenumbers::PhoneNumberMatch;
using i18n::phonenumbers::PhoneNumberMatcher;
using i18n::phonenumbers::PhoneNumberUtil;

// The stretch may hold a number and a piece of the next; more tries than that lead nowhere.
constexpr int tries = 8;

}  // namespace

extern "C" __attribute__((visibility("default"))) int marbelotPhoneFind(const char* stretch,
                                                                        std::size_t length,
                                                                        const char* region,
                                                                        int possible,
                                                                        MarbelotPhone* found) {
  const PhoneNumberUtil& util = *PhoneNumberUtil::GetInstance();
  PhoneNumberMatcher matcher(util, std::string(stretch, length), region,
                             possible ? PhoneNumberMatcher::POSSIBLE : PhoneNumberMatcher::VALID,
                             tries);
  PhoneNumberMatch match;
  if (!matcher.HasNext() || !matcher.Next(&match)) return 0;
  std::string e164;
  util.Format(match.number(), PhoneNumberUtil::E164, &e164);
  if (e164.size() >= sizeof found->e164) return 0;
  found->start = static_cast<std::size_t>(match.start());
  found->length = static_cast<std::size_t>(match.length());
  std::memcpy(found->e164, e164.c_str(), e164.size() + 1);
  return 1;
}
