// Secrets shortened to their edges, for display.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/text.h"

namespace marbelot {

// Both kinds of ranges as one: sorted, not overlapping.
std::vector<Range> allSecrets(std::vector<Range> keys, const std::vector<Range>& passwords);

// What is hidden where the text is shown: the same, or all of a text that is a password only as a
// whole, since with the mark at its edge it has one kind of characters more: "hunter22)".
std::vector<Range> hiddenRanges(std::string_view text, std::vector<Range> keys,
                                const std::vector<Range>& passwords);

// The text with these ranges, sorted and not overlapping, shortened to their edges.
std::string masked(std::string_view text, const std::vector<Range>& secrets);
// The same with every key and every token that looks like a password.
std::string maskSecrets(std::string_view text);
// The same with nothing but API keys and tokens masked.
std::string maskApiKeys(std::string_view text);
// What may be shown of a text: the same with its hidden ranges.
std::string maskedForDisplay(std::string_view text);

}  // namespace marbelot
