#include "platform/linux/remote_control.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QTimer>

namespace marbelot {
namespace {
const QString notReady = "Marbelot is still starting";
}

bool RemoteControl::publish() {
  QDBusConnection bus = QDBusConnection::sessionBus();
  return bus.isConnected() && bus.registerObject(busPath, this, QDBusConnection::ExportAllSlots) &&
         bus.registerService(busName);
}

QString RemoteControl::call(const std::function<std::string()>& request) {
  return request ? QString::fromStdString(request()) : QString("[]");
}

QString RemoteControl::call(const std::function<std::string(const std::string&)>& request,
                            const QString& argument) {
  return request ? QString::fromStdString(request(argument.toStdString())) : notReady;
}

QString RemoteControl::History(const QString& search, const QString& category) {
  if (!requests_.history) return "[]";
  return QString::fromStdString(requests_.history(search.toStdString(), category.toStdString()));
}

QString RemoteControl::InvokeTitles(const QString& titles) {
  if (!requests_.invokeTitles) return notReady;
  return QString::fromStdString(requests_.invokeTitles(titles.toStdString()));
}

QString RemoteControl::InvokeAction(const QString& action, const QStringList& object) {
  if (!requests_.invokeAction) return notReady;
  std::optional<std::string> represented;
  if (!object.isEmpty()) represented = object.front().toStdString();
  return QString::fromStdString(requests_.invokeAction(action.toStdString(), represented));
}

QString RemoteControl::Press(const QString& window, const QString& spec) {
  if (!requests_.press) return notReady;
  return QString::fromStdString(requests_.press(window.toStdString(), spec.toStdString()));
}

// These answer before they act: a menu that is open, or a program that ends, answers nobody.
void RemoteControl::PopUpMenu() {
  if (requests_.popUpMenu) QTimer::singleShot(0, this, [this] { requests_.popUpMenu(); });
}

void RemoteControl::Quit() {
  if (requests_.quit) QTimer::singleShot(0, this, [this] { requests_.quit(); });
}

bool askRunningProgramForMenu() {
  const auto call = QDBusMessage::createMethodCall(busName, busPath, busInterface, "PopUpMenu");
  const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 2000);
  return reply.type() == QDBusMessage::ReplyMessage;
}

}  // namespace marbelot
