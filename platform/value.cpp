#include "platform/value.h"

namespace marbelot {

std::optional<bool> Value::asBool() const {
  if (const auto* flag = std::get_if<bool>(&data)) return *flag;
  if (const auto* number = std::get_if<std::int64_t>(&data)) return *number != 0;
  return std::nullopt;
}

std::optional<std::int64_t> Value::asInteger() const {
  if (const auto* number = std::get_if<std::int64_t>(&data)) return *number;
  return std::nullopt;
}

std::optional<double> Value::asDouble() const {
  if (const auto* number = std::get_if<double>(&data)) return *number;
  if (const auto* number = std::get_if<std::int64_t>(&data)) return static_cast<double>(*number);
  return std::nullopt;
}

SharedText Value::asText() const {
  const auto* text = std::get_if<SharedText>(&data);
  return text ? *text : nullptr;
}

std::optional<std::vector<SharedText>> Value::asTexts() const {
  const List* entries = asList();
  if (!entries) return std::nullopt;
  std::vector<SharedText> texts;
  for (const Value& entry : *entries)
    if (const SharedText text = entry.asText()) texts.push_back(text);
  return texts;
}

const Value::List* Value::asList() const { return std::get_if<List>(&data); }

const Value::Dictionary* Value::asDictionary() const { return std::get_if<Dictionary>(&data); }

const Value* find(const Value::Dictionary& dictionary, std::string_view key) {
  for (const auto& [name, value] : dictionary)
    if (name == key) return &value;
  return nullptr;
}

const Value* field(const Value& object, std::string_view key) {
  const auto* const fields = object.asDictionary();
  return fields ? find(*fields, key) : nullptr;
}

const Value::List& listIn(const Value& object, std::string_view key) {
  static const Value::List none;
  const Value* const found = field(object, key);
  return found && found->asList() ? *found->asList() : none;
}

SharedText textIn(const Value& object, std::string_view key) {
  const Value* const found = field(object, key);
  return found ? found->asText() : nullptr;
}

std::int64_t integerIn(const Value& object, std::string_view key) {
  const Value* const found = field(object, key);
  return found ? found->asInteger().value_or(0) : 0;
}

bool isSet(const Value& object, std::string_view key) {
  const Value* const found = field(object, key);
  return found && found->asBool().value_or(false);
}

}  // namespace marbelot
