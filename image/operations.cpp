#include "image/operations.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "image/decimal.h"
#include "image/pixel_operations.h"
#include "platform/ascii.h"

namespace marbelot {
namespace {

using Words = std::span<const std::string_view>;

// Words between colons; empty ones do not count.
std::vector<std::string_view> splitWords(std::string_view text) {
  std::vector<std::string_view> words;
  while (!text.empty()) {
    const std::string_view word = text.substr(0, text.find(':'));
    if (!word.empty()) words.push_back(word);
    text.remove_prefix(std::min(word.size() + 1, text.size()));
  }
  return words;
}

std::string_view wordAt(Words words, std::size_t index, std::string_view missing = {}) {
  return index < words.size() ? words[index] : missing;
}

std::optional<std::int64_t> signedNumber(std::string_view word) {
  if (word.starts_with('+') && !word.starts_with("+-")) word.remove_prefix(1);
  return wholeNumber<std::int64_t>(word);
}

// --- Parameters: what the words of an op string stand for ----------------------------------------

EditParameter firstWord(Words words) { return std::string(wordAt(words, 0)); }

EditParameter firstTwoWords(Words words) {
  return std::string(wordAt(words, 0)) + ':' + std::string(wordAt(words, 1));
}

EditParameter borderColor(Words words) {
  const std::string_view word = wordAt(words, 0);
  if (word == "black") return colors::black;
  if (word == "gray") return colors::gray;
  if (word == "red") return colors::red;
  if (word == "blue") return colors::blue;
  if (word == "green") return colors::green;
  return colors::white;
}

// Op strings have a badge by default; a menu's parameter without a style has none.
EditParameter emblemWords(Words words) {
  return std::string(wordAt(words, 0, "circle")) + ':' + std::string(wordAt(words, 1, "white"));
}

EditParameter degrees(Words words) { return signedNumber(wordAt(words, 0)).value_or(90); }

EditParameter factor(Words words) { return decimalNumber(wordAt(words, 0)).value_or(0.5); }

// --- Edits: what is done -------------------------------------------------------------------------

// None when the parameter is not a T.
template <typename T, typename Make>
std::optional<Edit> editOf(const EditParameter& parameter, Make make) {
  const T* argument = std::get_if<T>(&parameter);
  if (!argument) return std::nullopt;
  return make(*argument);
}

std::optional<Edit> borderEdit(const EditParameter& parameter) {
  return editOf<PixelColor>(parameter, [](PixelColor color) {
    return Edit{[=](const Bitmap& picture) { return addBorder(picture, color); }, "Added border"};
  });
}

std::optional<Edit> shadowEdit(const EditParameter& parameter) {
  return editOf<std::string>(parameter, [](const std::string& text) {
    const auto words = splitWords(text);
    const auto canvas = wordAt(words, 0) == "same" ? ShadowCanvas::sameSize : ShadowCanvas::grown;
    const auto size = wordAt(words, 1);
    const double share = size == "small" ? 0.05 : size == "large" ? 0.15 : 0.09;
    return Edit{[=](const Bitmap& picture) { return addRoundedShadow(picture, canvas, share); },
                "Added rounded shadow"};
  });
}

std::optional<Edit> transparentEdit(const EditParameter& parameter) {
  return editOf<std::string>(parameter, [](const std::string& word) {
    const auto background = word == "white"   ? Background::white
                            : word == "black" ? Background::black
                                              : Background::corner;
    return Edit{[=](const Bitmap& picture) { return makeTransparent(picture, background); },
                "Made background transparent"};
  });
}

std::optional<Edit> emblemEdit(const EditParameter& parameter) {
  return editOf<std::string>(parameter, [](const std::string& text) {
    const auto words = splitWords(text);
    const bool circle = wordAt(words, 0, "circle") == "circle";
    const auto shape = circle ? EmblemShape::circle : EmblemShape::squircle;
    const auto word = wordAt(words, 1, "clear");
    const auto style = word == "clear"  ? EmblemStyle::clear
                       : word == "dark" ? EmblemStyle::dark
                                        : EmblemStyle::white;
    return Edit{[=](const Bitmap& picture) { return makeEmblem(picture, shape, style); },
                circle ? "Made circular emblem" : "Made rounded-square emblem"};
  });
}

std::optional<Edit> rotateEdit(const EditParameter& parameter) {
  return editOf<std::int64_t>(parameter, [](std::int64_t angle) {
    return Edit{[=](const Bitmap& picture) { return rotate(picture, angle); },
                "Rotated " + std::to_string(angle) + "°"};
  });
}

std::optional<Edit> flipEdit(const EditParameter& parameter) {
  return editOf<std::string>(parameter, [](const std::string& word) {
    const auto axis = word == "h" ? FlipAxis::leftRight : FlipAxis::topBottom;
    return Edit{[=](const Bitmap& picture) { return flip(picture, axis); }, "Flipped"};
  });
}

std::optional<Edit> resizeEdit(const EditParameter& parameter) {
  return editOf<double>(parameter, [](double share) {
    const double percent = share * 100;
    // What cannot be told of is not done either.
    if (!(std::abs(percent) < 0x1p63))
      return Edit{[](const Bitmap&) { return Result::refusal(); }, ""};
    return Edit{[=](const Bitmap& picture) { return resize(picture, share); },
                "Resized to " + std::to_string(static_cast<std::int64_t>(percent)) + "%"};
  });
}

// --- The table -----------------------------------------------------------------------------------

constexpr EditChoice borderChoices[] = {{"White", "white"}, {"Black", "black"}, {"Gray", "gray"},
                                        {"Red", "red"},     {"Blue", "blue"},   {"Green", "green"}};
constexpr EditChoice shadowChoices[] = {{"Grow canvas (image stays full size)", ""},
                                        {"  Small", "grow:small"},
                                        {"  Medium", "grow:medium"},
                                        {"  Large", "grow:large"},
                                        {"", ""},
                                        {"Keep same size (fit image inside)", ""},
                                        {"  Small", "same:small"},
                                        {"  Medium", "same:medium"},
                                        {"  Large", "same:large"}};
constexpr EditChoice transparentChoices[] = {{"Remove white background", "white"},
                                             {"Remove black background", "black"},
                                             {"Remove corner color (auto)", "corner"}};
constexpr EditChoice emblemChoices[] = {{"Circle", ""},
                                        {"  Transparent background", "circle:clear"},
                                        {"  White badge", "circle:white"},
                                        {"  Dark badge", "circle:dark"},
                                        {"", ""},
                                        {"Rounded square (app-icon style)", ""},
                                        {"  Transparent background", "squircle:clear"},
                                        {"  White badge", "squircle:white"},
                                        {"  Dark badge", "squircle:dark"}};
constexpr EditChoice rotateChoices[] = {{"Right 90°", "90"}, {"Left 90°", "-90"}, {"180°", "180"}};
constexpr EditChoice flipChoices[] = {{"Horizontal", "h"}, {"Vertical", "v"}};
constexpr EditChoice resizeChoices[] = {{"75%", "0.75"}, {"50%", "0.5"}, {"25%", "0.25"}};

constexpr auto unreadable = std::nullopt;

constexpr Operation table[] = {
    {"border", "addBorderClip:", "Add border", false, borderChoices,  //
     "", borderColor, borderEdit},
    {"shadow", "addShadowClip:", "Add rounded shadow", false, shadowChoices,
     "Image too small for that shadow", firstTwoWords, shadowEdit},
    {"transparent", "makeTransparentClip:", "Make transparent", false, transparentChoices,
     unreadable, firstWord, transparentEdit},
    {"emblem", "makeEmblemClip:", "Make emblem", false, emblemChoices,
     "Couldn't make an emblem from that image", emblemWords, emblemEdit},
    {"rotate", "rotateClip:", "Rotate", true, rotateChoices,  //
     unreadable, degrees, rotateEdit},
    {"flip", "flipClip:", "Flip", false, flipChoices,  //
     unreadable, firstWord, flipEdit},
    {"resize", "resizeClip:", "Resize", false, resizeChoices,  //
     unreadable, factor, resizeEdit},
};

}  // namespace

EditParameter Operation::parameterOf(const EditChoice& choice) const {
  return parameter(splitWords(choice.arguments));
}

std::span<const Operation> operations() { return table; }

std::string_view failureMessage(const Operation& operation, const Result& result,
                                std::string_view unreadableMessage) {
  return result.refused() ? unreadableMessage
                          : operation.failureMessage.value_or(unreadableMessage);
}

std::optional<NamedEdit> namedEdit(std::string_view op) {
  const auto words = splitWords(op);
  for (const Operation& operation : table) {
    if (operation.verb != wordAt(words, 0)) continue;
    auto edit = operation.edit(operation.parameter(Words(words).subspan(1)));
    return NamedEdit{&operation, *std::move(edit)};
  }
  return std::nullopt;
}

std::optional<Bitmap> apply(std::string_view op, const Bitmap& picture) {
  const auto named = namedEdit(op);
  if (!named) return std::nullopt;
  auto result = named->edit.apply(picture);
  if (!result) return std::nullopt;
  return std::move(*result);
}

}  // namespace marbelot
