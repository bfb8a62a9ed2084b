#include "platform/user_defaults.h"

#include <algorithm>
#include <locale>
#include <sstream>
#include <utility>

#include "platform/ascii.h"

namespace marbelot {
namespace {

std::string wrongTypeMessage(const std::vector<std::string>& keys) {
  if (keys.size() == 1)
    return "The setting " + keys[0] + " has a value of the wrong kind. Its default is used.";
  std::string list;
  for (const std::string& key : keys) list += (list.empty() ? "" : ", ") + key;
  return "Some settings have values of the wrong kind. Their defaults are used: " + list;
}

template <class Number>
std::optional<Number> numberOf(const std::string& word) {
  std::istringstream input(word);
  input.imbue(std::locale::classic());
  Number number{};
  return input >> number && input.peek() == EOF ? std::optional(number) : std::nullopt;
}

// What a flag or a number is that was written as a text, as the system's tool for settings does.
std::optional<Value> meant(const Value& stored, bool (*fits)(const Value&)) {
  const SharedText text = stored.asText();
  constexpr std::size_t longest = 32;
  if (text == nullptr || text->size() > longest) return std::nullopt;
  std::string word = *text;
  std::transform(word.begin(), word.end(), word.begin(), lower);
  std::vector<Value> readings;
  if (word == "1" || word == "yes" || word == "true") readings.emplace_back(true);
  if (word == "0" || word == "no" || word == "false") readings.emplace_back(false);
  if (const auto whole = numberOf<std::int64_t>(word)) readings.emplace_back(*whole);
  if (const auto number = numberOf<double>(word)) readings.emplace_back(*number);
  const auto found = std::find_if(readings.begin(), readings.end(), fits);
  return found == readings.end() ? std::nullopt : std::optional(*found);
}

}  // namespace

std::optional<Value> UserDefaults::value(std::string_view key) const {
  if (auto found = storedValue(key)) return found;
  const auto registered = registered_.find(key);
  return registered == registered_.end() ? std::nullopt : std::optional(registered->second);
}

void UserDefaults::registerDefaults(const Value::Dictionary& values) {
  for (const auto& [key, value] : values) registered_.insert_or_assign(key, value);
}

std::optional<Value> UserDefaults::valueOfType(std::string_view key,
                                               bool (*fits)(const Value&)) const {
  if (auto found = storedValue(key)) {
    if (fits(*found)) return found;
    if (auto read = meant(*found, fits)) return read;
    if (wrongKeys_.emplace(key).second) {
      if (problem_) {
        report(wrongTypeMessage({std::string(key)}));
      } else {
        untoldKeys_.emplace_back(key);
      }
    }
  }
  const auto registered = registered_.find(key);
  if (registered == registered_.end() || !fits(registered->second)) return std::nullopt;
  return registered->second;
}

bool UserDefaults::boolFor(std::string_view key) const {
  const auto found =
      valueOfType(key, [](const Value& value) { return value.asBool().has_value(); });
  return found && *found->asBool();
}

SharedText UserDefaults::textFor(std::string_view key) const {
  const auto found = valueOfType(key, [](const Value& value) { return value.asText() != nullptr; });
  return found ? found->asText() : nullptr;
}

std::vector<SharedText> UserDefaults::textListFor(std::string_view key) const {
  const auto found = valueOfType(key, [](const Value& value) { return value.asList() != nullptr; });
  return found ? *found->asTexts() : std::vector<SharedText>();
}

void UserDefaults::setProblemHandler(std::function<void(const std::string&)> handler) {
  problem_ = std::move(handler);
  if (!problem_) return;
  for (const std::string& message : std::exchange(untold_, {})) problem_(message);
  const auto keys = std::exchange(untoldKeys_, {});
  if (!keys.empty()) problem_(wrongTypeMessage(keys));
}

void UserDefaults::report(const std::string& message) const {
  if (problem_) {
    problem_(message);
  } else {
    untold_.push_back(message);
  }
}

}  // namespace marbelot
