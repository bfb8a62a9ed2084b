// Host names and addresses as they stand in text.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace marbelot::detection {

// Whether the character beside a dot belongs to a script that is written without spaces, where a
// host name in Latin letters may touch the words around it.
bool isWide(char32_t c);

// Whether a run of host characters around the dot (or after the "@") at `at` includes wide letters.
bool wideAround(std::string_view text, std::size_t at);

// Where the label that ends at `end` starts, not before `floor`; looks back over 64 bytes at most.
std::size_t labelStart(std::string_view text, std::size_t end, std::size_t floor, bool wide);
// The end of the labels joined by single dots that start at `start`. Symbols are part of a name
// only where a scheme says that one is to come.
enum class Symbols { excluded, allowed };
std::size_t hostEnd(std::string_view text, std::size_t start, bool wide,
                    Symbols symbols = Symbols::excluded);

// The host in ASCII, other scripts in punycode; nothing when it is no valid name of labels with a
// letter in one of them, and no IPv4 address.
std::optional<std::string> asciiHost(std::string_view host);

bool isIpv4(std::string_view host);
bool isIpv6(std::string_view host);  // without brackets

// The last of several labels, in lower case; empty when there is none that could be a domain.
std::string lastLabel(std::string_view host);

}  // namespace marbelot::detection
