#include "classification/language_signals.h"

#include <algorithm>
#include <initializer_list>

#include "platform/text.h"

namespace marbelot {
namespace {

using Words = std::initializer_list<std::string_view>;

bool containsAny(std::string_view text, Words words) {
  return std::any_of(words.begin(), words.end(), [text](std::string_view word) {
    return text.find(word) != std::string_view::npos;
  });
}

bool isWordAt(std::string_view text, std::size_t at) {
  return at < text.size() && text::isWordCharacter(text::scalarAt(text, at).value);
}

bool isWordBefore(std::string_view text, std::size_t at) {
  return at > 0 && text::isWordCharacter(text::scalarBefore(text, at).value);
}

bool isSpaceAt(std::string_view text, std::size_t at) {
  return at < text.size() && text::isBlankOrNewline(text::scalarAt(text, at).value);
}

// \s*
std::size_t skipSpace(std::string_view text, std::size_t at) {
  while (isSpaceAt(text, at)) at += text::scalarAt(text, at).bytes;
  return at;
}

// \w*
std::size_t skipWord(std::string_view text, std::size_t at) {
  while (isWordAt(text, at)) at += text::scalarAt(text, at).bytes;
  return at;
}

// Calls `test` with the place behind each occurrence of `word` until it returns true. Tests that
// read a stretch of one kind of character stay linear: the next occurrence is behind or at the
// end of any such stretch but for the length of a word.
template <typename Test>
bool anyAfter(std::string_view text, std::string_view word, Test test) {
  for (std::size_t at = text.find(word); at != text.npos; at = text.find(word, at + word.size())) {
    if (test(at, at + word.size())) return true;
  }
  return false;
}

// The same at the start of a line, after \s*.
template <typename Test>
bool anyAtLineStart(std::string_view text, std::string_view word, Test test) {
  return anyAfter(text, word, [&](std::size_t at, std::size_t end) {
    const std::size_t code = text.find_last_not_of(" \t\r\f\v", at == 0 ? text.npos : at - 1);
    const bool first = at == 0 || code == text.npos || text[code] == '\n';
    return first && test(end);
  });
}

// func\s+\w+\s*\([^)]*\)\s*(->|\{)
bool hasSwiftFunction(std::string_view text) {
  std::size_t close = 0;  // the first closing bracket at or behind the last place asked about
  return anyAfter(text, "func", [&](std::size_t, std::size_t end) {
    const std::size_t name = skipSpace(text, end);
    const std::size_t nameEnd = skipWord(text, name);
    const std::size_t open = skipSpace(text, nameEnd);
    if (name == end || nameEnd == name || open >= text.size() || text[open] != '(') return false;
    if (close != text.npos && close < open) close = text.find(')', open);
    if (close == text.npos) return false;
    const std::string_view rest = text.substr(skipSpace(text, close + 1));
    return rest.starts_with("->") || rest.starts_with("{");
  });
}

// (^|\n)\s*def\s+\w+\s*\(.*\)\s*: where the dot stays on its line
bool hasPythonFunction(std::string_view text) {
  return anyAtLineStart(text, "def", [&](std::size_t end) {
    const std::size_t name = skipSpace(text, end);
    const std::size_t nameEnd = skipWord(text, name);
    const std::size_t open = skipSpace(text, nameEnd);
    if (name == end || nameEnd == name || open >= text.size() || text[open] != '(') return false;
    const std::string_view line = text.substr(open, text.find('\n', open) - open);
    for (std::size_t close = line.rfind(')'); close != line.npos;) {
      const std::size_t after = skipSpace(text, open + close + 1);
      if (after < text.size() && text[after] == ':') return true;
      // Only an earlier bracket right before a colon can help; brackets are passed once each.
      const std::size_t colon = line.rfind(':', close);
      if (colon == line.npos || colon == 0) return false;
      const std::size_t before = line.find_last_not_of(" \t", colon - 1);
      if (before != line.npos && line[before] == ')') return true;
      close = line.rfind(')', colon);
    }
    return false;
  });
}

// (^|\n)\s*(from\s+[\w.]+\s+import|import)\s+\w+
bool hasPythonImport(std::string_view text) {
  return anyAtLineStart(text, "import",
                        [&](std::size_t end) {
                          const std::size_t name = skipSpace(text, end);
                          return name > end && isWordAt(text, name);
                        }) ||
         anyAtLineStart(text, "from", [&](std::size_t end) {
           const std::size_t module = skipSpace(text, end);
           std::size_t at = module;
           while (at < text.size() && (text[at] == '.' || isWordAt(text, at))) {
             at += text::scalarAt(text, at).bytes;
           }
           const std::size_t keyword = skipSpace(text, at);
           constexpr std::string_view importKeyword = "import";
           if (module == end || at == module || keyword == at ||
               !text.substr(keyword).starts_with(importKeyword)) {
             return false;
           }
           const std::size_t name = skipSpace(text, keyword + importKeyword.size());
           return name > keyword + importKeyword.size() && isWordAt(text, name);
         });
}

// #include\s*<[\w./]+>
bool hasCInclude(std::string_view text) {
  return anyAfter(text, "#include", [&](std::size_t, std::size_t end) {
    const std::size_t open = skipSpace(text, end);
    if (open >= text.size() || text[open] != '<') return false;
    std::size_t at = open + 1;
    while (at < text.size() && (text[at] == '.' || text[at] == '/' || isWordAt(text, at))) {
      at += text::scalarAt(text, at).bytes;
    }
    return at > open + 1 && at < text.size() && text[at] == '>';
  });
}

// \$[A-Za-z_]\w*
bool hasPhpVariable(std::string_view text) {
  return anyAfter(text, "$", [&](std::size_t, std::size_t end) {
    const char c = end < text.size() ? text[end] : ' ';
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
  });
}

// \bexport\s+(default|const|function)\b
bool hasExport(std::string_view text) {
  return anyAfter(text, "export", [&](std::size_t at, std::size_t end) {
    if (isWordBefore(text, at) || !isSpaceAt(text, end)) return false;
    const std::size_t what = skipSpace(text, end);
    for (const std::string_view word : {"default", "const", "function"}) {
      if (text.substr(what).starts_with(word) && !isWordAt(text, what + word.size())) return true;
    }
    return false;
  });
}

// namespace\s+\w
bool hasNamespaceName(std::string_view text) {
  return anyAfter(text, "namespace", [&](std::size_t, std::size_t end) {
    return isSpaceAt(text, end) && isWordAt(text, skipSpace(text, end));
  });
}

// (public|private|protected)\s+(static\s+)?(class|void|int|String)\b
bool hasJavaMember(std::string_view text) {
  const auto test = [&](std::size_t, std::size_t end) {
    std::size_t what = skipSpace(text, end);
    if (what == end) return false;
    constexpr std::string_view staticKeyword = "static";
    if (text.substr(what).starts_with(staticKeyword) &&
        isSpaceAt(text, what + staticKeyword.size())) {
      what = skipSpace(text, what + staticKeyword.size());
    }
    for (const std::string_view word : {"class", "void", "int", "String"}) {
      if (text.substr(what).starts_with(word) && !isWordAt(text, what + word.size())) return true;
    }
    return false;
  };
  return anyAfter(text, "public", test) || anyAfter(text, "private", test) ||
         anyAfter(text, "protected", test);
}

// import\s+java\.
bool hasJavaImport(std::string_view text) {
  return anyAfter(text, "import", [&](std::size_t, std::size_t end) {
    return isSpaceAt(text, end) && text.substr(skipSpace(text, end)).starts_with("java.");
  });
}

// (^|\n)\s*def\s+\w+
bool hasRubyMethod(std::string_view text) {
  return anyAtLineStart(text, "def", [&](std::size_t end) {
    return isSpaceAt(text, end) && isWordAt(text, skipSpace(text, end));
  });
}

// <(html|!DOCTYPE|div|span|body|head|table|script|style)\b
bool hasHtmlTag(std::string_view text) {
  return anyAfter(text, "<", [&](std::size_t, std::size_t end) {
    for (const std::string_view tag :
         {"html", "!DOCTYPE", "div", "span", "body", "head", "table", "script", "style"}) {
      if (text.substr(end).starts_with(tag) && !isWordAt(text, end + tag.size())) return true;
    }
    return false;
  });
}

// [.#]?[\w-]+\s*\{[^}]*:[^}]*;
bool hasCssRule(std::string_view text) {
  std::size_t colon = 0, semicolon = 0, close = 0;  // the first of each behind the brace
  const auto advance = [text](std::size_t& known, char c, std::size_t from) {
    if (known != text.npos && known < from) known = text.find(c, from);
  };
  return anyAfter(text, "{", [&](std::size_t at, std::size_t end) {
    std::size_t before = at;
    while (before > 0) {
      const text::Scalar scalar = text::scalarBefore(text, before);
      if (!text::isBlankOrNewline(scalar.value)) break;
      before -= scalar.bytes;
    }
    if (before == 0 || !(isWordBefore(text, before) || text[before - 1] == '-')) return false;
    advance(colon, ':', end);
    if (colon == text.npos) return false;
    advance(semicolon, ';', colon + 1);
    advance(close, '}', end);
    return semicolon != text.npos && semicolon < close;
  });
}

// \b(word)\b for any of the words, whose parts may be set apart by any white space.
bool hasWord(std::string_view text, Words words) {
  return std::any_of(words.begin(), words.end(), [text](std::string_view word) {
    const std::size_t gap = std::min(word.find(' '), word.size());
    return anyAfter(text, word.substr(0, gap), [&](std::size_t at, std::size_t end) {
      if (isWordBefore(text, at)) return false;
      if (gap == word.size()) return !isWordAt(text, end);
      const std::size_t second = skipSpace(text, end);
      const std::string_view rest = word.substr(gap + 1);
      return second > end && text.substr(second).starts_with(rest) &&
             !isWordAt(text, second + rest.size());
    });
  });
}

bool hasSqlStatement(std::string_view text) {
  return hasWord(text, {"SELECT", "INSERT INTO", "UPDATE", "DELETE FROM", "CREATE TABLE",
                        "ALTER TABLE"}) &&
         hasWord(text, {"FROM", "INTO", "SET", "VALUES", "WHERE", "TABLE"});
}

bool isKeyCharacter(std::string_view text, std::size_t at) {
  return text[at] == '.' || text[at] == '-' || isWordAt(text, at);
}

// "\"[\w.\-]+\"\s*:"
bool hasJsonKey(std::string_view text) {
  for (std::size_t open = text.find('"'); open != text.npos;) {
    std::size_t close = open + 1;
    while (close < text.size() && isKeyCharacter(text, close)) {
      close += text::scalarAt(text, close).bytes;
    }
    if (close >= text.size()) return false;
    if (text[close] == '"' && close > open + 1) {
      const std::size_t colon = skipSpace(text, close + 1);
      if (colon < text.size() && text[colon] == ':') return true;
    }
    open = text.find('"', close);
  }
  return false;
}

// The e of 1e9.
bool isExponent(std::string_view text, std::size_t at) {
  return text[at] == 'e' && at > 0 && text[at - 1] >= '0' && text[at - 1] <= '9';
}

bool isWrapped(std::string_view text) {
  return (text.starts_with('{') && text.ends_with('}')) ||
         (text.starts_with('[') && text.ends_with(']'));
}

}  // namespace

bool carriesSignal(Language language, std::string_view text) {
  switch (language) {
    case Language::php:
      return containsAny(text, {"<?php", "<?=", "->", ";"}) || hasPhpVariable(text);
    case Language::cpp:
      return containsAny(text, {"std::", "int main", "cout <<", "cin ", "template", "nullptr",
                                "namespace ", "::"});
    case Language::c:
      return hasCInclude(text);
    case Language::swift:
      return containsAny(text, {"import SwiftUI", "import Cocoa", "import Foundation"}) ||
             hasSwiftFunction(text);
    case Language::python:
      return containsAny(text, {"print(", ":", "\n    "}) || hasPythonFunction(text) ||
             hasPythonImport(text);
    case Language::typeScript:
      return containsAny(text, {"let ", "var ", "interface ", ": string", ": number", ": boolean"});
    case Language::javaScript:
      return containsAny(text, {"=>", "const ", "function", "console.log", "require("}) ||
             hasExport(text);
    case Language::cSharp:
      return containsAny(text, {"using System", "Console.WriteLine"}) || hasNamespaceName(text);
    case Language::java:
      return containsAny(text, {"public static void main", "System.out.print"}) ||
             hasJavaMember(text) || hasJavaImport(text);
    case Language::go:
      return containsAny(text, {"package main", "func main()", "fmt."});
    case Language::rust:
      return containsAny(text, {"fn main(", "println!", "let mut "});
    case Language::ruby:
      return containsAny(text, {"end", "puts"}) || hasRubyMethod(text);
    case Language::json:
      return isWrapped(text) && hasJsonKey(text);
    case Language::shell:
      return text.starts_with("#!/bin/");
    case Language::html:
      return hasHtmlTag(text);
    case Language::css:
      return hasCssRule(text);
    case Language::sql:
      return hasSqlStatement(text);
  }
  return false;
}

bool isJson(std::string_view text) {
  if (!carriesSignal(Language::json, text)) return false;
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (c == '"') {
      for (++at; at < text.size() && text[at] != '"'; ++at) {
        if (text[at] == '\\') ++at;
        if (at < text.size() && text[at] == '\n') return false;
      }
      ++at;
    } else if (c == '/' && text.substr(at).starts_with("//")) {
      at = std::min(text.find('\n', at), text.size());  // as some tools allow
    } else if (c >= 'a' && c <= 'z' && !isExponent(text, at)) {
      const std::size_t end = skipWord(text, at);
      const std::string_view word = text.substr(at, end - at);
      if (word != "true" && word != "false" && word != "null") return false;
      at = end;
    } else if (std::string_view("{}[]:,-+.0123456789eE").find(c) != std::string_view::npos ||
               isSpaceAt(text, at)) {
      ++at;
    } else {
      return false;
    }
  }
  return true;
}

}  // namespace marbelot
