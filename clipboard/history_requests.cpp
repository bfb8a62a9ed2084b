#include "clipboard/history_requests.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <array>

#include "platform/ascii.h"
#include "platform/text.h"
#include "text/masked_title.h"

namespace marbelot {
namespace {

constexpr int idBase = 36;
// Of each text, so that a search keeps nobody waiting.
constexpr std::size_t searchedBytes = std::size_t{32} << 10;

std::string idText(std::uint64_t id) {
  std::array<char, 16> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), id, idBase).ptr;
  return {digits.data(), end};
}

std::string noEntry(const std::string& id) {
  return "the history has no entry \"" + text::shownTitle(id) + "\"";
}

bool isSecret(ClipCategory category) {
  return category == ClipCategory::apiKey || category == ClipCategory::password;
}

// Whether what is sought stands in the title or the text as it may be shown. A secret must not be
// guessed letter by letter.
bool contains(const HistoryMenus::Entry& entry, const SharedText& text,
              const std::string& lowercasedSearch) {
  const auto holds = [&](std::string_view shown) {
    return text::lowercased(shown).find(lowercasedSearch) != std::string::npos;
  };
  if (holds(entry.title)) return true;
  return text && !isSecret(entry.category) &&
         holds(maskedWindow(*text, maskedForDisplay, searchedBytes));
}

}  // namespace

std::string HistoryRequests::list(const std::string& search, const std::string& category) {
  const std::string sought = text::lowercased(search);
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> out(buffer);
  out.StartArray();
  for (const HistoryMenus::Entry& entry : menus_.entries()) {
    const ClipItem& item = history_.clipHistory[entry.index];
    const std::string name(rawValue(entry.category));
    if (!category.empty() && category != name) continue;
    if (!sought.empty() && !contains(entry, item.kind.text(), sought)) continue;
    out.StartObject();
    out.Key("id");
    out.String(idText(item.id));
    out.Key("category");
    out.String(name);
    out.Key("title");
    out.String(text::shownTitle(entry.title));
    out.Key("date");
    out.Double(item.date);
    out.EndObject();
  }
  out.EndArray();
  return buffer.GetString();
}

std::optional<std::size_t> HistoryRequests::indexOf(const std::string& id) const {
  const auto number = wholeNumber<std::uint64_t>(id, idBase);
  return number ? history_.indexOf(*number) : std::nullopt;
}

std::string HistoryRequests::copy(const std::string& id) {
  const auto index = indexOf(id);
  if (!index) return noEntry(id);
  return menus_.copyEntry(*index) ? std::string() : "the clipboard cannot be written to";
}

std::string HistoryRequests::remove(const std::string& id) {
  const auto index = indexOf(id);
  if (!index) return noEntry(id);
  history_.remove(*index);
  return {};
}

}  // namespace marbelot
