// Doing something with what a text holds: opening, writing, calling, finding, noting.
#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/platform.h"
#include "shell/shell.h"
#include "text/action_menu.h"

namespace marbelot {

// Main thread only; everything it is given outlives it.
class TextActions {
 public:
  // What the text holds; null while that is still being looked for, as in a large text.
  using TargetsOf = std::function<std::shared_ptr<const TextTargets>(const SharedText& text)>;

  TextActions(Platform& platform, Shell& shell, ActionTable& actions, TargetsOf targetsOf);

  // The title of the entry under which the text's actions are offered.
  std::string submenuLabel(const SharedText& text) const;
  // The menu of the text's actions, not to be changed: it is shown in several places.
  std::shared_ptr<Menu> actionMenu(const SharedText& text);
  // The link to a page that stands first in the text, none when it holds none.
  std::optional<TextTarget> linkIn(const SharedText& text) const;
  // The applications to open that link in; null when there is no such link.
  std::shared_ptr<Menu> openInMenu(const SharedText& text);

  // Looks again which applications there are, unless that was done a moment ago: menus are about to
  // be shown. The menu is rebuilt when they are others than before.
  void refreshApplications();

  // The windows that are open.
  std::list<std::unique_ptr<WebWindow>> urlPreviewWindows, mapWindows;

 private:
  // Keeps nothing alive: a text that is deleted goes with the last menu that shows it.
  struct Built {
    std::weak_ptr<const std::string> text;  // the address alone could be another text's by now
    std::weak_ptr<const TextTargets> targets;
    bool concealed = false;
    std::weak_ptr<Menu> menu;
  };

  bool isConcealed(const std::string& text) const;
  const std::vector<LinkApplication>* applicationsFor(std::string_view scheme) const;
  // Asks for the applications for links like this one, if none was asked for before.
  void learnApplicationsFor(const std::string& url);
  void findApplications(const std::string& scheme, const std::string& url);
  void applicationsFound(const std::string& scheme, std::vector<LinkApplication> found);
  void performOpenAction(const MenuItem& sender);
  void copyDetectedString(const MenuItem& sender);
  void addToCalendar(const MenuItem& sender);
  void addToNotes(const MenuItem& sender);
  void previewURLAction(const MenuItem& sender);
  void showAddressMapAction(const MenuItem& sender);
  void openWindow(std::list<std::unique_ptr<WebWindow>>& windows, WebWindowDescription description);

  Platform& platform_;
  Shell& shell_;
  const TargetsOf targetsOf_;
  std::map<std::string, std::vector<LinkApplication>, std::less<>> applications_;  // by scheme
  // The schemes of what the menus open, with a URL of each to ask about.
  std::map<std::string, std::string> samples_{{"https", "https://example.com/"},
                                              {"mailto", "mailto:someone@example.com"},
                                              {"tel", "tel:+15550100"},
                                              {"facetime", "facetime:+15550100"}};
  Task freshness_;  // while it is to come, the applications are known well enough
  bool fresh_ = false;
  std::unordered_map<const std::string*, Built> menus_;
  Tasks writing_;                                                 // events
  const std::shared_ptr<char> alive_ = std::make_shared<char>();  // for what answers later
};

}  // namespace marbelot
