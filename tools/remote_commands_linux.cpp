// Driving the running program over the session bus.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstdio>

#include "classification/classifier.h"
#include "platform/linux/remote_control.h"
#include "platform/text.h"
#include "tools/arguments.h"

namespace marbelot::ctl {
namespace {

constexpr int answerMilliseconds = 10000;
constexpr const char* titleSeparator = "\x1f";

// What was copied may stand in it and must not drive the terminal.
std::string shown(const QString& title) { return text::shownTitle(title.toStdString()); }

int fail(const QString& message) {
  std::fprintf(stderr, "marbelotctl: %s\n", shown(message).c_str());
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
    const bool absent = reply.errorName() == "org.freedesktop.DBus.Error.ServiceUnknown" ||
                        reply.errorName() == "org.freedesktop.DBus.Error.NameHasNoOwner";
    fail(absent ? QString("Marbelot is not running") : reply.errorMessage());
    return std::nullopt;
  }
  return reply.arguments().value(0).toString();
}

// The menu as indented text. The depth is that of the menu's design.
void printMenu(const QJsonArray& items, int depth) {
  for (const QJsonValue value : items) {
    const QJsonObject item = value.toObject();
    if (item.contains("separator")) {
      std::printf("%*s--\n", depth * 2, "");
      continue;
    }
    if (item["hidden"].toBool()) continue;
    QString line = item["checked"].toBool() ? "✓ " : "";
    line += item["title"].toString();
    if (const QString key = item["key"].toString(); !key.isEmpty())
      line += "  [Ctrl+" + key.toUpper() + "]";
    if (!item["enabled"].toBool()) line += "  (disabled)";
    std::printf("%*s%s\n", depth * 2, "", shown(line).c_str());
    if (item.contains("submenu")) printMenu(item["submenu"].toArray(), depth + 1);
  }
}

void printWindows(const QJsonArray& windows) {
  for (const QJsonValue value : windows) {
    const QJsonObject window = value.toObject();
    const QJsonObject frame = window["frame"].toObject();
    std::printf("%s\t%.0fx%.0f+%.0f+%.0f\t%s\n", qUtf8Printable(window["kind"].toString()),
                frame["width"].toDouble(), frame["height"].toDouble(), frame["x"].toDouble(),
                frame["y"].toDouble(), shown(window["title"].toString()).c_str());
    for (const QJsonValue each : window["buttons"].toArray()) {
      const QJsonObject button = each.toObject();
      std::printf("\t%s\t%s%s\n", qUtf8Printable(button["spec"].toString()),
                  shown(button["title"].toString()).c_str(),
                  button["enabled"].toBool() ? "" : "  (disabled)");
    }
  }
}

// One line for each entry: its id, a tab, its title.
void printHistory(const QJsonArray& entries) {
  for (const QJsonValue value : entries) {
    const QJsonObject entry = value.toObject();
    std::printf("%s\t%s\n", qUtf8Printable(entry["id"].toString()),
                shown(entry["title"].toString()).c_str());
  }
}

int show(const char* method, bool json, void (*printed)(const QJsonArray&),
         const QVariantList& arguments = {}) {
  const auto answer = ask(method, arguments);
  if (!answer) return failed;
  const QByteArray text = answer->toUtf8();
  if (json) {
    std::printf("%s\n", text.constData());
    return done;
  }
  const QJsonDocument document = QJsonDocument::fromJson(text);
  if (!document.isArray()) return fail("the answer is not JSON");
  printed(document.array());
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

int press(Arguments& arguments) {
  if (arguments.hasUnknownOptions() || arguments.rest().size() != 2) return wrongUsage;
  const auto error = ask("Press", {QString::fromStdString(arguments.rest()[0]),
                                   QString::fromStdString(arguments.rest()[1])});
  if (!error) return failed;
  return error->isEmpty() ? done : fail(*error);
}

bool isCategory(const std::string& name) {
  for (int position = 0; position < clipCategoryCount; ++position)
    if (rawValue(static_cast<ClipCategory>(position)) == name) return true;
  return false;
}

int history(Arguments& arguments) {
  const auto search = arguments.takeOption("--search");
  const auto type = arguments.takeOption("--type");
  const bool json = arguments.takeFlag("--json");
  if (arguments.hasUnknownOptions() || !arguments.rest().empty() || (type && !isCategory(*type)))
    return wrongUsage;
  return show(
      "History", json, printHistory,
      {QString::fromStdString(search.value_or("")), QString::fromStdString(type.value_or(""))});
}

int onEntry(const char* method, Arguments& arguments) {
  if (arguments.hasUnknownOptions() || arguments.rest().size() != 1) return wrongUsage;
  const auto error = ask(method, {QString::fromStdString(arguments.rest()[0])});
  if (!error) return failed;
  return error->isEmpty() ? done : fail(*error);
}

}  // namespace

int runRemoteCommand(Arguments& arguments, bool& known) {
  const std::string& command = arguments.command();
  known = command == "menu" || command == "invoke" || command == "windows" || command == "press" ||
          command == "quit" || command == "history" || command == "copy" || command == "delete";
  if (!known) return wrongUsage;
  // What the toolkit has to say of itself is nobody's answer.
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
  int argc = 1;
  std::string name = "marbelotctl";
  char* argv[] = {name.data(), nullptr};
  const QCoreApplication core(argc, argv);

  if (command == "invoke") return invoke(arguments);
  if (command == "press") return press(arguments);
  if (command == "history") return history(arguments);
  if (command == "copy") return onEntry("CopyEntry", arguments);
  if (command == "delete") return onEntry("DeleteEntry", arguments);
  const bool json = command != "quit" && arguments.takeFlag("--json");
  const bool popup = command == "menu" && arguments.takeFlag("--popup");
  if (arguments.hasUnknownOptions() || !arguments.rest().empty() || (json && popup))
    return wrongUsage;
  if (popup) return ask("PopUpMenu") ? done : failed;
  if (command == "quit") return ask("Quit") ? done : failed;
  if (command == "menu")
    return show("Menu", json, [](const QJsonArray& items) { printMenu(items, 0); });
  return show("Windows", json, printWindows);
}

}  // namespace marbelot::ctl
