// marbelotctl: Marbelot's decisions in a shell, and a running Marbelot on a lead.

#include <cstdio>
#include <string>
#include <string_view>

#include "platform/text.h"
#include "tools/arguments.h"

namespace {

constexpr const char* usage =
    "usage: marbelotctl COMMAND …\n"
    "\n"
    "On a text, from standard input or FILE:\n"
    "  classify [FILE]                        what the text is, e.g. url\n"
    "  language [FILE]                        the programming language; status 1 for none\n"
    "  mask [FILE]                            the text with its secrets masked\n"
    "  detect [FILE]                          links, phone numbers, addresses and dates: kind, "
    "start\n"
    "                                         and end in characters, text, meaning\n"
    "  flatten [--separator S] [FILE]         the lines joined by S; default: one space\n"
    "  trim [--mode left|right|both] [FILE]   each line without its outer blanks; default: both\n"
    "  preview [--limit N] [FILE]             the text on one line, quoted, N characters at most;\n"
    "                                         default: 36\n"
    "  event [--now EPOCH] [--uid UUID] [FILE] the text as an event for the calendar (iCalendar)\n"
    "\n"
    "On an image; \"-\" is standard input or output, and OUT becomes a PNG:\n"
    "  image OP IN OUT                        e.g. border:red, shadow:grow:medium, "
    "emblem:circle:white,\n"
    "                                         transparent:corner, rotate:90, flip:h, resize:0.5\n"
    "  tag [FILE]                             an HTML <img> tag that holds the image\n"
    "  ocr [FILE]                             the text in the image; status 1 for none\n"
    "\n"
    "On the running Marbelot:\n"
    "  menu [--json]                          the status menu as it would open now\n"
    "  menu --popup                           opens it at the pointer\n"
    "  invoke TITLE…                          chooses the item reached by these titles, or by\n"
    "                                         the words that one alone begins with\n"
    "  invoke --action NAME [--object VALUE]  carries out an action\n"
    "  windows [--json]                       the windows that are open\n"
    "  press WINDOW SPEC                      presses a button of a window that is open\n"
    "  history [--search TEXT] [--type T] [--json]\n"
    "                                         the clipboard history, secrets masked: id and "
    "title;\n"
    "                                         T as classify names it, or image\n"
    "  copy ID                                puts an entry of it back on the clipboard\n"
    "  delete ID                              takes one out of it\n"
    "  quit                                   ends Marbelot\n"
    "\n"
    "Exit status: 0 done, 1 it could not be done, 2 wrong usage.\n";

// What the usage says of one command; all of it without one.
void tellUsage(const std::string& command) {
  if (command.empty()) {
    std::fputs(usage, stderr);
    return;
  }
  std::string told;
  bool isAboutIt = false;
  const std::string_view all = usage;
  for (std::size_t at = 0; at < all.size();) {
    const std::string_view line = all.substr(at, all.find('\n', at) + 1 - at);
    at += line.size();
    const bool goesOn = line.starts_with("   ");
    if (!goesOn)
      isAboutIt = line.starts_with("  " + command + " ") || line == "  " + command + "\n";
    if (isAboutIt) told += line;
  }
  const std::string shown = marbelot::text::shownTitle(command);
  if (told.empty()) {
    std::fprintf(stderr, "marbelotctl: there is no command \"%s\"; see marbelotctl help\n",
                 shown.c_str());
  } else {
    std::fprintf(stderr, "marbelotctl: this is how to use %s:\n%s", shown.c_str(), told.c_str());
  }
}

}  // namespace

int main(int argc, char** argv) {
  using namespace marbelot::ctl;
  Arguments arguments(argc, argv);
  if (arguments.command() == "--help" || arguments.command() == "help") {
    std::fputs(usage, stdout);
    return done;
  }
  bool known = false;
  int status = runTextCommand(arguments, known);
  if (!known) status = runImageCommand(arguments, known);
  if (!known) status = runRemoteCommand(arguments, known);
  if (status == wrongUsage) tellUsage(arguments.command());
  return status;
}
