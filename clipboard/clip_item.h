// One entry of the clipboard history.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "platform/image.h"
#include "platform/value.h"

namespace marbelot {

// What was copied: the text exactly as it was read, shared with whoever else holds it, or an image.
struct Kind {
  std::variant<SharedText, Image> payload;

  Kind(SharedText text) : payload(std::move(text)) {}
  Kind(Image image) : payload(std::move(image)) {}

  // Null when it is an image.
  SharedText text() const {
    const auto* held = std::get_if<SharedText>(&payload);
    return held ? *held : nullptr;
  }
  // Null when it is a text.
  const Image* image() const { return std::get_if<Image>(&payload); }
};

struct ClipItem {
  Kind kind;
  double date = 0;                       // seconds since 1970: when it was recorded
  std::optional<std::string> savedPath;  // the file of an image that was saved
  // Names the item for as long as the program runs, wherever in the history it is by then; never 0.
  std::uint64_t id = 0;
};

}  // namespace marbelot
