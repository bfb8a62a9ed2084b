#include "hud/edit_bar.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "image/operations.h"
#include "platform/text.h"
#include "text/open_action.h"

namespace marbelot {
namespace {

constexpr double buttonHeight = 24;
constexpr double gap = 5;
constexpr double titleSize = 11;
constexpr double symbolOnly = 30;
// Symbol, the space behind it, and the blank at both ends.
constexpr double besideTitle = 34;

EditBarButton pinButton(bool pinned, const char* title) {
  return {"pin", pinned ? "pin.fill" : "pin", title, "Keep this open"};
}

double naturalWidth(const EditBarButton& button, const Measure& measure) {
  if (button.title.empty()) return symbolOnly;
  return std::ceil(measure(button.title, {.size = titleSize})) + besideTitle;
}

double rowWidth(const std::vector<double>& widths, std::size_t from, std::size_t to) {
  double sum = gap * static_cast<double>(to - from - 1);
  for (std::size_t i = from; i < to; ++i) sum += widths[i];
  return sum;
}

// The most evenly filled rows, of the fewest that hold all: where each begins, and the end.
std::vector<std::size_t> rowsOf(const std::vector<double>& widths, double width) {
  const auto broken = [&](double limit) {
    std::vector<std::size_t> starts{0};
    for (std::size_t i = 1; i < widths.size(); ++i)
      if (rowWidth(widths, starts.back(), i + 1) > limit) starts.push_back(i);
    starts.push_back(widths.size());
    return starts;
  };
  std::vector<std::size_t> best = broken(width);
  for (double limit = width - 1; limit > 0; --limit) {
    auto narrower = broken(limit);
    if (narrower.size() > best.size()) break;
    best = std::move(narrower);
  }
  return best;
}

View barView(const EditBarButton& button, const Rect& frame) {
  Button content;
  content.title = button.title;
  content.symbol = button.symbol;
  content.toolTip = button.toolTip;
  content.font = {.size = titleSize};
  content.flat = true;
  content.background = Color::of(Color::Role::label, 0.1);
  return {button.spec, frame, {}, std::move(content)};
}

const Operation* operationOf(std::string_view verb) {
  const auto all = operations();
  const auto at =
      std::find_if(all.begin(), all.end(), [&](const Operation& one) { return one.verb == verb; });
  return at == all.end() ? nullptr : &*at;
}

struct Choice {
  const char *title, *op;
};
constexpr std::array<Choice, 8> transforms{{
    {"Rotate right 90°", "rotate:90"},
    {"Rotate left 90°", "rotate:-90"},
    {"Rotate 180°", "rotate:180"},
    {"Flip horizontally", "flip:h"},
    {"Flip vertically", "flip:v"},
    {"Resize to 75%", "resize:0.75"},
    {"Resize to 50%", "resize:0.5"},
    {"Resize to 25%", "resize:0.25"},
}};
// The groups that offer what one operation does.
constexpr std::array<std::pair<std::string_view, std::string_view>, 4> verbs{
    {{"border", "border"}, {"shadow", "shadow"}, {"alpha", "transparent"}, {"emblem", "emblem"}}};

bool startsWithScheme(std::string_view text, std::string_view scheme) {
  return text.size() > scheme.size() &&
         std::equal(scheme.begin(), scheme.end(), text.begin(), [](char wanted, char is) {
           return wanted == (is >= 'A' && is <= 'Z' ? is + 32 : is);
         });
}

}  // namespace

std::vector<EditBarButton> imageBarButtons(bool pinned, const BarAbilities& abilities) {
  std::vector<EditBarButton> buttons{pinButton(pinned, "Pin")};
  if (abilities.crop) buttons.push_back({"crop", "crop", "Crop", "Crop…"});
  for (const EditGroup& group : hudEditGroups) {
    buttons.push_back({std::string(group.spec), std::string(group.symbol), std::string(group.title),
                       std::string(group.toolTip)});
  }
  if (abilities.recognize)
    buttons.push_back({"ocr", "text.viewfinder", "Scan text", "Scan text in this image (OCR)"});
  buttons.push_back({"undo", "arrow.uturn.backward", "Undo", "Undo the last edit"});
  buttons.push_back({"copy", "doc.on.doc", "Copy", "Copy to clipboard"});
  buttons.push_back({"save", "square.and.arrow.down", "Save", "Save as PNG"});
  buttons.push_back({"done", "checkmark", "Done", "Done"});
  return buttons;
}

std::vector<EditBarButton> textBarButtons(std::string_view text, bool pinned,
                                          const BarAbilities& abilities) {
  std::vector<EditBarButton> buttons{pinButton(pinned, "")};
  if (const auto link = webLink(text)) {
    const std::string host = text::shownTitle(hostOf(*link));
    buttons.push_back(
        {"open", "safari", "Open", "Open " + (host.empty() ? "link" : host) + " in your browser"});
    if (abilities.openIn)
      buttons.push_back({"openin", "chevron.down", "", "Open in another application…"});
  }
  if (abilities.textActions)
    buttons.push_back({"actions", "ellipsis.circle", "", "All text actions…"});
  if (abilities.saveText)
    buttons.push_back({"savetxt", "square.and.arrow.down", "", "Save as a text file…"});
  if (abilities.append)
    buttons.push_back({"append", "text.append", "", "Add to the running concatenation"});
  buttons.push_back({"copy", "doc.on.doc", "", "Copy to clipboard"});
  buttons.push_back({"done", "checkmark", "Done", "Done"});
  return buttons;
}

std::optional<std::string> webLink(std::string_view text) {
  constexpr std::size_t longest = 16384;
  // Blanks around a link are few, and trimming a large text takes long.
  if (text.size() > longest) return std::nullopt;
  const std::string_view link = text::trimmedBlanksAndNewlines(text);
  const bool isOne = startsWithScheme(link, "http://") || startsWithScheme(link, "https://");
  if (!isOne || isTreacherous(link)) return std::nullopt;
  return std::string(link);
}

EditBar layOutBar(const std::vector<EditBarButton>& buttons, double width, bool filled,
                  const Measure& measure) {
  std::vector<double> widths;
  for (const EditBarButton& button : buttons) widths.push_back(naturalWidth(button, measure));
  const std::vector<std::size_t> starts = rowsOf(widths, width);
  const std::size_t rows = starts.size() - 1;
  EditBar bar;
  bar.height = static_cast<double>(rows) * (buttonHeight + gap) - gap;
  for (std::size_t row = 0; row < rows; ++row) {
    const std::size_t from = starts[row], to = starts[row + 1];
    const double spare = width - rowWidth(widths, from, to);
    const double share = filled ? std::max(0.0, spare / static_cast<double>(to - from)) : 0;
    const double y = bar.height - buttonHeight - static_cast<double>(row) * (buttonHeight + gap);
    double x = 0;
    for (std::size_t i = from; i < to; ++i) {
      // What closes the panel stands at its end.
      if (!filled && i + 1 == buttons.size()) x += std::max(0.0, spare);
      const double right = x + widths[i] + share;
      bar.views.push_back(
          barView(buttons[i], {std::round(x), y, std::round(right) - std::round(x), buttonHeight}));
      x = right + gap;
    }
  }
  return bar;
}

std::shared_ptr<Menu> editGroupMenu(std::string_view spec) {
  constexpr std::string_view prefix = "group:";
  if (!spec.starts_with(prefix)) return nullptr;
  const std::string_view group = spec.substr(prefix.size());
  auto menu = std::make_shared<Menu>();
  const auto add = [&](std::string title, std::string op) {
    menu->add(std::move(title), "hudMenuPicked:", std::move(op));
  };
  if (group == "transform") {
    for (const Choice& choice : transforms) add(choice.title, choice.op);
    return menu;
  }
  const auto verb = std::find_if(verbs.begin(), verbs.end(),
                                 [&](const auto& entry) { return entry.first == group; });
  const Operation* operation = verb == verbs.end() ? nullptr : operationOf(verb->second);
  if (!operation) return nullptr;
  for (const EditChoice& choice : operation->choices) {
    if (choice.title.empty()) {
      menu->addSeparator();
    } else if (choice.arguments.empty()) {
      menu->addDisabled(std::string(choice.title));
    } else {
      add(std::string(choice.title),
          std::string(operation->verb) + ":" + std::string(choice.arguments));
    }
  }
  return menu;
}

}  // namespace marbelot
