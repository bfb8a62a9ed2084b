// A setting: its key, its default, its type, the menu item that turns it on and off, and its value,
// in one declaration that the owning feature holds.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/user_defaults.h"
#include "shell/shell.h"

namespace marbelot {

// How a type is kept among the user defaults; `from` gives none for a value of another type.
template <class T>
struct SettingForm;

template <>
struct SettingForm<bool> {
  static std::optional<bool> from(const Value& value) { return value.asBool(); }
  static Value to(bool value) { return value; }
};

template <>
struct SettingForm<std::int64_t> {
  static std::optional<std::int64_t> from(const Value& value) { return value.asInteger(); }
  static Value to(std::int64_t value) { return value; }
};

template <>
struct SettingForm<double> {
  static std::optional<double> from(const Value& value) { return value.asDouble(); }
  static Value to(double value) { return value; }
};

template <>
struct SettingForm<std::string> {
  static std::optional<std::string> from(const Value& value) {
    const SharedText text = value.asText();
    return text ? std::optional(*text) : std::nullopt;
  }
  static Value to(const std::string& value) { return value; }
};

// Lists of texts; entries of other types are left out.
template <>
struct SettingForm<std::vector<SharedText>> {
  static std::optional<std::vector<SharedText>> from(const Value& value) { return value.asTexts(); }
  static Value to(const std::vector<SharedText>& value) {
    return Value::List(value.begin(), value.end());
  }
};

template <>
struct SettingForm<std::vector<std::string>> {
  static std::optional<std::vector<std::string>> from(const Value& value) {
    const auto texts = value.asTexts();
    if (!texts) return std::nullopt;
    std::vector<std::string> strings;
    for (const SharedText& text : *texts) strings.push_back(*text);
    return strings;
  }
  static Value to(const std::vector<std::string>& value) {
    return Value::List(value.begin(), value.end());
  }
};

// What the launch does with every setting, whatever its type.
class LaunchSetting {
 public:
  virtual void registerDefault() = 0;
  virtual void read() = 0;

 protected:
  ~LaunchSetting() = default;
};

struct Toggle {
  const char* title = "";
  const char* action = "";
};

struct SettingOptions {
  bool registered = false;  // whether the user defaults are told the fallback at launch
  Toggle toggle = {};       // of a bool, if a menu item turns it on and off
};

// Main thread only; the defaults outlive it.
template <class T>
class Setting final : public LaunchSetting {
 public:
  // `fallback` is the value while nothing of the right type is stored.
  Setting(UserDefaults& defaults, const char* key, T fallback = {}, SettingOptions options = {})
      : defaults_(defaults), key_(key), fallback_(std::move(fallback)), options_(options) {}
  Setting(const Setting&) = delete;
  Setting& operator=(const Setting&) = delete;

  const char* key() const { return key_; }
  void registerDefault() override {
    if (options_.registered) defaults_.registerDefaults({{key(), SettingForm<T>::to(fallback_)}});
  }

  // What is stored now, or registered; none when that is nothing of this type.
  std::optional<T> stored() const {
    const auto fits = [](const Value& value) { return SettingForm<T>::from(value).has_value(); };
    const auto found = defaults_.valueOfType(key(), fits);
    return found ? SettingForm<T>::from(*found) : std::nullopt;
  }

  // The value as it was read or set last; it is read when it is first asked for, at the latest.
  const T& get() const {
    if (!value_) value_ = stored().value_or(fallback_);
    return *value_;
  }
  operator const T&() const { return get(); }
  const T& operator*() const { return get(); }
  const T* operator->() const { return &get(); }
  void read() override {
    value_.reset();
    get();
  }

  // Stores the value at once.
  Setting& operator=(T value) {
    edit() = std::move(value);
    store();
    return *this;
  }
  // For changes that store() is to follow.
  T& edit() {
    get();
    return *value_;
  }
  void store() { defaults_.set(key(), SettingForm<T>::to(get())); }

  // The item that turns the setting on and off; checked while it is on.
  MenuItemRef addToggle(Menu& menu) const {
    MenuItemRef item = menu.add(options_.toggle.title, options_.toggle.action);
    item->checked = get();
    return item;
  }
  // The action of that item: flips the setting, stores it, rebuilds the menu, and then does what
  // the feature adds. The shell outlives the table.
  void offerToggle(ActionTable& actions, Shell& shell, std::function<void()> then = {}) {
    actions.add(options_.toggle.action, [this, &shell, then = std::move(then)](const MenuItem&) {
      *this = !get();
      shell.rebuildMenu();
      if (then) then();
    });
  }

 private:
  UserDefaults& defaults_;
  const char* const key_;
  const T fallback_;
  const SettingOptions options_;
  mutable std::optional<T> value_;  // none until it is read
};

}  // namespace marbelot
