#include "image/edit_request.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace marbelot {
namespace {

std::string textOf(const EditSource& source) {
  if (const auto* file = std::get_if<EditFile>(&source)) return file->path;
  if (const auto* entry = std::get_if<EditClipHistory>(&source))
    return "history " + std::to_string(entry->index);
  return "clipboard";
}

std::string textOf(const EditParameter& param) {
  std::array<char, 32> buffer{};
  if (const auto* text = std::get_if<std::string>(&param)) return *text;
  if (const auto* number = std::get_if<std::int64_t>(&param)) return std::to_string(*number);
  if (const auto* number = std::get_if<double>(&param)) {
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), *number).ptr;
    return {buffer.data(), end};
  }
  if (const auto* color = std::get_if<PixelColor>(&param)) {
    std::snprintf(buffer.data(), buffer.size(), "#%02x%02x%02x", color->red, color->green,
                  color->blue);
    return buffer.data();
  }
  return {};
}

}  // namespace

std::string EditRequest::text() const { return textOf(source) + ":" + textOf(param); }

std::shared_ptr<const EditRequest> editRequest(const MenuItem& sender) {
  const auto* object = std::get_if<std::shared_ptr<const RepresentedObject>>(&sender.represented);
  auto request = object ? std::dynamic_pointer_cast<const EditRequest>(*object) : nullptr;
  return request ? request : std::make_shared<const EditRequest>(EditClipboard{}, EditParameter{});
}

std::shared_ptr<Menu> editMenu(const EditSource& source,
                               const std::shared_ptr<const HUDPayload>& payload) {
  auto menu = std::make_shared<Menu>();
  menu->add("Crop…", "cropClipImage:", std::make_shared<const EditRequest>(source, EditParameter{}))
      ->payload = payload;
  for (const Operation& operation : operations()) {
    auto submenu = std::make_shared<Menu>();
    for (const EditChoice& choice : operation.choices) {
      if (choice.title.empty()) {
        submenu->addSeparator();
      } else if (choice.arguments.empty()) {
        submenu->addDisabled(std::string(choice.title));
      } else {
        auto request = std::make_shared<const EditRequest>(source, operation.parameterOf(choice));
        submenu->add(std::string(choice.title), std::string(operation.selector), std::move(request))
            ->payload = payload;
      }
    }
    if (operation.startsSection) menu->addSeparator();
    menu->addSubmenu(std::string(operation.menuTitle), std::move(submenu));
  }
  return menu;
}

}  // namespace marbelot
