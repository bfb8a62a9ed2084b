#include "platform/user_defaults.h"

#include <utility>

namespace marbelot {
namespace {

std::string wrongTypeMessage(const std::vector<std::string>& keys) {
  if (keys.size() == 1)
    return "The setting " + keys[0] + " has a value of the wrong kind. Its default is used.";
  std::string list;
  for (const std::string& key : keys) list += (list.empty() ? "" : ", ") + key;
  return "Some settings have values of the wrong kind. Their defaults are used: " + list;
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
