// The files that a file manager has copied.
#pragma once

#include <string>
#include <string_view>

namespace marbelot {

// The path in a file URL, empty for any other.
std::string pathOfFileUrl(std::string_view url);

// The path of the first file in a list of URLs, one a line (text/uri-list), also behind the line
// that says what to do with them (x-special/gnome-copied-files); empty when there is none.
std::string firstFile(std::string_view list);

}  // namespace marbelot
