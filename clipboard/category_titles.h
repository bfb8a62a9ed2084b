// How the menus name the categories.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "classification/classifier.h"

namespace marbelot {

struct CategoryTitle {
  std::string_view symbol;
  std::string_view title;  // plural
};

// In the order of ClipCategory.
inline constexpr std::array<CategoryTitle, clipCategoryCount> categoryTitles{{
    {"\U0001F511", "API keys"},
    {"\U0001F512", "Passwords"},
    {"\U0001F517", "URLs"},
    {"\u2709\uFE0E", "Emails"},  // the selector asks for the text style
    {"\U0001F4DE", "Phone numbers"},
    {"\U0001F5FA", "Addresses"},
    {"#", "Numbers"},
    {"\U0001F5A5", "Terminal I/O"},
    {"\U0001F9E9", "Source code"},
    {"\U0001F4DD", "Text"},
    {"\U0001F5BC", "Images"},
}};

inline const CategoryTitle& categoryTitle(ClipCategory category) {
  return categoryTitles[static_cast<std::size_t>(category)];
}

// Symbol, space and title.
inline std::string displayTitle(ClipCategory category) {
  const CategoryTitle& shown = categoryTitle(category);
  return std::string(shown.symbol) + " " + std::string(shown.title);
}

}  // namespace marbelot
