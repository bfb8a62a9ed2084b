#include "text/collect_copies.h"

#include <algorithm>
#include <utility>

#include "shell/pending_copy.h"
#include "text/large_text.h"

namespace marbelot {
namespace {

constexpr const char* nothingCollected = "Nothing collected yet";

}  // namespace

CollectCopies::CollectCopies(Platform& platform, Shell& shell, ActionTable& actions, View view)
    : platform_(platform), shell_(shell), view_(std::move(view)) {
  actions.add("toggleConcat", [this](const MenuItem&) { toggleConcat(); });
  actions.add("copyConcat", [this](const MenuItem&) { copy(false); });
  actions.add("copyConcatAndReset", [this](const MenuItem&) { copy(true); });
  actions.add("resetConcat", [this](const MenuItem&) { resetConcat(); });
  actions.addOn<std::string>("setConcatSeparator:",
                             [this](const std::string& key) { setConcatSeparator(key); });
  actions.add("viewConcat", [this](const MenuItem&) { viewConcat(); });
  actions.add("dropLastConcat", [this](const MenuItem&) { dropLastConcat(); });
}

void CollectCopies::persist() {
  concatBuffer.store();
  concatEnabled.store();
  concatSeparator.store();
}

void CollectCopies::changed() {
  persist();
  refreshMenu();
}

void CollectCopies::addStatusItem(Menu& menu) {
  concatItem = menu.addSubmenu({}, nullptr);
  dressItem();
}

void CollectCopies::dressItem() {
  concatItem->title = collectionTitle(concatBuffer->size());
  concatItem->submenu = submenu();
}

void CollectCopies::refreshMenu() {
  if (!concatItem) return;
  dressItem();
  platform_.statusItem.menuChanged();
}

std::shared_ptr<Menu> CollectCopies::submenu() {
  auto menu = std::make_shared<Menu>();
  menu->add(concatEnabled ? "Stop collecting copies" : "Start collecting copies", "toggleConcat")
      ->checked = concatEnabled;
  menu->addSeparator();
  if (!concatBuffer->empty()) {
    menu->add(collectionSummary(concatBuffer->size(), characters()), "viewConcat");
    menu->add("Copy collection", "copyConcat");
    menu->add("Copy collection & reset", "copyConcatAndReset");
    menu->add("Remove last piece", "dropLastConcat");
  }
  menu->add("Reset collection", "resetConcat");
  if (concatBuffer->empty()) menu->addDisabled(nothingCollected);
  menu->addSeparator();
  auto separators = std::make_shared<Menu>();
  for (const SeparatorDef& def : separatorDefs) {
    separators->add(std::string(def.title), "setConcatSeparator:", std::string(def.key))->checked =
        def.key == *concatSeparator;
  }
  menu->addSubmenu("Join pieces with", std::move(separators));
  return menu;
}

std::optional<std::size_t> CollectCopies::characters() {
  if (concatBuffer->uncountedBytes() <= largeTextBytes)
    return concatBuffer->characterCount(*concatSeparator);
  if (!busyCounting_) {
    busyCounting_ = true;
    counting_ = platform_.queue.inBackground(
        [copy = *concatBuffer, key = *concatSeparator] {
          copy.characterCount(key);
          return copy;
        },
        [this](const Collection& counted) {
          busyCounting_ = false;
          concatBuffer.edit().adoptCounts(counted);
          refreshMenu();
        });
  }
  return std::nullopt;
}

void CollectCopies::append(const SharedText& text, bool quiet) {
  if (!concatBuffer.edit().append(text)) return;
  changed();
  if (quiet) return;
  shell_.flashStatusIcon();
  const std::size_t pieces = concatBuffer->size();
  shell_.notify("Collected " + std::to_string(pieces) + (pieces == 1 ? " piece" : " pieces"));
}

void CollectCopies::toggleConcat() {
  concatEnabled.edit() = !concatEnabled;
  changed();
  shell_.notify(concatEnabled ? "Collecting copies" : "Stopped collecting");
}

bool CollectCopies::tellWhenEmpty() {
  if (concatBuffer->empty()) shell_.notify(nothingCollected);
  return concatBuffer->empty();
}

void CollectCopies::withJoined(Task& task, std::function<void(const SharedText&)> then) {
  if (concatBuffer->joinedBytes(*concatSeparator) <= largeTextBytes) {
    task.cancel();
    then(share(concatBuffer->joined(*concatSeparator)));
    return;
  }
  task = platform_.queue.inBackground(
      [copy = *concatBuffer, key = *concatSeparator] { return share(copy.joined(key)); },
      std::move(then));
}

void CollectCopies::copy(bool reset) {
  if (tellWhenEmpty()) return;
  // A copy that is superseded while its pieces are being joined still resets.
  resetAfterCopy_ = resetAfterCopy_ || reset;
  const PendingCopy copy(platform_.pasteboard, shell_);
  withJoined(copying_, [this, copy, copied = concatBuffer->pieces()](const SharedText& text) {
    const bool resets = std::exchange(resetAfterCopy_, false);
    if (copy.tellIfOvertaken()) return;
    const bool written = shell_.copyWithoutRecording(text);
    if (written && resets) {
      // Pieces collected meanwhile are not in the copy and stay.
      const auto& now = concatBuffer->pieces();
      const auto rest = std::mismatch(now.begin(), now.end(), copied.begin(), copied.end()).first;
      concatBuffer.edit() = Collection(std::vector<SharedText>(rest, now.end()));
    }
    changed();
    shell_.confirmCopy(written, "Copied " + std::to_string(copied.size()) +
                                    (resets ? " pieces — collection reset" : " pieces"));
  });
}

void CollectCopies::resetConcat() {
  concatBuffer.edit().clear();
  changed();
  shell_.notify("Collection reset");
}

void CollectCopies::setConcatSeparator(const std::string& key) {
  concatSeparator.edit() = key;
  changed();
}

void CollectCopies::viewConcat() {
  if (!tellWhenEmpty()) withJoined(viewing_, view_);
}

void CollectCopies::dropLastConcat() {
  if (tellWhenEmpty()) return;
  concatBuffer.edit().removeLast();
  changed();
  shell_.notify("Removed the last piece (" + std::to_string(concatBuffer->size()) + " left)");
}

}  // namespace marbelot
