// What menus show of a text: its beginning, with every secret in it masked.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "classification/masking.h"

namespace marbelot {

constexpr std::size_t titleWindowBytes = std::size_t{16} << 10;

// The beginning of the text, long enough for the titles of all texts but odd ones (those that begin
// with pages of blanks). It parts no word, so that a secret in it is recognised, unless the word is
// longer than half of the window; and no CR LF is ever parted. The whole text when it is not much
// longer.
std::string_view titleWindow(std::string_view text, std::size_t bytes = titleWindowBytes);

// What hides the secrets in a text; maskApiKeys where the text is the user's own.
using Mask = std::string (*)(std::string_view);

// mask(titleWindow(text, bytes)). A word that the window's end parts counts as a secret as far as a
// token may reach, because nobody knows what it is without its rest.
std::string maskedWindow(std::string_view text, Mask mask = maskedForDisplay,
                         std::size_t bytes = titleWindowBytes);

// quotedPreview with secrets masked. Costs the same on a text of any size.
std::string maskedPreview(std::string_view text, std::size_t limit, Mask mask = maskedForDisplay);

}  // namespace marbelot
