// JSON (RFC 8259) as plain data.
#pragma once

#include <optional>
#include <string_view>

#include "platform/value.h"

namespace marbelot {

// None when it is not JSON, not valid UTF-8 or nested deeper than anybody writes. `null`
// leaves out the list's element or the dictionary's entry. Any thread.
std::optional<Value> valueFromJson(std::string_view json);

}  // namespace marbelot
