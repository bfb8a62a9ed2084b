// The decisions of the program on a text, for pipes: no running instance needed.

#include <cstdio>
#include <functional>
#include <map>

#include "classification/classifier.h"
#include "classification/masking.h"
#include "platform/ascii.h"
#include "platform/detection.h"
#include "platform/text.h"
#include "text/calendar_event.h"
#include "text/flatten_trim.h"
#include "tools/command.h"

namespace marbelot::ctl {
namespace {

constexpr std::size_t defaultPreviewLimit = 36;

// Does the work on the text of standard input or the file, which is valid UTF-8 then.
int onText(const Arguments& arguments, const std::function<int(const std::string&)>& work) {
  if (arguments.words().size() > 1) return wrongUsage;
  const std::string file = arguments.words().empty() ? "-" : arguments.words()[0];
  auto bytes = readBytes(file);
  if (!bytes) return fail("cannot read " + (file == "-" ? "standard input" : file));
  if (!text::isValid(*bytes)) {
    fail("the text is not valid UTF-8; U+FFFD stands for what is not");
    bytes = text::sanitized(*std::move(bytes));
  }
  const int status = work(*bytes);
  return std::fflush(stdout) == 0 ? status : fail("cannot write the result");
}

void print(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stdout); }

void printLine(std::string_view text) {
  print(text);
  print("\n");
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
  const auto moment = wholeNumber<std::int64_t>(text);
  if (!moment || *moment < first || *moment > last) return std::nullopt;
  return static_cast<double>(*moment);
}

// One that ends no line of the event's.
bool isUuid(std::string_view text) {
  return !text.empty() &&
         text.find_first_not_of("0123456789ABCDEFabcdef-") == std::string_view::npos;
}

int runClassify(const Arguments& arguments) {
  return onText(arguments, [](const std::string& text) {
    printLine(rawValue(classify(text)));
    return done;
  });
}

int runLanguage(const Arguments& arguments) {
  return onText(arguments, [](const std::string& text) {
    const auto language = detectLanguage(text);
    if (!language) return failed;
    printLine(*language);
    return done;
  });
}

int runMask(const Arguments& arguments) {
  return onText(arguments, [](const std::string& text) {
    print(maskSecrets(text));
    return done;
  });
}

int runDetect(const Arguments& arguments) {
  return onText(arguments, [](const std::string& text) {
    printDetections(text);
    return done;
  });
}

int runFlatten(const Arguments& arguments) {
  return onText(arguments, [&](const std::string& text) {
    print(flatten(text, arguments.option("separator").value_or(" ")));
    return done;
  });
}

int runTrim(const Arguments& arguments) {
  const std::string mode = arguments.option("mode").value_or("both");
  if (mode != "left" && mode != "right" && mode != "both") return wrongUsage;
  return onText(arguments, [&](const std::string& text) {
    print(trim(text, mode));
    return done;
  });
}

int runPreview(const Arguments& arguments) {
  const auto asked = arguments.option("limit");
  const auto limit = asked ? wholeNumber<std::size_t>(*asked) : defaultPreviewLimit;
  if (!limit) return wrongUsage;
  return onText(arguments, [&](const std::string& text) {
    printLine(quotedPreview(text, *limit));
    return done;
  });
}

int runEvent(const Arguments& arguments) {
  double now = text::now();
  if (const auto asked = arguments.option("now")) {
    const auto moment = momentFrom(*asked);
    if (!moment) return wrongUsage;
    now = *moment;
  }
  const std::string uid = arguments.option("uid").value_or(newUuid());
  if (!isUuid(uid)) return wrongUsage;
  return onText(arguments, [&](const std::string& text) {
    print(calendarEvent(text, now, uid));
    return done;
  });
}

}  // namespace

CommandGroup textCommands() {
  static const Command commands[] = {
      {"classify", "[FILE]", "what the text is, e.g. url", runClassify},
      {"language", "[FILE]", "the programming language; status 1 for none", runLanguage},
      {"mask", "[FILE]", "the text with its secrets masked", runMask},
      {"detect", "[FILE]",
       "links, phone numbers, addresses and dates: kind,\n"
       "start and end in characters, text, meaning",
       runDetect},
      {"flatten",
       "[--separator S] [FILE]",
       "the lines joined by S; default: one space",
       runFlatten,
       {"separator"}},
      {"trim",
       "[--mode left|right|both] [FILE]",
       "each line without its outer blanks; default: both",
       runTrim,
       {"mode"}},
      {"preview",
       "[--limit N] [FILE]",
       "the text on one line, quoted, N characters at\n"
       "most; default: 36",
       runPreview,
       {"limit"}},
      {"event",
       "[--now EPOCH] [--uid UUID] [FILE]",
       "the text as an event for the calendar (iCalendar)",
       runEvent,
       {"now", "uid"}},
  };
  return {"On a text, from standard input or FILE:", commands};
}

}  // namespace marbelot::ctl
