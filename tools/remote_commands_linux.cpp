// Driving the running program over the session bus.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <cstdio>

#include "classification/classifier.h"
#include "platform/json.h"
#include "platform/linux/remote_control.h"
#include "platform/text.h"
#include "tools/command.h"

namespace marbelot::ctl {
namespace {

constexpr int answerMilliseconds = 10000;
constexpr const char* titleSeparator = "\x1f";

// The reply; none, with the reason told, when there is no answer.
std::optional<std::string> ask(const char* request, const std::vector<std::string>& texts = {}) {
  // What the toolkit has to say of itself is nobody's answer.
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
  int argc = 1;
  std::string name = "marbelotctl";
  char* argv[] = {name.data(), nullptr};
  const QCoreApplication core(argc, argv);
  if (!QDBusConnection::sessionBus().isConnected()) {
    fail("there is no session bus");
    return std::nullopt;
  }
  QDBusMessage call = QDBusMessage::createMethodCall(busName, busPath, busInterface, request);
  call.setAutoStartService(false);
  for (const std::string& text : texts) call << QString::fromStdString(text);
  const QDBusMessage reply =
      QDBusConnection::sessionBus().call(call, QDBus::Block, answerMilliseconds);
  if (reply.type() != QDBusMessage::ReplyMessage) {
    const bool absent = reply.errorName() == "org.freedesktop.DBus.Error.ServiceUnknown" ||
                        reply.errorName() == "org.freedesktop.DBus.Error.NameHasNoOwner";
    fail(absent ? "Marbelot is not running" : reply.errorMessage().toStdString());
    return std::nullopt;
  }
  return reply.arguments().value(0).toString().toStdString();
}

// Of a request that is answered with an error for the user, empty when done.
int carryOut(const char* request, const std::vector<std::string>& texts = {}) {
  const auto error = ask(request, texts);
  if (!error) return failed;
  return error->empty() ? done : fail(*error);
}

// What was copied may stand in a text and must not drive the terminal.
std::string shown(const Value& object, const char* key) {
  const SharedText text = textIn(object, key);
  return text ? text::shownTitle(*text) : std::string();
}

// The menu as indented text. The depth is that of the menu's design.
void printItems(const Value::List& items, int depth) {
  for (const Value& item : items) {
    if (field(item, "separator")) {
      std::printf("%*s--\n", depth * 2, "");
      continue;
    }
    if (isSet(item, "hidden")) continue;
    std::string line = (isSet(item, "checked") ? "✓ " : "") + shown(item, "title");
    if (const std::string key = shown(item, "key"); !key.empty())
      line += "  [Ctrl+" + QString::fromStdString(key).toUpper().toStdString() + "]";
    if (!isSet(item, "enabled")) line += "  (disabled)";
    std::printf("%*s%s\n", depth * 2, "", line.c_str());
    printItems(listIn(item, "submenu"), depth + 1);
  }
}

void printMenu(const Value::List& items) { printItems(items, 0); }

void printWindows(const Value::List& windows) {
  for (const Value& window : windows) {
    const auto number = [frame = field(window, "frame")](const char* key) {
      const Value* const found = frame ? field(*frame, key) : nullptr;
      return found ? found->asDouble().value_or(0) : 0;
    };
    std::printf("%s\t%.0fx%.0f+%.0f+%.0f\t%s\n", shown(window, "kind").c_str(), number("width"),
                number("height"), number("x"), number("y"), shown(window, "title").c_str());
    for (const Value& button : listIn(window, "buttons")) {
      std::printf("\t%s\t%s%s\n", shown(button, "spec").c_str(), shown(button, "title").c_str(),
                  isSet(button, "enabled") ? "" : "  (disabled)");
    }
  }
}

// One line for each entry: its id, a tab, its title.
void printHistory(const Value::List& entries) {
  for (const Value& entry : entries)
    std::printf("%s\t%s\n", shown(entry, "id").c_str(), shown(entry, "title").c_str());
}

int show(const char* request, bool json, void (*print)(const Value::List&),
         const std::vector<std::string>& texts = {}) {
  const auto answer = ask(request, texts);
  if (!answer) return failed;
  if (json) {
    std::printf("%s\n", answer->c_str());
    return done;
  }
  const auto parsed = valueFromJson(*answer);
  if (!parsed || !parsed->asList()) return fail("the answer is not JSON");
  print(*parsed->asList());
  return done;
}

int runMenu(const Arguments& arguments) {
  const bool json = arguments.has("json");
  if (!arguments.words().empty() || (json && arguments.has("popup"))) return wrongUsage;
  return arguments.has("popup") ? carryOut("PopUpMenu") : show("Menu", json, printMenu);
}

int runInvoke(const Arguments& arguments) {
  const auto action = arguments.option("action");
  const auto object = arguments.option("object");
  if (action ? !arguments.words().empty() : object || arguments.words().empty()) return wrongUsage;
  if (action && object) return carryOut("InvokeActionOn", {*action, *object});
  if (action) return carryOut("InvokeAction", {*action});
  std::string titles;
  for (const std::string& title : arguments.words())
    titles += (&title == &arguments.words().front() ? "" : titleSeparator) + title;
  return carryOut("InvokeTitles", {titles});
}

int runWindows(const Arguments& arguments) {
  if (!arguments.words().empty()) return wrongUsage;
  return show("Windows", arguments.has("json"), printWindows);
}

int runPress(const Arguments& arguments) {
  return arguments.words().size() == 2 ? carryOut("Press", arguments.words()) : wrongUsage;
}

bool isCategory(const std::string& name) {
  for (int position = 0; position < clipCategoryCount; ++position)
    if (rawValue(static_cast<ClipCategory>(position)) == name) return true;
  return false;
}

int runHistory(const Arguments& arguments) {
  const auto type = arguments.option("type");
  if (!arguments.words().empty() || (type && !isCategory(*type))) return wrongUsage;
  return show("History", arguments.has("json"), printHistory,
              {arguments.option("search").value_or(""), type.value_or("")});
}

int runCopy(const Arguments& arguments) {
  return arguments.words().size() == 1 ? carryOut("CopyEntry", arguments.words()) : wrongUsage;
}

int runDelete(const Arguments& arguments) {
  return arguments.words().size() == 1 ? carryOut("DeleteEntry", arguments.words()) : wrongUsage;
}

int runQuit(const Arguments& arguments) {
  return arguments.words().empty() ? carryOut("Quit") : wrongUsage;
}

}  // namespace

CommandGroup remoteCommands() {
  static const Command commands[] = {
      {"menu",
       "[--json | --popup]",
       "the status menu as it would open now; or opens\n"
       "it at the pointer",
       runMenu,
       {},
       {"json", "popup"}},
      {"invoke",
       "TITLE… | --action NAME [--object VALUE]",
       "chooses the item reached by these titles, or by\n"
       "the words that one alone begins with; or carries\n"
       "out an action",
       runInvoke,
       {"action", "object"}},
      {"windows", "[--json]", "the windows that are open", runWindows, {}, {"json"}},
      {"press", "WINDOW SPEC", "presses a button of a window that is open", runPress},
      {"history",
       "[--search TEXT] [--type T] [--json]",
       "the clipboard history, secrets masked: id and\n"
       "title; T as classify names it, or image",
       runHistory,
       {"search", "type"},
       {"json"}},
      {"copy", "ID", "puts an entry of it back on the clipboard", runCopy},
      {"delete", "ID", "takes one out of it", runDelete},
      {"quit", "", "ends Marbelot", runQuit},
  };
  return {"On the running Marbelot:", commands};
}

}  // namespace marbelot::ctl
