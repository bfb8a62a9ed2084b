// What the items of an action menu carry.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/menu.h"

namespace marbelot {

// Something to open, with an application of the user's choice.
class OpenAction final : public RepresentedObject {
 public:
  // `application`: as LinkApplication::id; empty: the system's default. `masked`: the URL as it may
  // be shown.
  OpenAction(std::string link, std::string application, std::string masked)
      : url(std::move(link)), appURL(std::move(application)), shown_(std::move(masked)) {}
  std::string text() const override { return shown_; }

  const std::string url;
  const std::string appURL;

 private:
  const std::string shown_;
};

// A piece of a text or all of it, which may hold secrets and be long.
class DetectedText final : public RepresentedObject {
 public:
  // `secret`: it comes out of a concealed text.
  DetectedText(SharedText whole, std::string masked, bool secret = false)
      : value(std::move(whole)), concealed(secret), shown_(std::move(masked)) {}
  std::string text() const override { return shown_; }

  const SharedText value;
  const bool concealed;

 private:
  const std::string shown_;
};

// Null when the sender carries none.
std::shared_ptr<const OpenAction> openAction(const MenuItem& sender);
// The text that the sender carries, as DetectedText or as it is. Null when there is none.
std::shared_ptr<const DetectedText> detectedText(const MenuItem& sender);

// Whether a link is what it seems to be: no program in a URL, no credentials, no control
// characters, blanks or marks of direction. Others are not even shown as links.
bool isHonest(std::string_view url);
// Whether it may be handed to another program, too: of a scheme that only leads to pages, files for
// download, mail, calls, chats and meetings, and not too long to be handed over.
bool isOpenable(std::string_view url);
// Whether it is such a link to a page.
bool isWebLink(std::string_view url);
// Whether there is anything in it that could be read as something else: a blank, a control
// character, a mark of direction, a backslash.
bool isTreacherous(std::string_view url);
// The host of a URL; empty when it has none.
std::string_view hostOf(std::string_view url);

}  // namespace marbelot
