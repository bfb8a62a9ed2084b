// The user's settings: one persistent dictionary. Main thread only.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/value.h"

namespace marbelot {

class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  // The stored value, else the registered one, else none.
  virtual std::optional<Value> value(std::string_view key) const = 0;

  // Stores the value. A store of ordinary size (under 256 KB) is on disk when this returns; a
  // larger one is written in the background, newest state last, and always completed before the
  // program ends by itself. However the program ends, the stored state is one that was set, whole;
  // so it is after a power failure where the file system keeps writes before a rename, as ext4
  // does.
  virtual void set(std::string_view key, Value value) = 0;

  // Values used for absent keys; never stored.
  virtual void registerDefaults(Value::Dictionary values) = 0;

  // Called once per kind of trouble (a damaged file that was put aside, a disk that is full), with
  // one line for the user. Trouble from before this call is reported right away.
  virtual void setProblemHandler(std::function<void(const std::string&)> handler) = 0;

  // Typed reading; a value of another type counts as absent.
  bool boolFor(std::string_view key) const {
    const auto found = value(key);
    return found && found->asBool().value_or(false);
  }
  SharedText textFor(std::string_view key) const {
    const auto found = value(key);
    return found ? found->asText() : nullptr;
  }
  // The texts of a list; entries of other types are left out.
  std::vector<SharedText> textListFor(std::string_view key) const {
    std::vector<SharedText> texts;
    const auto found = value(key);
    if (!found || !found->asList()) return texts;
    for (const Value& entry : *found->asList())
      if (const SharedText text = entry.asText()) texts.push_back(text);
    return texts;
  }
};

}  // namespace marbelot
