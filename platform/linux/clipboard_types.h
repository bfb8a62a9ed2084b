// The type names under which programs offer texts and images, on X11 and on Wayland alike.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "platform/value.h"

namespace marbelot {

// What is read of other programs, in the order in which it is preferred.
inline constexpr std::array<std::string_view, 6> readTextTypes{
    "UTF8_STRING", "text/plain;charset=utf-8", "text/plain;charset=UTF-8", "text/plain", "STRING",
    "TEXT"};
inline constexpr std::array<std::string_view, 11> readImageTypes{
    "image/png",  "image/tiff", "image/jpeg",  "image/jpg",      "image/gif", "image/heic",
    "image/heif", "image/bmp",  "image/x-bmp", "image/x-MS-bmp", "image/webp"};
// Then the first file of a list of files, and a document where there is no text either.
inline constexpr std::array<std::string_view, 3> readFileTypes{
    "text/uri-list", "x-special/gnome-copied-files", "x-special/mate-copied-files"};
inline constexpr std::string_view readDocumentType = "application/pdf";

// Not contents: the protocols' own requests, and a name that Qt resolves only within one process.
inline constexpr std::array<std::string_view, 10> protocolTypes{
    "TARGETS",   "MULTIPLE",         "TIMESTAMP",       "SAVE_TARGETS",  "DELETE",
    "ATOM_PAIR", "INSERT_SELECTION", "INSERT_PROPERTY", "_QT_SELECTION", "application/x-qt-image"};

// What we offer a text as, the best one first.
inline constexpr std::array<std::string_view, 5> offeredTextTypes{
    "UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "STRING", "TEXT"};

template <class Names>
bool contains(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// What came for `requested`, called `answered` by the owner. Null when it is no text, or in an
// encoding of long ago.
SharedText decodedText(std::string_view requested, std::string_view answered, std::string bytes);

std::string toLatin1(std::string_view text);

}  // namespace marbelot
