// What a menu item asks to be done to a picture: the menu of all that can be asked for, too.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>

#include "image/operations.h"
#include "platform/menu.h"

namespace marbelot {

// Where the picture comes from.
struct EditFile {
  std::string path;
};
struct EditClipHistory {
  std::int64_t index = 0;  // in the clipboard history
};
struct EditClipboard {};
using EditSource = std::variant<EditFile, EditClipHistory, EditClipboard>;

class EditRequest final : public RepresentedObject {
 public:
  EditRequest(EditSource from, EditParameter argument)
      : source(std::move(from)), param(std::move(argument)) {}
  // "clipboard:90", "history 3:grow:small", "/a/picture.png:0.5"
  std::string text() const override;

  const EditSource source;
  const EditParameter param;  // its type depends on the action
};

// The request that the sender carries. Any other sender asks for the picture on the clipboard, with
// no argument.
std::shared_ptr<const EditRequest> editRequest(const MenuItem& sender);

// All that can be done to the picture. Its items carry `payload`, the content that they stand for.
std::shared_ptr<Menu> editMenu(const EditSource& source,
                               const std::shared_ptr<const HUDPayload>& payload = {});

}  // namespace marbelot
