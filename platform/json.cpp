#include "platform/json.h"

#include <rapidjson/reader.h>

namespace marbelot {
namespace {

// Deeper than anything that is ever written; what goes deeper is damaged.
constexpr std::size_t deepestNesting = 128;

// Builds a Value from rapidjson's events, with a stack of its own.
class Builder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Builder> {
 public:
  bool Null() { return true; }  // the same as none
  bool Bool(bool value) { return put(Value(value)); }
  bool Int(int value) { return put(Value(value)); }
  bool Uint(unsigned value) { return put(Value(std::int64_t{value})); }
  bool Int64(std::int64_t value) { return put(Value(value)); }
  bool Uint64(std::uint64_t value) { return put(Value(static_cast<double>(value))); }
  bool Double(double value) { return put(Value(value)); }
  bool String(const char* text, rapidjson::SizeType length, bool) {
    return put(Value(std::string(text, length)));
  }
  bool StartObject() { return open(Value(Value::Dictionary())); }
  bool Key(const char* text, rapidjson::SizeType length, bool) {
    open_.back().key.assign(text, length);
    return true;
  }
  bool EndObject(rapidjson::SizeType) { return close(); }
  bool StartArray() { return open(Value(Value::List())); }
  bool EndArray(rapidjson::SizeType) { return close(); }

  Value take() { return std::move(root_); }

 private:
  struct Level {
    Value container;
    std::string key;
  };
  bool open(Value container) {
    if (open_.size() == deepestNesting) return false;
    open_.push_back({std::move(container), {}});
    return true;
  }
  bool close() {
    Value done = std::move(open_.back().container);
    open_.pop_back();
    return put(std::move(done));
  }
  bool put(Value value) {
    if (open_.empty()) {
      root_ = std::move(value);
    } else if (auto* list = std::get_if<Value::List>(&open_.back().container.data)) {
      list->push_back(std::move(value));
    } else {
      std::get<Value::Dictionary>(open_.back().container.data)
          .emplace_back(std::move(open_.back().key), std::move(value));
    }
    return true;
  }
  Value root_;
  std::vector<Level> open_;
};

}  // namespace

std::optional<Value> valueFromJson(std::string_view json) {
  // Without a terminator a text with NUL bytes would end early.
  rapidjson::MemoryStream bytes(json.data(), json.size());
  rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> stream(bytes);
  rapidjson::Reader reader;
  Builder builder;
  constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag |
                             rapidjson::kParseValidateEncodingFlag;
  if (!reader.Parse<flags>(stream, builder)) return std::nullopt;
  return builder.take();
}

}  // namespace marbelot
