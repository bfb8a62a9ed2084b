// What a text holds that something can be done with.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "text/percent_encoding.h"

namespace marbelot {

struct TextTarget {
  std::string value;  // what is opened or copied
  std::string shown;  // in titles: secrets masked, on one line, shortened
  std::string url;    // that leads there; empty where there is none
};

// The first of each kind.
struct TextTargets {
  std::optional<TextTarget> mail;     // value: the link without its "mailto:"
  std::optional<TextTarget> link;     // to a page, value: its URL
  std::optional<TextTarget> phone;    // value: as it stands in the text
  std::optional<TextTarget> other;    // a link of another scheme, no URL if it is not to be opened
  std::optional<TextTarget> address;  // on one line
  std::string label;                  // of the submenu with the text's actions
  std::string preview;                // quoted, secrets masked
  EncodedText query;                  // the text, for a search
};

// Linear in the length of the text; safe on any thread. Links that are not what they seem to be are
// none.
TextTargets findTargets(std::string_view text);

}  // namespace marbelot
