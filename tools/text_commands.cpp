// The decisions of the program on a text, for pipes: no running instance needed.

#include <charconv>
#include <cstdio>
#include <map>

#include "classification/classifier.h"
#include "platform/detection.h"
#include "platform/text.h"
#include "text/calendar_event.h"
#include "text/flatten_trim.h"
#include "tools/arguments.h"

namespace marbelot::ctl {
namespace {

constexpr std::size_t defaultPreviewLimit = 36;

// Standard input, or the file. None when it cannot be read.
std::optional<std::string> readInput(const std::vector<std::string>& files) {
  auto bytes = readBytes(files.empty() ? "-" : files[0]);
  if (!bytes || text::isValid(*bytes)) return bytes;
  std::fputs("marbelotctl: the text is not valid UTF-8; U+FFFD stands for what is not\n", stderr);
  return text::sanitized(*std::move(bytes));
}

void print(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stdout); }

void printLine(std::string_view text) {
  print(text);
  print("\n");
}

int fail(const std::string& message) {
  std::fprintf(stderr, "marbelotctl: %s\n", message.c_str());
  return failed;
}

// One line each: kind, start and end in characters, the text, what it means; tabs between.
void printDetections(std::string_view text) {
  std::map<DetectionKind, std::string> names;
  unsigned all = 0;
  for (const auto& [kind, name] : detectionKinds) {
    names[kind] = name;
    all |= static_cast<unsigned>(kind);
  }
  std::size_t bytes = 0;
  std::size_t characters = 0;
  for (const Detection& found : detect(text, all)) {
    characters += text::characterCount(text.substr(bytes, found.range.start - bytes));
    bytes = found.range.start;
    const std::string_view piece = text.substr(found.range.start, found.range.length);
    const std::size_t end = characters + text::characterCount(piece);
    std::string shown = flatten(piece, " ");
    printLine(names[found.kind] + "\t" + std::to_string(characters) + "\t" + std::to_string(end) +
              "\t" + shown + "\t" + found.value);
  }
}

// Seconds since 1970, of a year with four digits.
std::optional<double> momentFrom(const std::string& text) {
  constexpr std::int64_t first = -62135596800, last = 253402300799;
  std::int64_t moment = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, moment);
  if (error != std::errc() || stop != end || moment < first || moment > last) return std::nullopt;
  return static_cast<double>(moment);
}

// One that ends no line of the event's.
bool isUuid(std::string_view text) {
  return !text.empty() &&
         text.find_first_not_of("0123456789ABCDEFabcdef-") == std::string_view::npos;
}

}  // namespace

int runTextCommand(Arguments& arguments, bool& known) {
  const std::string& command = arguments.command();
  known = command == "classify" || command == "language" || command == "mask" ||
          command == "flatten" || command == "trim" || command == "preview" ||
          command == "detect" || command == "event";
  if (!known) return wrongUsage;

  std::string separator = " ";
  std::string mode = "both";
  std::size_t limit = defaultPreviewLimit;
  if (command == "flatten") separator = arguments.takeOption("--separator").value_or(separator);
  if (command == "trim") {
    mode = arguments.takeOption("--mode").value_or(mode);
    if (mode != "left" && mode != "right" && mode != "both") return wrongUsage;
  }
  if (command == "preview") {
    if (const auto asked = arguments.takeOption("--limit")) {
      const char* end = asked->data() + asked->size();
      const auto [stop, error] = std::from_chars(asked->data(), end, limit);
      if (error != std::errc() || stop != end) return wrongUsage;
    }
  }
  double now = text::now();
  std::string uid;
  if (command == "event") {
    if (const auto asked = arguments.takeOption("--now")) {
      const auto moment = momentFrom(*asked);
      if (!moment) return wrongUsage;
      now = *moment;
    }
    uid = arguments.takeOption("--uid").value_or(newUuid());
    if (!isUuid(uid)) return wrongUsage;
  }
  if (arguments.hasUnknownOptions() || arguments.rest().size() > 1) return wrongUsage;

  const auto input = readInput(arguments.rest());
  if (!input) {
    return fail("cannot read " +
                (arguments.rest().empty() ? std::string("standard input") : arguments.rest()[0]));
  }
  if (command == "classify") {
    printLine(rawValue(classify(*input)));
  } else if (command == "language") {
    const auto language = detectLanguage(*input);
    if (!language) return failed;
    printLine(*language);
  } else if (command == "mask") {
    print(maskSecrets(*input));
  } else if (command == "flatten") {
    print(flatten(*input, separator));
  } else if (command == "trim") {
    print(trim(*input, mode));
  } else if (command == "preview") {
    printLine(quotedPreview(*input, limit));
  } else if (command == "event") {
    print(calendarEvent(*input, now, uid));
  } else {
    printDetections(*input);
  }
  return std::fflush(stdout) == 0 ? done : fail("cannot write the result");
}

}  // namespace marbelot::ctl
