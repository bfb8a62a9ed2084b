// Plain data that crosses the seam: shared immutable bytes and the values of settings.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace marbelot {

// Immutable bytes with shared ownership: a 100 MB copy exists once, whoever holds it.
using SharedBytes = std::shared_ptr<const std::string>;
// The same, holding valid UTF-8.
using SharedText = std::shared_ptr<const std::string>;

inline SharedText share(std::string text) {
  return std::make_shared<const std::string>(std::move(text));
}

// What a user default can hold. Texts are shared, so that storing one does not copy it.
struct Value {
  using List = std::vector<Value>;
  using Dictionary = std::vector<std::pair<std::string, Value>>;
  std::variant<bool, std::int64_t, double, SharedText, List, Dictionary> data;

  Value() : data(false) {}
  Value(bool value) : data(value) {}
  Value(int value) : data(std::int64_t{value}) {}
  Value(std::int64_t value) : data(value) {}
  Value(double value) : data(value) {}
  Value(SharedText value) : data(std::move(value)) {}
  Value(std::string value) : data(share(std::move(value))) {}
  Value(const char* value) : data(share(value)) {}
  Value(List value) : data(std::move(value)) {}
  Value(Dictionary value) : data(std::move(value)) {}

  // Each gives none when the value is of another type; a whole number also reads as a bool and as
  // a double.
  std::optional<bool> asBool() const;
  std::optional<std::int64_t> asInteger() const;
  std::optional<double> asDouble() const;
  SharedText asText() const;
  // The texts of a list; entries of other types are left out.
  std::optional<std::vector<SharedText>> asTexts() const;
  const List* asList() const;
  const Dictionary* asDictionary() const;
};

// The value under `key`, or null.
const Value* find(const Value::Dictionary& dictionary, std::string_view key);

// What others may have written in any form: each gives null, or what is empty, when the object is
// no dictionary, or there is nothing of the type under `key`.
const Value* field(const Value& object, std::string_view key);
const Value::List& listIn(const Value& object, std::string_view key);
SharedText textIn(const Value& object, std::string_view key);
std::int64_t integerIn(const Value& object, std::string_view key);  // else 0
bool isSet(const Value& object, std::string_view key);

}  // namespace marbelot
