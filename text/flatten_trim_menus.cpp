#include "text/flatten_trim_menus.h"

#include "classification/classifier.h"
#include "platform/text.h"
#include "shell/pending_copy.h"
#include "text/large_text.h"
#include "text/masked_title.h"

namespace marbelot {
namespace {

constexpr std::size_t trimPreviewLimit = 36;  // characters
// How much of a text is searched for a line break while the menu waits.
constexpr std::size_t searchedBytes = 4 * largeTextBytes;

std::string withPreview(std::string_view title, const std::string& preview) {
  std::string result(title);
  if (!preview.empty()) result.append(" → ").append(preview);
  return result;
}

std::string_view representedOr(const MenuItem& sender, std::string_view otherwise) {
  const auto* text = std::get_if<std::string>(&sender.represented);
  return text ? std::string_view(*text) : otherwise;
}

}  // namespace

FlattenTrim::FlattenTrim(Platform& platform, Shell& shell, ActionTable& actions, Withheld withheld)
    : platform_(platform), shell_(shell), withheld_(std::move(withheld)) {
  actions.add("flattenClipboard:", [this](const MenuItem& sender) { flattenClipboard(sender); });
  actions.add("trimClipboard:", [this](const MenuItem& sender) { trimClipboard(sender); });
}

FlattenTrim::Items FlattenTrim::addItems(Menu& menu, bool keys) {
  Items items;
  auto flattenMenu = std::make_shared<Menu>();
  for (const FlattenDef& def : flattenDefs) {
    const MenuItemRef item =
        flattenMenu->add(std::string(def.title), "flattenClipboard:", std::string(def.separator));
    if (keys) item->key = def.keyEquivalent;
    items.flattenVariants.push_back({item, def.title, def.separator});
  }
  items.flatten = menu.addSubmenu("Flatten newlines", std::move(flattenMenu));
  auto trimMenu = std::make_shared<Menu>();
  for (const TrimDef& def : trimDefs) {
    const MenuItemRef item =
        trimMenu->add(std::string(def.title), "trimClipboard:", std::string(def.mode));
    items.trimVariants.push_back({item, def.title, def.mode});
  }
  items.trim = menu.addSubmenu("Trim clipboard", std::move(trimMenu));
  return items;
}

void FlattenTrim::dress(const Items& items, const Titles& titles) {
  items.flatten->enabled = titles.hasBreak;
  for (std::size_t i = 0; i < items.flattenVariants.size(); ++i) {
    const FlattenVariant& variant = items.flattenVariants[i];
    variant.item->enabled = titles.hasBreak;
    variant.item->title = withPreview(variant.title, titles.flatten[i]);
  }
  items.trim->enabled = titles.hasText;
  for (std::size_t i = 0; i < items.trimVariants.size(); ++i) {
    const TrimVariant& variant = items.trimVariants[i];
    variant.item->enabled = titles.hasText;
    variant.item->title = withPreview(variant.title, titles.trim[i]);
  }
}

void FlattenTrim::addStatusItems(Menu& menu) {
  Items items = addItems(menu, true);
  flattenItem = items.flatten;
  trimItem = items.trim;
  flattenVariants = std::move(items.flattenVariants);
  trimVariants = std::move(items.trimVariants);
  refresh();
}

void FlattenTrim::refresh() {
  if (flattenItem) dress({flattenItem, trimItem, flattenVariants, trimVariants}, titles());
}

void FlattenTrim::addDockItems(Menu& menu) { dress(addItems(menu, false), titles()); }

// The previews of a text that begins with what was `masked`; false when they depend on what follows
// it. Secrets hold no blanks, so masking changes neither where lines end nor what is trimmed of
// them.
bool FlattenTrim::previewOf(const std::string& masked, bool whole, Titles& titles) {
  bool known = true;
  if (titles.hasBreak) {
    const FlattenHead head = flattenHead(masked);
    known = whole || head.more;
    for (std::size_t i = 0; i < flattenDefs.size(); ++i)
      titles.flatten[i] = flattenPreview(head, flattenDefs[i].separator);
  }
  for (std::size_t i = 0; i < trimDefs.size(); ++i) {
    titles.trim[i] = trimPreview(masked, trimDefs[i].mode, trimPreviewLimit);
    known = known && (whole || titles.trim[i].ends_with("…”"));
  }
  return known;
}

FlattenTrim::Titles FlattenTrim::wholeTitles(std::string_view text, bool previews) {
  Titles titles;
  titles.hasText = true;
  titles.hasBreak = hasLineBreak(text);
  if (!previews) return titles;
  if (!previewOf(maskedWindow(text), titleWindow(text).size() == text.size(), titles))
    previewOf(maskedForDisplay(text), true, titles);
  return titles;
}

FlattenTrim::Titles FlattenTrim::titles() {
  Titles titles;
  const PasteboardContents contents = platform_.pasteboard.contents();
  if (!contents.text) return titles;
  const bool previews = !withheld_(contents);
  if (found_ && foundFor_ == platform_.pasteboard.changeCount() && foundPreviews_ == previews)
    return *found_;

  const std::string_view text = *contents.text;
  titles.hasText = true;
  std::string_view searched = text.substr(0, searchedBytes);
  if (searched.size() < text.size() && searched.ends_with('\r')) searched.remove_suffix(1);
  titles.hasBreak = hasLineBreak(searched);
  bool known = titles.hasBreak || searched.size() == text.size();
  if (previews) {
    if (!previewOf(maskedWindow(text), titleWindow(text).size() == text.size(), titles)) {
      titles.flatten = {};
      titles.trim = {};
      known = false;
    }
  }
  if (!known) refreshWhenKnown(contents.text, previews);
  return titles;
}

void FlattenTrim::refreshWhenKnown(const SharedText& text, bool previews) {
  const std::int64_t count = platform_.pasteboard.changeCount();
  if (foundFor_ == count && foundPreviews_ == previews) return;  // under way
  found_.reset();
  foundFor_ = count;
  foundPreviews_ = previews;
  finding_ = platform_.queue.inBackground([text, previews] { return wholeTitles(*text, previews); },
                                          [this](Titles titles) {
                                            found_ = std::move(titles);
                                            refresh();
                                            platform_.statusItem.menuChanged();
                                          });
}

void FlattenTrim::flattenClipboard(const MenuItem& sender) {
  replaceText(
      [separator = std::string(representedOr(sender, " "))](
          std::string_view text) -> std::optional<std::string> {
        if (!hasLineBreak(text)) return std::nullopt;
        return flatten(text, separator);
      },
      "Clipboard flattened to one line");
}

void FlattenTrim::trimClipboard(const MenuItem& sender) {
  const std::string mode(representedOr(sender, "both"));
  replaceText([mode](std::string_view text) { return std::optional(trim(text, mode)); },
              "Clipboard trimmed (" + mode + ")");
}

void FlattenTrim::replaceText(const Operation& operation, const std::string& message) {
  if (busy_) {
    next_.push_back({platform_.pasteboard.changeCount(),
                     [this, operation, message] { replaceText(operation, message); }});
    return;
  }
  const PendingCopy copy(platform_.pasteboard, shell_);
  const PasteboardContents contents = platform_.pasteboard.contents();
  const SharedText& text = contents.text;
  if (!text) return;
  const auto write = [copy, message, concealed = contents.concealed](std::string result) {
    copy.write(share(std::move(result)), concealed, message);
  };
  if (text->size() <= largeTextBytes) {
    if (auto result = operation(*text)) write(std::move(*result));
    return;
  }
  busy_ = true;
  working_ = platform_.queue.inBackground(
      [text, operation] { return operation(*text); },
      [this, copy, write](std::optional<std::string> result) {
        busy_ = false;
        auto next = std::exchange(next_, {});
        if (copy.tellIfOvertaken()) {
          // So was what was chosen for the former text.
          std::erase_if(next, [&](const Step& step) { return step.count == copy.replaced(); });
        } else if (result) {
          write(std::move(*result));
        }
        for (const Step& step : next) step.run();
      });
}

}  // namespace marbelot
