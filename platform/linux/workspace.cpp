#include "platform/linux/workspace.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFile>
#include <QUrl>

#include "platform/files.h"

namespace marbelot {
namespace {

QUrl fileUrl(const std::string& path) {
  return QUrl::fromLocalFile(QFile::decodeName(path.c_str()));
}

}  // namespace

// Asks the file manager; where there is none on the bus, opens the folder the ordinary way.
void DesktopWorkspace::askFileManager(const QString& method, const std::string& path,
                                      const std::string& folder) {
  if (!bus_.connected()) {
    QDesktopServices::openUrl(fileUrl(folder));
    return;
  }
  QDBusMessage call = QDBusMessage::createMethodCall("org.freedesktop.FileManager1",
                                                     "/org/freedesktop/FileManager1",
                                                     "org.freedesktop.FileManager1", method);
  call << QStringList{fileUrl(path).toString(QUrl::FullyEncoded)} << QString();
  auto* asked = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
  QObject::connect(asked, &QDBusPendingCallWatcher::finished, asked, [asked, folder] {
    if (asked->isError()) QDesktopServices::openUrl(fileUrl(folder));
    asked->deleteLater();
  });
}

void DesktopWorkspace::openPath(const std::string& path) {
  QDesktopServices::openUrl(fileUrl(path));
}

void DesktopWorkspace::openUrl(const std::string& url) {
  QDesktopServices::openUrl(QUrl(QString::fromStdString(url)));
}

void DesktopWorkspace::openPrivacySettings(const std::string& folder) {
  askFileManager("ShowItemProperties", folder, folder);
}

void DesktopWorkspace::reveal(const std::string& path) {
  askFileManager("ShowItems", path, path.substr(0, path.rfind('/') + 1));
}

bool DesktopWorkspace::trash(const std::string& path) {
  return QFile::moveToTrash(QFile::decodeName(path.c_str()));
}

}  // namespace marbelot
