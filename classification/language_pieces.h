// What tells a piece cut out of the middle of a source, where none of the language's signals is.
#pragma once

#include <optional>
#include <string_view>

#include "classification/language_clues.h"

namespace marbelot {

// Lines of JSON and nothing else, with a key among them; brackets need not be balanced.
bool isJsonPiece(std::string_view text);

// A tag that pages have and other markup seldom.
bool holdsPageTag(std::string_view text);

// The language of the program that a script names to run it, where its first line does: "#!
// /bin/sh".
std::optional<Language> interpreted(std::string_view text);

// A line with a shell's prompt: a session, whatever was typed in it.
bool holdsPrompt(std::string_view text);

}  // namespace marbelot
