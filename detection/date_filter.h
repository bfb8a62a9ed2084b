// Whether a number or a word may begin a date or a time at all, told by what stands right behind
// it: most numbers count something else, and that is seen before anything is read twice.
#pragma once

#include "detection/date_source.h"

namespace marbelot::detection {

// `first` is a number.
bool mayStartDate(const DateSource& source, const Token& first);
// `first` is a word with that meaning.
bool mayStartDate(const DateSource& source, const Token& first, const DateWord& meaning);

}  // namespace marbelot::detection
