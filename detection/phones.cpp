// Phone numbers: a walk over the digits of the text, and libphonenumber behind a loadable module.
#include <dlfcn.h>

#include <string>
#include <unordered_map>
#include <utility>

#include "detection/finder.h"
#include "detection/phone_filter.h"
#include "detection/phone_module.h"
#include "detection/scan.h"

namespace marbelot::detection {
namespace {

PhoneFunction loadPhoneFunction() {
  // Found by the program's search path; never closed, as the library keeps its tables for the life
  // of the process.
  void* module = dlopen(phoneModule, RTLD_NOW | RTLD_LOCAL);
  return module ? reinterpret_cast<PhoneFunction>(dlsym(module, phoneFunctionName)) : nullptr;
}

PhoneFunction phoneFunction() {
  static const PhoneFunction function = loadPhoneFunction();
  return function;
}

class PhoneFinder final : public TriggerFinder {
 public:
  PhoneFinder(std::string_view text, std::string region)
      : TriggerFinder(text),
        region_(std::move(region)),
        north_american_(isNorthAmerican(region_)) {}

 private:
  // A failed look-up costs up to 200 µs: so many are free in any text, and one more is for so many
  // bytes of it, which keeps the walk above 10 MB/s whatever it meets.
  static constexpr std::size_t freeFailures = 100;
  static constexpr std::size_t bytesPerFailure = 2000;
  static constexpr std::size_t mostAnswers = 4096;

  std::size_t nextTrigger(std::size_t from, std::size_t end) const override {
    return findByte<DigitClass>(text(), from, end);
  }

  std::optional<Detection> examine(std::size_t digit) override;
  MarbelotPhone lookUp(const Stretch& candidate, bool possible);

  std::string region_;
  bool north_american_;
  std::size_t failures_ = 0;
  std::string last_none_;
  std::unordered_map<std::string, MarbelotPhone> answers_;
};

std::optional<Detection> PhoneFinder::examine(std::size_t digit) {
  // Most digits of most texts are not part of seven.
  if (const std::size_t end = fewDigitsEnd(text(), digit)) {
    skipTo(end);
    return std::nullopt;
  }
  Stretch stretch = readStretch(text(), digit, floor());
  // The bracket of a remark around the number.
  const bool codeInBrackets = stretch.count > 1 && stretch.groups[1].separator == '(';
  if (!stretch.plus && !codeInBrackets) stretch.start = digit;
  const std::size_t firstEnd = stretch.groups[0].start + stretch.groups[0].length;
  if (stretch.digits < 7) {
    skipTo(stretch.end());
    return std::nullopt;
  }
  if (const std::size_t last = lastOfColumn(stretch, north_american_)) {
    skipTo(last);
    return std::nullopt;
  }
  // On to the next group when this one cannot start a number, as in "Room 12 202-555-0123".
  const bool dialled = text().substr(digit, 3) == "011";
  const bool formatted = isNationalFormat(text(), stretch, north_american_);
  if (north_american_ && !formatted && !stretch.plus && !dialled &&
      !cutToNorthAmerican(text(), stretch)) {
    skipTo(firstEnd);
    return std::nullopt;
  }
  if (!isPlausible(text(), stretch)) {
    skipTo(resumption(text(), stretch));
    return std::nullopt;
  }
  MarbelotPhone phone = lookUp(stretch, formatted);
  // Two numbers with but a blank between them make no one number.
  if (phone.length == 0 && cutToNational(stretch)) phone = lookUp(stretch, false);
  if (phone.length == 0) {
    skipTo(stretch.end());
    return std::nullopt;
  }
  return Detection{
      DetectionKind::phone, {stretch.start + phone.start, phone.length}, std::string(phone.e164)};
}

MarbelotPhone PhoneFinder::lookUp(const Stretch& candidate, bool possible) {
  const std::size_t at = candidate.start;
  const std::string stretch(text().substr(at, candidate.end() - at));
  if (stretch == last_none_) return {};
  if (const auto known = answers_.find(stretch); known != answers_.end()) return known->second;
  if (failures_ > freeFailures + at / bytesPerFailure) return {};
  const PhoneFunction find = phoneFunction();
  MarbelotPhone phone{};
  if (find == nullptr ||
      find(stretch.data(), stretch.size(), region_.c_str(), possible, &phone) == 0) {
    phone = {};
    ++failures_;
    last_none_ = stretch;
  }
  if (answers_.size() >= mostAnswers) answers_.clear();
  return answers_.emplace(stretch, phone).first->second;
}

}  // namespace

std::unique_ptr<Finder> makePhoneFinder(std::string_view text, const DetectionContext& context) {
  return std::make_unique<PhoneFinder>(text, context.region);
}

}  // namespace marbelot::detection
