// The user's settings: one persistent dictionary. Main thread only.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/value.h"

namespace marbelot {

class UserDefaults {
 public:
  virtual ~UserDefaults() = default;

  // The stored value, else the registered one, else none.
  std::optional<Value> value(std::string_view key) const;

  // Stores the value. It is on disk when this returns, but for texts of over 8 MB: each of them is
  // written in the background and missing from its list or dictionary until then. (So is a state
  // that, without its texts of over 32 KB, has more than 4 MB; the newest is written last.) All is
  // completed before the program ends by itself. However it ends otherwise, the stored state is one
  // that was set. A power failure can take the texts of the last half minute: nothing here waits
  // for a disk.
  virtual void set(std::string_view key, Value value) = 0;

  // Adds to the values that stand in for absent ones; never stored.
  void registerDefaults(const Value::Dictionary& values);

  // Called once per kind of trouble (a damaged file that was put aside, a disk that is full, values
  // of the wrong type), with one line for the user. Trouble from before this call is reported right
  // away.
  void setProblemHandler(std::function<void(const std::string&)> handler);

  // Typed reading. A stored value of another type counts as absent, and the user is told of it.
  std::optional<Value> valueOfType(std::string_view key, bool (*fits)(const Value&)) const;
  bool boolFor(std::string_view key) const;
  SharedText textFor(std::string_view key) const;  // null when there is none
  // The texts of a list; entries of other types are left out.
  std::vector<SharedText> textListFor(std::string_view key) const;

 protected:
  virtual std::optional<Value> storedValue(std::string_view key) const = 0;
  void report(const std::string& message) const;

 private:
  std::map<std::string, Value, std::less<>> registered_;
  std::function<void(const std::string&)> problem_;
  // What was found before there was anybody to tell.
  mutable std::vector<std::string> untold_;
  mutable std::vector<std::string> untoldKeys_;
  mutable std::set<std::string, std::less<>> wrongKeys_;  // holding values of the wrong type
};

}  // namespace marbelot
