// Flatten and trim: the text operations, and the short renderings of them that menu titles show.
// Text is UTF-8; characters are those a user sees. A CR LF is one character, neither LF nor CR: it
// never cuts a line in two when flattening.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace marbelot {

struct FlattenDef {
  std::string_view title;
  std::string_view separator;
  std::string_view keyEquivalent;  // in the status menu; empty: none
};

inline constexpr std::array<FlattenDef, 4> flattenDefs{{
    {"One line (spaces)", " ", "f"},
    {"Mashed (no spaces)", "", "m"},
    {"Comma-separated", ", ", ""},
    {"Pipe-separated", " | ", ""},
}};

struct TrimDef {
  std::string_view title;
  std::string_view mode;
};

inline constexpr std::array<TrimDef, 3> trimDefs{{
    {"Trim left (leading)", "left"},
    {"Trim right (trailing)", "right"},
    {"Trim both sides", "both"},
}};

// Whether flattening applies: some character is an LF or a CR.
bool hasLineBreak(std::string_view text);

// The lines of `text`, trimmed of blanks, the empty ones left out, joined with `separator`.
std::string flatten(std::string_view text, std::string_view separator);

// `text` with the blanks at the start of each line ("left"), at its end ("right") or at both (any
// other mode) removed. Lines end at LF alone and their number stays the same.
std::string trim(std::string_view text, std::string_view mode);

// What a flatten preview is made of. Views into the text, which must outlive it.
struct FlattenHead {
  std::string_view first, second;  // trimmed; empty when there are fewer lines
  bool more = false;               // there are further lines
};

// Reads no further than it must; one head serves the previews of all separators.
FlattenHead flattenHead(std::string_view text);

// “…end of line 1” + separator + “start of line 2… …”, or the quoted preview of a single line.
std::string flattenPreview(const FlattenHead& head, std::string_view separator);
std::string flattenPreview(std::string_view text, std::string_view separator);

// The first `limit` characters of `text` in quotes, line breaks shown as "⏎"; "(empty)" for none.
// Costs the same on a text of any size.
std::string quotedPreview(std::string_view text, std::size_t limit);

// quotedPreview(trim(text, mode), limit), reading only as much of `text` as that shows.
std::string trimPreview(std::string_view text, std::string_view mode, std::size_t limit);

// Pieces of `text` between LFs, at least 1.
std::size_t lineCount(std::string_view text);

// "Clipboard — 4 chars, 2 lines"; "chars" has no singular.
std::string viewerTitle(std::size_t characters, std::size_t lines);

}  // namespace marbelot
