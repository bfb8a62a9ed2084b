#include "text/canned_responses.h"

#include <algorithm>

#include "platform/text.h"
#include "text/masked_title.h"

namespace marbelot {
namespace {

constexpr std::size_t titleLimit = 44;  // characters

}  // namespace

CannedResponses::CannedResponses(Platform& platform, Shell& shell, ActionTable& actions,
                                 HistoryText historyText)
    : platform_(platform), shell_(shell), historyText_(std::move(historyText)) {
  actions.add("copyCanned:", [this](const MenuItem& sender) { copyCanned(sender); });
  actions.add("addCanned", [this](const MenuItem&) { addCanned(); });
  actions.add("removeCanned:", [this](const MenuItem& sender) { removeCanned(sender); });
  actions.add("saveClipAsCanned:", [this](const MenuItem& sender) {
    if (const SharedText text = historyText_(sender)) saveText(text);
  });
}

std::shared_ptr<Menu> CannedResponses::menu() const {
  auto menu = std::make_shared<Menu>();
  auto remove = std::make_shared<Menu>();
  for (std::size_t i = 0; i < cannedResponses->size(); ++i) {
    const SharedText& snippet = cannedResponses.get()[i];
    // What looks like a password in the user's own text is as a rule a name or an ending.
    const std::string title = maskedPreview(*snippet, titleLimit, maskApiKeys);
    const auto index = static_cast<std::int64_t>(i);
    menu->add(title, "copyCanned:", index)->payload =
        std::make_shared<const HUDPayload>(HUDPayload{snippet});
    remove->add(title, "removeCanned:", index);
  }
  if (cannedResponses->empty()) menu->addDisabled("No canned responses yet");
  menu->addSeparator();
  menu->add("Add canned response…", "addCanned");
  if (!cannedResponses->empty()) menu->addSubmenu("Remove", std::move(remove));
  return menu;
}

void CannedResponses::changed() {
  cannedResponses.store();
  shell_.rebuildMenu();
}

void CannedResponses::append(std::string text) {
  cannedResponses.edit().push_back(share(std::move(text)));
  changed();
}

std::optional<std::size_t> CannedResponses::indexOf(const MenuItem& sender) const {
  const auto* index = std::get_if<std::int64_t>(&sender.represented);
  if (!index || *index < 0 || static_cast<std::size_t>(*index) >= cannedResponses->size())
    return std::nullopt;
  return static_cast<std::size_t>(*index);
}

// Recorded like a copy by any other program.
void CannedResponses::copyCanned(const MenuItem& sender) {
  const auto index = indexOf(sender);
  if (!index) return;
  shell_.confirmCopy(platform_.pasteboard.write(cannedResponses.get()[*index]).has_value(),
                     "Copied canned response");
}

void CannedResponses::addCanned() {
  View text;
  text.id = "cannedText";
  text.frame = {0, 0, 340, 100};
  text.resizing = {.width = true};
  text.content = TextArea{.editable = true, .bordered = true};
  Alert alert;
  alert.id = "addCanned";
  alert.message = "New canned response";
  alert.informative = "Enter text to save. Selecting it later copies it to the clipboard.";
  alert.buttons = {"Add", "Cancel"};
  alert.accessory = {std::move(text)};
  platform_.dialogs.present(std::move(alert), [this](const AlertAnswer& answer) {
    if (answer.button != 0) return;
    const std::string_view entered = text::trimmedBlanksAndNewlines(answer.text);
    if (!entered.empty()) append(std::string(entered));
  });
}

void CannedResponses::removeCanned(const MenuItem& sender) {
  const auto index = indexOf(sender);
  if (!index) return;
  auto& responses = cannedResponses.edit();
  responses.erase(responses.begin() + static_cast<std::ptrdiff_t>(*index));
  changed();
}

void CannedResponses::saveText(const SharedText& text) {
  const std::string_view trimmed = text::trimmedBlanks(*text);
  const bool known =
      std::any_of(cannedResponses->begin(), cannedResponses->end(),
                  [trimmed](const SharedText& snippet) { return *snippet == trimmed; });
  if (known) {
    shell_.notify("Already a canned response");
    return;
  }
  append(std::string(trimmed));
  shell_.notify("Saved as canned response");
}

}  // namespace marbelot
