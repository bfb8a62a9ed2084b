// Which of two versions is newer. No state; any thread.
#pragma once

#include <compare>
#include <string_view>

namespace marbelot {

// By the rules of the update framework whose feeds these are: numbers count as numbers, letters in
// front of an end or a number make a version older ("1.0b2" < "1.0"), and missing parts are zeros
// ("1" is "1.0.0"). Total over all texts.
std::weak_ordering compareVersions(std::string_view a, std::string_view b);

}  // namespace marbelot
