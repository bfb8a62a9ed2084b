#include "clipboard/history_menus.h"

#include <algorithm>
#include <array>
#include <unordered_map>

#include "clipboard/category_titles.h"
#include "image/edit_request.h"
#include "platform/text.h"

namespace marbelot {

namespace {

std::string bracketed(std::size_t count) { return " (" + std::to_string(count) + ")"; }

// The index that the sender carries, itself or in what it asks to be done.
std::optional<std::int64_t> representedIndex(const MenuItem& sender) {
  if (const auto* index = std::get_if<std::int64_t>(&sender.represented)) return *index;
  const auto request = editRequest(sender);
  const auto* entry = std::get_if<EditClipHistory>(&request->source);
  return entry ? std::optional(entry->index) : std::nullopt;
}

std::string entryTitle(ClipCategory category, const std::string& shown) {
  return std::string(categoryTitle(category).symbol) + " " + shown;
}

}  // namespace

std::string imageTitle(const Image& image) {
  return "Image " + std::to_string(image.width()) + " × " + std::to_string(image.height());
}

HistoryMenus::HistoryMenus(Platform& platform, Shell& shell, ActionTable& actions,
                           ClipboardHistory& history, TextAnalyses& analyses)
    : platform_(platform), shell_(shell), history_(history), analyses_(analyses) {
  actions.add("copyClipHistory:", [this](const MenuItem& sender) {
    if (const auto index = indexFor(sender)) copyEntry(*index);
  });
  actions.addOn<std::int64_t>("setClipTypeFilter:",
                              [this](std::int64_t position) { setClipTypeFilter(position); });
  actions.add("revealClipValue:", [this](const MenuItem& sender) {
    const SharedText value = textFor(sender);
    if (value && onReveal) onReveal(value);
  });
  actions.add("revealClipHistory:", [this](const MenuItem& sender) {
    withFile(sender, [this](const std::string& path) { platform_.workspace.reveal(path); });
  });
  actions.add("copyClipHistoryPath:", [this](const MenuItem& sender) {
    withFile(sender, [this](const std::string& path) { copyPath(path); });
  });
  actions.add("deleteClipHistory:", [this](const MenuItem& sender) {
    if (const auto index = indexFor(sender)) history_.remove(*index);
  });
  actions.addOn<std::string>("copyPath:", [this](const std::string& path) { copyPath(path); });
}

std::vector<HistoryMenus::Entry> HistoryMenus::entries() {
  std::vector<Entry> entries;
  std::unordered_map<std::string, std::vector<std::size_t>> byTitle;
  for (std::size_t i = 0; i < history_.clipHistory.size(); ++i) {
    const Kind& kind = history_.clipHistory[i].kind;
    Entry entry;
    entry.index = i;
    if (const Image* image = kind.image()) {
      entry.title = entryTitle(entry.category, imageTitle(*image));
    } else {
      entry.analysis = analyses_.of(kind.text());
      entry.category = entry.analysis->category;
      entry.title = entryTitle(entry.category, entry.analysis->label() + entry.analysis->title);
    }
    byTitle[entry.title].push_back(i);
    entries.push_back(std::move(entry));
  }
  for (const auto& [title, alike] : byTitle)
    if (alike.size() > 1) tellApart(entries, alike);
  return entries;
}

// Entries that would read alike show where they differ, or else when they were copied.
void HistoryMenus::tellApart(std::vector<Entry>& entries,
                             const std::vector<std::size_t>& alike) const {
  std::vector<std::string_view> beginnings;
  beginnings.reserve(alike.size());
  for (const std::size_t i : alike) {
    beginnings.push_back(entries[i].analysis ? std::string_view(entries[i].analysis->beginning)
                                             : std::string_view());
  }
  const std::vector<std::string> different = titlesAtDifference(beginnings);
  for (std::size_t k = 0; k < alike.size(); ++k) {
    Entry& entry = entries[alike[k]];
    if (different[k].empty()) {
      entry.title += " — " + text::fileTimestamp(history_.clipHistory[entry.index].date);
    } else {
      entry.title = entryTitle(entry.category, entry.analysis->label() + different[k]);
    }
  }
}

MenuItem HistoryMenus::filterItem(const std::vector<Entry>& entries) const {
  std::array<std::size_t, clipCategoryCount> counts{};
  for (const Entry& entry : entries) ++counts[static_cast<std::size_t>(entry.category)];

  const auto& filter = history_.clipTypeFilter;
  auto menu = std::make_shared<Menu>();
  menu->add("All" + bracketed(entries.size()), "setClipTypeFilter:", noClipTypeFilter)->checked =
      !filter;
  for (int position = 0; position < clipCategoryCount; ++position) {
    const auto category = static_cast<ClipCategory>(position);
    menu->add(displayTitle(category) + bracketed(counts[static_cast<std::size_t>(position)]),
              "setClipTypeFilter:", std::int64_t{position})
        ->checked = filter == category;
  }
  MenuItem item;
  item.title = "Filter by type — " + std::string(filter ? categoryTitle(*filter).title : "All");
  item.submenu = std::move(menu);
  return item;
}

MenuItem HistoryMenus::entryItem(const Entry& entry) {
  const ClipItem& clip = history_.clipHistory[entry.index];
  MenuItem item;
  item.title = entry.title;
  item.represented = static_cast<std::int64_t>(entry.index);
  item.payload = std::make_shared<const HUDPayload>(HUDPayload{clip.kind.payload, clip.id});
  item.submenu = entryMenu(item, entry);
  return item;
}

std::shared_ptr<Menu> HistoryMenus::entryMenu(const MenuItem& item, const Entry& entry) const {
  auto menu = std::make_shared<Menu>();
  const auto add = [&](const char* title, const char* action) {
    menu->add(title, action, item.represented)->payload = item.payload;
  };
  add("Copy to clipboard", "copyClipHistory:");
  if (entry.category == ClipCategory::image) {
    add("Scan text (OCR)…", "ocrClipHistory:");
    add("Copy as <img> tag (base64)", "copyClipHistoryImageAsTag:");
    add("Reveal in Finder", "revealClipHistory:");
    add("Copy file path", "copyClipHistoryPath:");
  } else {
    if (entry.category == ClipCategory::apiKey || entry.category == ClipCategory::password)
      add("Reveal full value", "revealClipValue:");
    add("Edit…", "editClipHistoryText:");
    add("Save as canned response", "saveClipAsCanned:");
  }
  add("Delete", "deleteClipHistory:");
  if (const SharedText text = history_.clipHistory[entry.index].kind.text(); text && addTextActions)
    addTextActions(*menu, text);
  if (entry.category == ClipCategory::image) {
    const EditClipHistory source{static_cast<std::int64_t>(entry.index)};
    menu->addSubmenu("Edit image", editMenu(source, item.payload));
  }
  return menu;
}

template <class Fill>
std::shared_ptr<Menu> HistoryMenus::menuOf(Fill fill) {
  auto menu = std::make_shared<Menu>();
  if (history_.clipHistory.empty()) {
    menu->addDisabled("No clipboard history yet");
    return menu;
  }
  fill(*menu, entries());
  menu->addSeparator();
  menu->add("Clear clipboard history", "clearClipHistory");
  return menu;
}

std::shared_ptr<Menu> HistoryMenus::clipboardHistoryMenu() {
  return menuOf([this](Menu& menu, const std::vector<Entry>& all) {
    menu.add(filterItem(all));
    for (const Entry& entry : all) {
      if (!history_.clipTypeFilter || entry.category == *history_.clipTypeFilter)
        menu.add(entryItem(entry));
    }
  });
}

std::shared_ptr<Menu> HistoryMenus::clipboardByTypeMenu() {
  return menuOf([this](Menu& menu, const std::vector<Entry>& all) {
    std::array<std::shared_ptr<Menu>, clipCategoryCount> menus;
    for (const Entry& entry : all) {
      auto& ofCategory = menus[static_cast<std::size_t>(entry.category)];
      if (!ofCategory) ofCategory = std::make_shared<Menu>();
      ofCategory->add(entryItem(entry));
    }
    for (std::size_t position = 0; position < menus.size(); ++position) {
      if (menus[position])
        menu.addSubmenu(displayTitle(static_cast<ClipCategory>(position)), menus[position]);
    }
  });
}

std::optional<std::size_t> HistoryMenus::indexFor(const MenuItem& sender) const {
  const auto index = representedIndex(sender);
  if (!index) return std::nullopt;
  // A menu may be open while the history changes under it: "Delete" must not hit the entry that has
  // moved to the same index.
  if (sender.payload && sender.payload->clipId) return history_.indexOf(sender.payload->clipId);
  if (*index < 0 || *index >= static_cast<std::int64_t>(history_.clipHistory.size()))
    return std::nullopt;
  return static_cast<std::size_t>(*index);
}

SharedText HistoryMenus::textFor(const MenuItem& sender) const {
  const auto index = indexFor(sender);
  return index ? history_.clipHistory[*index].kind.text() : nullptr;
}

std::optional<Image> HistoryMenus::imageFor(const MenuItem& sender) const {
  const auto index = indexFor(sender);
  const Image* image = index ? history_.clipHistory[*index].kind.image() : nullptr;
  return image ? std::optional(*image) : std::nullopt;
}

bool HistoryMenus::copyEntry(std::size_t index) {
  // A copy: writing may record another program's copy first, and so move the entry.
  const ClipItem item = history_.clipHistory[index];
  const SharedText text = item.kind.text();
  const bool written = text ? history_.copyWithoutRecording(text)
                            : history_.copyWithoutRecording(*item.kind.image());
  if (written) history_.moveToFront(item);
  return shell_.confirmCopy(written,
                            text ? "Copied text from history" : "Copied image from history");
}

void HistoryMenus::setClipTypeFilter(std::int64_t position) {
  if (position < 0 || position > noClipTypeFilter) return;
  history_.clipTypeFilter.reset();
  if (position < noClipTypeFilter) history_.clipTypeFilter = static_cast<ClipCategory>(position);
  shell_.rebuildMenu();
}

void HistoryMenus::withFile(const MenuItem& sender,
                            std::function<void(const std::string& path)> then) {
  const auto index = indexFor(sender);
  if (!index) return;
  history_.withFile(history_.clipHistory[*index].id,
                    [this, then = std::move(then)](const auto& path) {
                      path ? then(*path) : shell_.notify("Couldn't save image to a file");
                    });
}

void HistoryMenus::copyPath(const std::string& path) {
  shell_.confirmCopy(history_.copyWithoutRecording(share(text::sanitized(path))),
                     "Copied file path");
}

}  // namespace marbelot
