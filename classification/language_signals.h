// The signals that a text must carry before it is given a language's name, however much else speaks
// for that language.
#pragma once

#include <string_view>

#include "classification/language_clues.h"

namespace marbelot {

// Linear in the text for every language.
bool carriesSignal(Language language, std::string_view text);

// Braces or brackets around the whole text, a quoted key, and nothing but values between them.
bool isJson(std::string_view text);

}  // namespace marbelot
