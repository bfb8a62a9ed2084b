// The services on the web that text actions lead to. None of them asks who you are but the mail.
#pragma once

#include <cstddef>
#include <string_view>

namespace marbelot {

// Each ends where the percent-encoded text begins.
namespace endpoints {
inline constexpr std::string_view webSearch = "https://search.brave.com/search?q=";
inline constexpr std::string_view mapSearch = "https://maps.apple.com/?q=";  // opens Maps on a Mac
inline constexpr std::string_view composeTo = "https://mail.google.com/mail/?view=cm&fs=1&to=";
inline constexpr std::string_view composeBody = "https://mail.google.com/mail/?view=cm&fs=1&body=";
}  // namespace endpoints

// What browsers would take is far more than what servers do: their usual limit on a request's first
// line is 8192 bytes.
inline constexpr std::size_t longestQuery = 8000;  // bytes, percent-encoded
// A program is started with the link as an argument, and those are limited to 128 KB.
inline constexpr std::size_t longestLink = 100'000;  // bytes

}  // namespace marbelot
