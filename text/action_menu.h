// The menu of what can be done with a text.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/menu.h"
#include "platform/platform.h"
#include "text/text_targets.h"

namespace marbelot {

// The applications for links of a scheme ("mailto"), as Workspace::findApplications tells them;
// null while that is not known.
using ApplicationsFor = std::function<const std::vector<LinkApplication>*(std::string_view scheme)>;

// A group of items for each kind of target, and what can be done with any text. What is copied out
// of a `concealed` text is marked so.
std::shared_ptr<Menu> actionMenu(const SharedText& text, const TextTargets& targets,
                                 const ApplicationsFor& applications, bool concealed);

// The applications to open a link to a page in, the default one first.
std::shared_ptr<Menu> openInMenu(const TextTarget& link, const ApplicationsFor& applications);

}  // namespace marbelot
