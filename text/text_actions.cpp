#include "text/text_actions.h"

#include <algorithm>
#include <cmath>

#include "platform/files.h"
#include "platform/text.h"
#include "text/calendar_event.h"
#include "text/endpoints.h"
#include "text/open_action.h"

namespace marbelot {
namespace {

constexpr double freshSeconds = 30;
constexpr std::size_t menuLimit = 128;

// Writes the event file, into the folder for such files; its path, none when that failed.
std::optional<std::string> writeEvent(const std::string& text, double now) {
  const std::string folder = files::join(files::temporaryFolder(), "Marbelot");
  files::makeFolder(folder);
  const std::string event = calendarEvent(text, now, newUuid());
  const std::string name = "event-" + std::to_string(static_cast<std::int64_t>(std::floor(now)));
  constexpr int tries = 100;
  for (int i = 1; i <= tries; ++i) {
    const std::string number = i == 1 ? "" : " (" + std::to_string(i) + ")";
    std::string path = files::join(folder, name + number + ".ics");
    if (files::create(path, event)) return path;
    if (!files::isTaken(path)) break;
  }
  return std::nullopt;
}

SharedText textOf(const MenuItem& sender) {
  const auto detected = detectedText(sender);
  return detected ? detected->value : nullptr;
}

bool same(const std::vector<LinkApplication>& a, const std::vector<LinkApplication>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& one, const auto& other) {
    return one.id == other.id && one.name == other.name && one.isDefault == other.isDefault &&
           one.icon.has_value() == other.icon.has_value();
  });
}

}  // namespace

TextActions::TextActions(Platform& platform, Shell& shell, ActionTable& actions,
                         TargetsOf targetsOf)
    : platform_(platform), shell_(shell), targetsOf_(std::move(targetsOf)) {
  const auto on = [&](const char* selector, void (TextActions::*action)(const MenuItem&)) {
    actions.add(selector, [this, action](const MenuItem& sender) { (this->*action)(sender); });
  };
  on("performOpenAction:", &TextActions::performOpenAction);
  on("copyDetectedString:", &TextActions::copyDetectedString);
  on("addToCalendar:", &TextActions::addToCalendar);
  on("addToNotes:", &TextActions::addToNotes);
  on("previewURLAction:", &TextActions::previewURLAction);
  on("showAddressMapAction:", &TextActions::showAddressMapAction);
}

std::string TextActions::submenuLabel(const SharedText& text) const {
  const auto targets = targetsOf_(text);
  return targets ? targets->label : "Open…";
}

std::shared_ptr<Menu> TextActions::actionMenu(const SharedText& text) {
  const auto targets = targetsOf_(text);
  if (targets && targets->other) learnApplicationsFor(targets->other->url);
  if (!targets) {
    auto waiting = std::make_shared<Menu>();
    waiting->addDisabled("Looking through the text…");
    return waiting;
  }
  Built& built = menus_[text.get()];
  const bool isKnown = built.text.lock() == text;
  // The clipboard may be empty by the time that the user chooses.
  const bool concealed = (isKnown && built.concealed) || isConcealed(*text);
  if (isKnown && built.targets.lock() == targets && built.concealed == concealed) {
    if (auto shown = built.menu.lock()) return shown;
  }
  const auto applications = [this](std::string_view scheme) { return applicationsFor(scheme); };
  auto menu = marbelot::actionMenu(text, *targets, applications, concealed);
  built = {text, targets, concealed, menu};
  if (menus_.size() > menuLimit)
    std::erase_if(menus_, [](const auto& entry) { return entry.second.text.expired(); });
  return menu;
}

std::optional<TextTarget> TextActions::linkIn(const SharedText& text) const {
  const auto targets = targetsOf_(text);
  return targets ? targets->link : std::nullopt;
}

std::shared_ptr<Menu> TextActions::openInMenu(const SharedText& text) {
  const auto link = linkIn(text);
  if (!link) return nullptr;
  return marbelot::openInMenu(*link,
                              [this](std::string_view scheme) { return applicationsFor(scheme); });
}

bool TextActions::isConcealed(const std::string& text) const {
  const PasteboardContents contents = platform_.pasteboard.contents();
  return contents.concealed && contents.text && *contents.text == text;
}

const std::vector<LinkApplication>* TextActions::applicationsFor(std::string_view scheme) const {
  // What opens one kind of page opens the other.
  const auto found = applications_.find(scheme == "http" ? "https" : scheme);
  return found == applications_.end() ? nullptr : &found->second;
}

