#include "tools/arguments.h"

#include <algorithm>

namespace marbelot::ctl {

Arguments::Arguments(int argc, char** argv) {
  if (argc > 1) command_ = argv[1];
  for (int index = 2; index < argc; ++index) words_.emplace_back(argv[index]);
  const auto end = std::find(words_.begin(), words_.end(), "--");
  optionsEnd_ = static_cast<std::size_t>(end - words_.begin());
  if (end != words_.end()) words_.erase(end);
}

bool Arguments::takeFlag(std::string_view name) {
  const auto end = words_.begin() + static_cast<std::ptrdiff_t>(optionsEnd_);
  const auto found = std::find(words_.begin(), end, name);
  if (found == end) return false;
  words_.erase(found);
  --optionsEnd_;
  return true;
}

std::optional<std::string> Arguments::takeOption(std::string_view name) {
  const std::string assigned = std::string(name) + "=";
  for (std::size_t index = 0; index < optionsEnd_; ++index) {
    const auto at = words_.begin() + static_cast<std::ptrdiff_t>(index);
    if (at->starts_with(assigned)) {
      std::string value = at->substr(assigned.size());
      words_.erase(at);
      --optionsEnd_;
      return value;
    }
    if (*at != name) continue;
    if (index + 1 == words_.size()) {
      lacksValue_ = true;
      return std::nullopt;
    }
    std::string value = words_[index + 1];
    words_.erase(at, at + 2);
    optionsEnd_ = std::max(optionsEnd_, index + 2) - 2;
    return value;
  }
  return std::nullopt;
}

bool Arguments::hasUnknownOptions() const {
  const auto end = words_.begin() + static_cast<std::ptrdiff_t>(optionsEnd_);
  return lacksValue_ || std::any_of(words_.begin(), end, [](const std::string& word) {
           return word.size() > 1 && word.starts_with('-');
         });
}

}  // namespace marbelot::ctl
