#include "platform/linux/remote_control.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QTimer>
#include <algorithm>

namespace marbelot {
namespace {

constexpr const char* notReady = "org.marbelot.Marbelot.Error.NotReady";

std::vector<std::string> texts(const QList<QVariant>& arguments) {
  std::vector<std::string> made;
  for (const QVariant& argument : arguments) made.push_back(argument.toString().toStdString());
  return made;
}

bool areTexts(const QList<QVariant>& arguments) {
  return std::all_of(arguments.begin(), arguments.end(), [](const QVariant& argument) {
    return argument.metaType() == QMetaType::fromType<QString>();
  });
}

}  // namespace

bool RemoteControl::publish() {
  QDBusConnection bus = QDBusConnection::sessionBus();
  return bus.isConnected() && bus.registerVirtualObject(busPath, this) &&
         bus.registerService(busName);
}

QString RemoteControl::introspect(const QString&) const {
  QString described = QString("<interface name=\"%1\">").arg(busInterface);
  for (const RemoteRequest& request : requests_) {
    described += QString("<method name=\"%1\">").arg(request.name.c_str());
    for (const std::string& name : request.arguments)
      described += QString("<arg name=\"%1\" type=\"s\" direction=\"in\"/>").arg(name.c_str());
    described += "<arg type=\"s\" direction=\"out\"/></method>";
  }
  return described + "</interface>";
}

bool RemoteControl::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
  if (!message.interface().isEmpty() && message.interface() != busInterface) return false;
  if (requests_.empty())
    return connection.send(message.createErrorReply(notReady, "Marbelot is still starting"));
  const std::string name = message.member().toStdString();
  const auto request = std::find_if(requests_.begin(), requests_.end(),
                                    [&](const RemoteRequest& each) { return each.name == name; });
  if (request == requests_.end()) return false;
  const QList<QVariant> arguments = message.arguments();
  if (arguments.size() != static_cast<qsizetype>(request->arguments.size()) ||
      !areTexts(arguments)) {
    return connection.send(
        message.createErrorReply(QDBusError::InvalidArgs, "wrong number or type of arguments"));
  }
  if (request->replyFirst) {
    QTimer::singleShot(0, this,
                       [answer = request->answer, given = texts(arguments)] { answer(given); });
    return connection.send(message.createReply(QString()));
  }
  return connection.send(
      message.createReply(QString::fromStdString(request->answer(texts(arguments)))));
}

bool askRunningProgramForMenu() {
  const auto call = QDBusMessage::createMethodCall(busName, busPath, busInterface, "PopUpMenu");
  const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 2000);
  return reply.type() == QDBusMessage::ReplyMessage || reply.errorName() == notReady;
}

}  // namespace marbelot
