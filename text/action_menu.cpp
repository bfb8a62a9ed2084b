#include "text/action_menu.h"

#include "text/endpoints.h"
#include "text/open_action.h"

namespace marbelot {
namespace {

// Builds the groups one after another.
class Builder {
 public:
  Builder(Menu& menu, const ApplicationsFor& applications, bool concealed = false)
      : menu_(menu), applications_(applications), concealed_(concealed) {}

  void beginGroup() {
    if (!menu_.items.empty()) menu_.addSeparator();
  }

  // An item that opens the URL with the default application. `masked`: the URL as it may be shown.
  MenuItemRef open(std::string title, const std::string& url, const std::string& masked) {
    const LinkApplication* application = defaultFor(url);
    return add(std::move(title), url, "", masked, application);
  }

  // One item for each other application: `prefix` and its name.
  void openInOthers(const std::string& prefix, const std::string& url, const std::string& masked) {
    const auto* all = applications_(schemeOf(url));
    if (!all) return;
    for (const LinkApplication& application : *all) {
      if (!application.isDefault)
        add(prefix + application.name, url, application.id, masked, &application);
    }
  }

  void openInAll(const std::string& prefix, const std::string& url, const std::string& masked) {
    const auto* all = applications_(schemeOf(url));
    if (!all) return;
    for (const LinkApplication& application : *all)
      add(prefix + application.name, url, application.id, masked, &application);
  }

  // Leads to an endpoint, unless what it would be told does not fit into its URL.
  void compose(std::string title, std::string_view endpoint, const TextTarget& told,
               std::size_t longest = longestQuery) {
    const EncodedText value = percentEncoded(told.value, longest);
    if (value.whole) {
      open(std::move(title), std::string(endpoint) + value.text,
           std::string(endpoint) + told.shown);
    }
  }

  // Calls are made by a program or not at all: without one the item is disabled.
  void call(std::string title, const std::string& url) {
    const auto* all = applications_(schemeOf(url));
    const MenuItemRef item = open(std::move(title), url, url);
    if (!all || !all->empty()) return;
    item->enabled = false;
    item->toolTip = "No application here makes such calls";
  }

  void copy(const char* title, const TextTarget& target) {
    menu_.add(title, "copyDetectedString:",
              std::make_shared<const DetectedText>(share(target.value), target.shown, concealed_));
  }

  void act(const char* title, const char* action, SharedText text, std::string masked) {
    menu_.add(title, action,
              std::make_shared<const DetectedText>(std::move(text), std::move(masked)));
  }

 private:
  static std::string schemeOf(std::string_view url) {
    return std::string(url.substr(0, url.find(':')));
  }

  const LinkApplication* defaultFor(std::string_view url) const {
    const auto* all = applications_(schemeOf(url));
    return all && !all->empty() && all->front().isDefault ? &all->front() : nullptr;
  }

  MenuItemRef add(std::string title, const std::string& url, std::string application,
                  const std::string& masked, const LinkApplication* icon) {
    const MenuItemRef item =
        menu_.add(std::move(title), "performOpenAction:",
                  std::make_shared<const OpenAction>(url, std::move(application), masked));
    if (icon) item->image = icon->icon;
    return item;
  }

  Menu& menu_;
  const ApplicationsFor& applications_;
  const bool concealed_;
};

void addMail(Builder& menu, const TextTarget& mail) {
  const std::string masked = "mailto:" + mail.shown;
  menu.beginGroup();
  menu.open("Email " + mail.shown + " — default mail app", mail.url, masked);
  menu.openInOthers("Email in ", mail.url, masked);
  menu.compose("Compose in Gmail (web)", endpoints::composeTo, mail);
  menu.copy("Copy address", mail);
}

void addLink(Builder& menu, const TextTarget& link) {
  menu.beginGroup();
  menu.open("Open " + link.shown + " — default browser", link.url, link.shown);
  menu.openInOthers("Open in ", link.url, link.shown);
  constexpr std::string_view letter = "mailto:?body=";  // for a program here, not for a server
  menu.compose("Email this link — default mail app", letter, link, longestLink - letter.size());
  menu.compose("Email this link — Gmail (web)", endpoints::composeBody, link);
  menu.copy("Copy link", link);
  menu.act("Preview…", "previewURLAction:", share(link.url), link.shown);
}

void addOther(Builder& menu, const TextTarget& link) {
  menu.beginGroup();
  if (!link.url.empty()) menu.open("Open " + link.shown, link.url, link.shown);
  menu.copy("Copy link", link);
}

void addPhone(Builder& menu, const TextTarget& phone) {
  menu.beginGroup();
  menu.call("Call " + phone.shown, phone.url);
  menu.call("FaceTime " + phone.shown, "facetime:" + phone.url.substr(phone.url.find(':') + 1));
  menu.copy("Copy number", phone);
}

void addAddress(Builder& menu, const TextTarget& address) {
  menu.beginGroup();
  menu.act("Show map…", "showAddressMapAction:", share(address.value), address.shown);
  menu.compose("Open in Maps app", endpoints::mapSearch, address);
  menu.copy("Copy address", address);
}

void addSearch(Builder& menu, const TextTargets& targets) {
  const std::string url = std::string(endpoints::webSearch) + targets.query.text;
  const std::string masked = std::string(endpoints::webSearch) + targets.preview;
  menu.open("Search the web for " + targets.preview +
                (targets.query.whole ? "" : " (only its beginning)"),
            url, masked);
  menu.openInAll("Search in ", url, masked);
}

}  // namespace

std::shared_ptr<Menu> actionMenu(const SharedText& text, const TextTargets& targets,
                                 const ApplicationsFor& applications, bool concealed) {
  auto menu = std::make_shared<Menu>();
  Builder builder(*menu, applications, concealed);
  if (targets.mail) addMail(builder, *targets.mail);
  if (targets.link) addLink(builder, *targets.link);
  if (targets.other) addOther(builder, *targets.other);
  if (targets.phone) addPhone(builder, *targets.phone);
  if (targets.address) addAddress(builder, *targets.address);
  builder.beginGroup();
  addSearch(builder, targets);
  builder.act("Add to Calendar…", "addToCalendar:", text, targets.preview);
  builder.act("Add to Notes", "addToNotes:", text, targets.preview);
  return menu;
}

std::shared_ptr<Menu> openInMenu(const TextTarget& link, const ApplicationsFor& applications) {
  auto menu = std::make_shared<Menu>();
  Builder(*menu, applications).openInAll("", link.url, link.shown);
  if (menu->items.empty()) menu->addDisabled("No applications for links found");
  return menu;
}

}  // namespace marbelot
