// The buttons under what a panel shows, and the menus of the edits among them.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hud/text_face.h"
#include "platform/menu.h"
#include "platform/view.h"

namespace marbelot {

struct EditBarButton {
  std::string spec;  // what it does
  std::string symbol;
  std::string title;  // may be empty
  std::string toolTip;
};

struct EditGroup {
  std::string_view spec, symbol, title, toolTip;
};
inline constexpr std::array<EditGroup, 5> hudEditGroups{{
    {"group:transform", "arrow.triangle.2.circlepath", "Rotate", "Rotate, flip, resize…"},
    {"group:border", "square", "Border", "Add a border…"},
    {"group:shadow", "square.on.square", "Shadow", "Add a rounded shadow…"},
    {"group:emblem", "circle.circle", "Emblem", "Make an emblem…"},
    {"group:alpha", "wand.and.rays", "Alpha", "Make a background transparent…"},
}};

// What the program can do with a panel's content at present.
struct BarAbilities {
  bool crop = false;
  bool recognize = false;
  bool openIn = false;
  bool textActions = false;
  bool saveText = false;
  bool append = false;
};

std::vector<EditBarButton> imageBarButtons(bool pinned, const BarAbilities& abilities);
std::vector<EditBarButton> textBarButtons(std::string_view text, bool pinned,
                                          const BarAbilities& abilities);

// The address when the text is a link that a browser opens, blanks around it aside.
std::optional<std::string> webLink(std::string_view text);

struct EditBar {
  double height = 0;
  std::vector<View> views;  // of the bar, whose lower left corner is the origin
};
// The buttons within `width`, in as many rows as that takes. No title is ever cut off.
inline constexpr double leastImageBarWidth = 460;
EditBar layOutBar(const std::vector<EditBarButton>& buttons, double width, bool filled,
                  const Measure& measure);

// The menu of a group ("group:border"); null for any other spec. Its items carry op strings.
std::shared_ptr<Menu> editGroupMenu(std::string_view spec);

}  // namespace marbelot
