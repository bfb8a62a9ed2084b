// Driving the running program over the session bus.

#include <rapidjson/document.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <cstdio>

#include "platform/linux/remote_control.h"
#include "tools/arguments.h"

namespace marbelot::ctl {
namespace {

constexpr int answerMilliseconds = 10000;
constexpr const char* titleSeparator = "\x1f";

int fail(const QString& message) {
  std::fprintf(stderr, "marbelotctl: %s\n", qUtf8Printable(message));
  return failed;
}

// The reply's text; none, with the reason told, when there is no answer.
std::optional<QString> ask(const QString& method, const QVariantList& arguments = {}) {
  if (!QDBusConnection::sessionBus().isConnected()) {
    fail("there is no session bus");
    return std::nullopt;
  }
  QDBusMessage call = QDBusMessage::createMethodCall(busName, busPath, busInterface, method);
  call.setAutoStartService(false);
  call.setArguments(arguments);
  const QDBusMessage reply =
      QDBusConnection::sessionBus().call(call, QDBus::Block, answerMilliseconds);
  if (reply.type() != QDBusMessage::ReplyMessage) {
    const bool absent = reply.errorName() == "org.freedesktop.DBus.Error.ServiceUnknown";
    fail(absent ? QString("Marbelot is not running") : reply.errorMessage());
    return std::nullopt;
  }
  return reply.arguments().value(0).toString();
}

// The menu as indented text. The depth is that of the menu's design.
void printMenu(const rapidjson::Value& items, int depth) {
  for (const auto& item : items.GetArray()) {
    if (item.HasMember("separator")) {
      std::printf("%*s--\n", depth * 2, "");
      continue;
    }
    if (item["hidden"].GetBool()) continue;
    std::string line = item["checked"].GetBool() ? "✓ " : "";
    line += item["title"].GetString();
    if (*item["key"].GetString()) line += std::string("  [Ctrl+") + item["key"].GetString() + "]";
    if (!item["enabled"].GetBool()) line += "  (disabled)";
    std::printf("%*s%s\n", depth * 2, "", line.c_str());
    if (item.HasMember("submenu")) printMenu(item["submenu"], depth + 1);
  }
}

void printWindows(const rapidjson::Value& windows) {
  for (const auto& window : windows.GetArray())
    std::printf("%s\t%.0fx%.0f+%.0f+%.0f\t%s\n", window["id"].GetString(),
                window["width"].GetDouble(), window["height"].GetDouble(), window["x"].GetDouble(),
                window["y"].GetDouble(), window["title"].GetString());
}

int show(const char* method, bool json, void (*printed)(const rapidjson::Value&)) {
  const auto answer = ask(method);
  if (!answer) return failed;
  const std::string text = answer->toStdString();
  if (json) {
    std::printf("%s\n", text.c_str());
    return done;
  }
  rapidjson::Document document;
  if (document.Parse(text.c_str()).HasParseError()) return fail("the answer is not JSON");
  printed(document);
  return done;
}

int invoke(Arguments& arguments) {
  const auto action = arguments.takeOption("--action");
  const auto object = arguments.takeOption("--object");
  const bool byTitle = !action && !object && !arguments.rest().empty();
  const bool byAction = action && arguments.rest().empty();
  if (arguments.hasUnknownOptions() || !(byTitle || byAction)) return wrongUsage;
  std::optional<QString> error;
  if (byTitle) {
    QStringList titles;
    for (const std::string& title : arguments.rest()) titles << QString::fromStdString(title);
    error = ask("InvokeTitles", {titles.join(titleSeparator)});
  } else {
    QStringList objects;
    if (object) objects << QString::fromStdString(*object);
    error = ask("InvokeAction", {QString::fromStdString(*action), objects});
  }
  if (!error) return failed;
  return error->isEmpty() ? done : fail(*error);
}

}  // namespace

int runRemoteCommand(Arguments& arguments, bool& known) {
  const std::string& command = arguments.command();
  known = command == "menu" || command == "invoke" || command == "windows" || command == "quit";
  if (!known) return wrongUsage;
  int argc = 1;
  std::string name = "marbelotctl";
  char* argv[] = {name.data(), nullptr};
  const QCoreApplication core(argc, argv);

  if (command == "invoke") return invoke(arguments);
  const bool json = command != "quit" && arguments.takeFlag("--json");
  const bool popup = command == "menu" && arguments.takeFlag("--popup");
  if (arguments.hasUnknownOptions() || !arguments.rest().empty() || (json && popup))
    return wrongUsage;
  if (popup) return ask("PopUpMenu") ? done : failed;
  if (command == "quit") return ask("Quit") ? done : failed;
  if (command == "menu")
    return show("Menu", json, [](const rapidjson::Value& items) { printMenu(items, 0); });
  return show("Windows", json, printWindows);
}

}  // namespace marbelot::ctl
