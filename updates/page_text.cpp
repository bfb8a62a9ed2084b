#include "updates/page_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "platform/ascii.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::size_t longest = 60000;  // bytes
constexpr std::size_t longestEntity = 12;

constexpr std::array<std::pair<std::string_view, std::string_view>, 14> entities{{{"amp", "&"},
                                                                                  {"lt", "<"},
                                                                                  {"gt", ">"},
                                                                                  {"quot", "\""},
                                                                                  {"apos", "'"},
                                                                                  {"nbsp", " "},
                                                                                  {"ndash", "–"},
                                                                                  {"mdash", "—"},
                                                                                  {"hellip", "…"},
                                                                                  {"bull", "•"},
                                                                                  {"lsquo", "‘"},
                                                                                  {"rsquo", "’"},
                                                                                  {"ldquo", "“"},
                                                                                  {"rdquo", "”"}}};

constexpr std::array<std::string_view, 17> lineTags{"p",  "br", "div", "h1",         "h2",     "h3",
                                                    "h4", "h5", "h6",  "ul",         "ol",     "tr",
                                                    "li", "dt", "dd",  "blockquote", "section"};

class PageReader {
 public:
  explicit PageReader(std::string_view html) : html_(html) {}

  std::string read() {
    while (at_ < html_.size() && out_.size() < longest) {
      const char c = html_[at_];
      if (c == '<') {
        readTag();
      } else if (c == '&') {
        readEntity();
      } else {
        ++at_;
        c == ' ' || c == '\t' || c == '\r' || c == '\n' ? blank() : put(std::string_view(&c, 1));
      }
    }
    return std::move(out_);
  }

 private:
  void blank() { blankDue_ = true; }
  void put(std::string_view text) {
    const bool startsLine = out_.empty() || out_.back() == '\n';
    if (blankDue_ && !startsLine) out_ += ' ';
    blankDue_ = false;
    out_ += text;
  }
  void startLine() {
    blankDue_ = false;
    if (!out_.empty() && out_.back() != '\n') out_ += '\n';
  }

  void readTag() {
    if (html_.substr(at_).starts_with("<!--")) return skipPast("-->");
    std::size_t start = at_ + 1;
    const bool closes = start < html_.size() && html_[start] == '/';
    if (closes) ++start;
    std::size_t end = start;
    while (isAlnum(byteAt(html_, end))) ++end;
    const std::string name =
        text::lowercased(html_.substr(start, std::min(end - start, longestEntity)));
    if (name.empty() && !closes && (end >= html_.size() || html_[end] != '!')) {
      ++at_;
      return put("<");
    }
    skipPast(">");
    // What stands between these is not for reading.
    if (!closes && (name == "script" || name == "style")) {
      skipPast("</" + name);
      return skipPast(">");
    }
    if (std::find(lineTags.begin(), lineTags.end(), name) == lineTags.end()) return;
    startLine();
    if (name == "li" && !closes) put("• ");
    // A paragraph's end leaves a line blank.
    if (closes && name == "p" && !out_.empty() && !out_.ends_with("\n\n")) out_ += '\n';
  }

  void skipPast(std::string_view mark) {
    const std::size_t found = html_.find(mark, at_);
    at_ = found == html_.npos ? html_.size() : found + mark.size();
  }

  void readEntity() {
    const std::size_t end = html_.substr(at_, longestEntity).find(';');
    const std::string_view name =
        end == html_.npos ? std::string_view() : html_.substr(at_ + 1, end - 1);
    std::string meaning;
    if (name.starts_with('#')) {
      meaning = numbered(name.substr(1));
    } else {
      const auto found = std::find_if(entities.begin(), entities.end(),
                                      [&](const auto& entity) { return entity.first == name; });
      if (found != entities.end()) meaning = found->second;
    }
    if (meaning.empty()) {
      ++at_;
      return put("&");
    }
    at_ += name.size() + 2;
    meaning == " " ? blank() : put(meaning);
  }

  static std::string numbered(std::string_view digits) {
    const bool hexadecimal = digits.starts_with('x') || digits.starts_with('X');
    if (hexadecimal) digits.remove_prefix(1);
    const auto scalar = wholeNumber<std::uint32_t>(digits, hexadecimal ? 16 : 10);
    if (!scalar || *scalar > 0x10FFFF || (*scalar >= 0xD800 && *scalar < 0xE000) || *scalar < ' ')
      return {};
    std::string character;
    text::appendScalar(character, *scalar);
    return character;
  }

  const std::string_view html_;
  std::size_t at_ = 0;
  std::string out_;
  bool blankDue_ = false;
};

}  // namespace

std::string plainText(std::string_view given) {
  std::string shown = text::sanitized(std::string(given.substr(0, longest)));
  std::erase(shown, '\r');
  // Only what is no line break or tab drives anything.
  std::erase_if(
      shown, [](char c) { return static_cast<unsigned char>(c) < ' ' && c != '\n' && c != '\t'; });
  return shown;
}

std::string pageText(std::string_view html) {
  std::string text = plainText(PageReader(html).read());
  const std::size_t end = text.find_last_not_of(" \n");
  text.resize(end == text.npos ? 0 : end + 1);
  return text;
}

}  // namespace marbelot
