// What is new in a version, as text. No state; any thread.
#pragma once

#include <string>
#include <string_view>

namespace marbelot {

// The words of a piece of HTML, with paragraphs and list items on lines of their own. Total over
// all bytes; cut at a length that nobody reads to the end.
std::string pageText(std::string_view html);
// A text as it stands, made fit for display, and cut likewise.
std::string plainText(std::string_view given);

}  // namespace marbelot
