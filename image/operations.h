// The operations on a picture, in one table: menus, actions, op strings ("rotate:90"), messages and
// the command line all follow from it. An operation is one file of pixels and one row here.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "image/color.h"
#include "image/result.h"

namespace marbelot {

// The argument that a menu item carries for an operation.
using EditParameter = std::variant<std::monostate, PixelColor, std::string, std::int64_t, double>;

// An operation with its arguments: what it does to a picture, and what is said when it is done.
struct Edit {
  // May be called on any thread, any number of times.
  std::function<Result(const Bitmap&)> apply;
  std::string message;
};

// An item of an operation's submenu. Without arguments it is a disabled heading, or a separator
// when it has no title either.
struct EditChoice {
  std::string_view title;
  std::string_view arguments;  // as in an op string, e.g. "grow:small"
};

struct Operation {
  std::string_view verb;       // the first word of its op strings
  std::string_view selector;   // of the menu items' action
  std::string_view menuTitle;  // of its submenu
  bool startsSection;          // a separator stands before it in the menu
  std::span<const EditChoice> choices;
  // Said when there is no result: as for a picture that cannot be read when there is none here,
  // nothing when it is empty. A refusal is always told as a picture that cannot be read.
  std::optional<std::string_view> failureMessage;

  // The menu's parameter that the words of an op string stand for; missing words have defaults.
  EditParameter (*parameter)(std::span<const std::string_view> words);
  // None when the parameter is of the wrong type.
  std::optional<Edit> (*edit)(const EditParameter& parameter);

  EditParameter parameterOf(const EditChoice& choice) const;
};

// In the order of the menu.
std::span<const Operation> operations();

// What to say of a result that is none; `unreadable` is what is said of pictures that cannot be
// read. Empty: nothing.
std::string_view failureMessage(const Operation& operation, const Result& result,
                                std::string_view unreadable);

// Op strings: words between colons, empty ones dropped; the first is the verb.
struct NamedEdit {
  const Operation* operation;
  Edit edit;
};
// None for an unknown verb. Arguments that say nothing stand for the defaults.
std::optional<NamedEdit> namedEdit(std::string_view op);

// What an op string makes of a picture, or none.
std::optional<Bitmap> apply(std::string_view op, const Bitmap& picture);

}  // namespace marbelot
