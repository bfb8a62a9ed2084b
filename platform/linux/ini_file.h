// Settings files of other programs. No state; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace marbelot {

// The value of the first line `key=value` of an INI-like file, optionally only within [section].
// None when there is no such line, or nothing in it.
std::optional<std::string> iniValue(const std::string& path, std::string_view section,
                                    std::string_view key);

// What Qt's QSettings means by a value: there, "\xe9" stands for a unit of UTF-16 that is not
// ASCII, and a backslash is doubled.
std::string withoutQtEscapes(std::string_view value);

}  // namespace marbelot
