// Texts as the value of a URL's query.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace marbelot {

struct EncodedText {
  std::string text;
  bool whole = true;  // false: what is encoded is only the beginning
};

// Percent-encodes what may not stand in the query of a URL (RFC 3986, 3.4), in capital digits. What
// may stand there stays, "&", "+" and "=" too. No longer than `maximumBytes`: of a longer text it
// is the beginning, which ends between two characters.
EncodedText percentEncoded(std::string_view text, std::size_t maximumBytes);

// A URL with each "%" that begins no escape as "%25": browsers take the others as they stand, but
// most of what else reads URLs refuses them.
std::string withWholeEscapes(std::string_view url);

}  // namespace marbelot
