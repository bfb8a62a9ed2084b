// Finding the applications for a link, with their icons.
#pragma once

#include <QString>
#include <functional>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "platform/linux/applications.h"
#include "platform/platform.h"

namespace marbelot {

// Main thread only. Desktop files are read in the background; icons, which only the main thread may
// draw, are drawn in an event each.
class LinkApplications {
 public:
  explicit LinkApplications(MainQueue& queue) : queue_(queue) {}

  // Not before this returns.
  void find(const std::string& scheme, std::function<void(std::vector<LinkApplication>)> found);

 private:
  struct Search {
    std::function<void(std::vector<LinkApplication>)> found;
    std::vector<DesktopApplication> left;  // without an icon yet, in reverse
    std::vector<LinkApplication> done;
    Task step;
  };
  using SearchRef = std::list<Search>::iterator;

  void goOn(SearchRef search);
  std::optional<Image> iconFor(const std::string& name);

  MainQueue& queue_;
  std::list<Search> searches_;
  std::map<std::string, std::optional<Image>> icons_;  // by name
};

}  // namespace marbelot