void TextActions::refreshApplications() {
  if (std::exchange(fresh_, true)) return;
  freshness_ = platform_.queue.after(freshSeconds, [this] { fresh_ = false; });
  for (const auto& [scheme, url] : samples_) findApplications(scheme, url);
}

void TextActions::learnApplicationsFor(const std::string& url) {
  const std::string scheme = url.substr(0, url.find(':'));
  if (url.empty()) return;
  // Not the link itself, which would stay in memory when its text is deleted.
  const auto [sample, isNew] = samples_.try_emplace(scheme, scheme + "://example.com/");
  if (isNew) findApplications(scheme, sample->second);
}

void TextActions::findApplications(const std::string& scheme, const std::string& url) {
  platform_.workspace.findApplications(
      url, [this, scheme, alive = std::weak_ptr(alive_)](std::vector<LinkApplication> found) {
        if (alive.lock()) applicationsFound(scheme, std::move(found));
      });
}

void TextActions::applicationsFound(const std::string& scheme, std::vector<LinkApplication> found) {
  const auto known = applications_.find(scheme);
  if (known != applications_.end() && same(known->second, found)) return;
  applications_[scheme] = std::move(found);
  menus_.clear();
  shell_.rebuildMenu();
}

void TextActions::performOpenAction(const MenuItem& sender) {
  const auto action = openAction(sender);
  if (!action || !isOpenable(action->url)) return;
  platform_.workspace.openUrl(action->url, action->appURL);
}

void TextActions::copyDetectedString(const MenuItem& sender) {
  const auto detected = detectedText(sender);
  if (!detected) return;
  shell_.confirmCopy(shell_.copyWithoutRecording(detected->value, detected->concealed), "Copied");
}

void TextActions::addToCalendar(const MenuItem& sender) {
  const SharedText text = textOf(sender);
  if (!text) return;
  writing_.run(
      platform_.queue, [text, now = platform_.queue.now()] { return writeEvent(*text, now); },
      [this](const std::optional<std::string>& path) {
        if (path) {
          platform_.workspace.openPath(*path);
        } else {
          shell_.notify("Couldn't create the event");
        }
      });
}

void TextActions::addToNotes(const MenuItem& sender) {
  const SharedText text = textOf(sender);
  if (!text) return;
  platform_.workspace.addNote(
      text, [this, alive = std::weak_ptr(alive_)](const std::optional<std::string>& problem) {
        if (!alive.lock()) return;
        if (!problem) shell_.flashStatusIcon();
        shell_.notify(!problem ? "Added to Notes"
                               : "Notes: " + (problem->empty() ? "couldn't add note" : *problem));
      });
}

void TextActions::previewURLAction(const MenuItem& sender) {
  const SharedText url = textOf(sender);
  if (!url || !isWebLink(*url)) return;
  std::string_view host = hostOf(*url);
  // The brackets of an address of the sixth version are the URL's, not the host's.
  if (host.starts_with('[')) host = host.substr(1, host.size() - 2);
  WebWindowDescription window;
  window.kind = WebWindowDescription::Kind::page;
  window.subject = *url;
  window.title = "Preview " + std::string(host.empty() ? *url : host);
  window.contentSize = {720, 520};
  openWindow(urlPreviewWindows, std::move(window));
}

void TextActions::showAddressMapAction(const MenuItem& sender) {
  const SharedText address = textOf(sender);
  if (!address || text::isAllBlank(*address) || address->size() > longestQuery) return;
  WebWindowDescription window;
  window.kind = WebWindowDescription::Kind::map;
  window.subject = *address;
  window.title = "Map — " + text::shownTitle(*address);
  window.notFoundTitle = "Map — location not found";
  window.contentSize = {640, 520};
  openWindow(mapWindows, std::move(window));
}

void TextActions::openWindow(std::list<std::unique_ptr<WebWindow>>& windows,
                             WebWindowDescription description) {
  const auto at = windows.insert(windows.end(), nullptr);
  description.closed = [this, &windows, at,
                        alive = std::weak_ptr(alive_)](const std::string& problem) {
    // Later: it is the window itself that tells.
    platform_.queue.post([this, &windows, at, alive, problem] {
      if (!alive.lock()) return;
      windows.erase(at);
      if (!problem.empty()) shell_.notify(problem);
    });
  };
  *at = platform_.webWindows.open(std::move(description));
}

}  // namespace marbelot
