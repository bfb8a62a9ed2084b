#include "platform/linux/link_applications.h"

#include <algorithm>
#include <utility>

#include "platform/linux/themed_icon.h"

namespace marbelot {

void LinkApplications::find(const std::string& scheme,
                            std::function<void(std::vector<LinkApplication>)> found) {
  const SearchRef search = searches_.insert(searches_.end(), Search{std::move(found), {}, {}, {}});
  search->step = queue_.inBackground([scheme] { return applicationsForScheme(scheme); },
                                     [this, search](std::vector<DesktopApplication> all) {
                                       std::reverse(all.begin(), all.end());
                                       search->left = std::move(all);
                                       goOn(search);
                                     });
}

void LinkApplications::goOn(SearchRef search) {
  while (!search->left.empty()) {
    DesktopApplication& next = search->left.back();
    const bool drawn = icons_.contains(next.icon);
    search->done.push_back({next.id, next.name, iconFor(next.icon), next.isDefault});
    search->left.pop_back();
    if (drawn) continue;
    search->step = queue_.after(0, [this, search] { goOn(search); });
    return;
  }
  const auto found = std::move(search->found);
  std::vector<LinkApplication> applications = std::move(search->done);
  searches_.erase(search);
  found(std::move(applications));
}

std::optional<Image> LinkApplications::iconFor(const std::string& name) {
  const auto [entry, isNew] = icons_.try_emplace(name);
  if (isNew) entry->second = themedIcon(name);
  return entry->second;
}

}  // namespace marbelot
