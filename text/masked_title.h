// What menus show of a text: its beginning, with every secret in it masked.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace marbelot {

// The beginning of the text, long enough for the titles of all texts but odd ones (those that begin
// with pages of blanks). It ends where no word is parted, so that a secret in it is recognised; and
// no CR LF is parted either. The whole text when it is not much longer.
std::string_view titleWindow(std::string_view text);

// quotedPreview with secrets masked. Costs the same on a text of any size.
std::string maskedPreview(std::string_view text, std::size_t limit);

}  // namespace marbelot
