// The user's languages as Tesseract names its files for them.
#pragma once

#include <string>
#include <vector>

namespace marbelot {

// From the environment's locale, the most wanted first; e.g. {"deu", "eng"} for "de:en_GB". Empty
// where it names none.
std::vector<std::string> recognizerLanguages();

}  // namespace marbelot
