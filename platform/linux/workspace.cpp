#include "platform/linux/workspace.h"

#include <unistd.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>
#include <QUrl>
#include <utility>

#include "platform/linux/applications.h"
#include "platform/linux/folder_access.h"
#include "platform/linux/gnote.h"
#include "platform/linux/trash.h"

namespace marbelot {
namespace {

QUrl fileUrl(const std::string& path) {
  return QUrl::fromLocalFile(QFile::decodeName(path.c_str()));
}

// Openers that run this long have found a program, and some wait for it to end.
constexpr int openerMilliseconds = 3000;

// Opens the folder the ordinary way. There may be no program for folders, which only the opener's
// end tells.
void openFolder(const std::string& folder, const std::function<void(bool done)>& answered) {
  const QString opener = QStandardPaths::findExecutable("xdg-open");
  if (opener.isEmpty()) return answered(QDesktopServices::openUrl(fileUrl(folder)));
  auto* process = new QProcess;  // lives on without us
  process->setChildProcessModifier([] { setsid(); });
  process->setStandardInputFile(QProcess::nullDevice());
  process->setStandardOutputFile(QProcess::nullDevice());
  process->setStandardErrorFile(QProcess::nullDevice());
  const auto answer = [answered, told = std::make_shared<bool>(false)](bool done) {
    if (!std::exchange(*told, true)) answered(done);
  };
  QObject::connect(process, &QProcess::finished, process, [=](int code, QProcess::ExitStatus) {
    answer(code == 0);
    process->deleteLater();
  });
  QObject::connect(process, &QProcess::errorOccurred, process, [=](QProcess::ProcessError error) {
    if (error != QProcess::FailedToStart) return;
    answer(false);
    process->deleteLater();
  });
  QTimer::singleShot(openerMilliseconds, process, [=] { answer(true); });
  process->start(opener, {QFile::decodeName(folder.c_str())});
}

}  // namespace

void DesktopWorkspace::askFileManager(const QString& method, const std::string& path,
                                      std::function<void(bool done)> answered) {
  if (!bus_.connected()) return answered(false);
  QDBusMessage call = QDBusMessage::createMethodCall("org.freedesktop.FileManager1",
                                                     "/org/freedesktop/FileManager1",
                                                     "org.freedesktop.FileManager1", method);
  call << QStringList{fileUrl(path).toString(QUrl::FullyEncoded)} << QString();
  auto* asked = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call));
  QObject::connect(asked, &QDBusPendingCallWatcher::finished, asked,
                   [asked, answered = std::move(answered)] {
                     answered(!asked->isError());
                     asked->deleteLater();
                   });
}

void DesktopWorkspace::openPath(const std::string& path) {
  MainQueue& queue = queue_;
  queue_.background([&queue, path, withheld = withheld_] {
    if (!launchWithFile(path, withheld))
      queue.post([path] { QDesktopServices::openUrl(fileUrl(path)); });
  });
}

// Where no desktop file tells what opens it, as in a sandbox, Qt knows whom to ask.
void DesktopWorkspace::openUrl(const std::string& url, const std::string& application) {
  MainQueue& queue = queue_;
  queue_.background([&queue, url, application, withheld = withheld_] {
    if (!launchWithUrl(url, application, withheld) && application.empty())
      queue.post([url] { QDesktopServices::openUrl(QUrl(QString::fromStdString(url))); });
  });
}

void DesktopWorkspace::addNote(
    const SharedText& text, std::function<void(const std::optional<std::string>& problem)> done) {
  if (bus_.connected()) return addGnote(text, done);
  queue_.post([done = std::move(done)] { done("there is no session bus to reach Gnote over"); });
}

void DesktopWorkspace::openPrivacySettings(const std::string& folder,
                                           std::function<void(const std::string&)> advise) {
  const auto show = [this, advise = std::move(advise)](const FolderAccess& access) {
    const auto answered = [access, advise](bool shown) {
      if (const std::string advice = accessAdvice(access, shown); !advice.empty()) advise(advice);
    };
    const bool missing = access.atNearest == FolderAccess::nothing && !access.problem.empty();
    askFileManager(missing ? "ShowFolders" : "ShowItemProperties", access.nearest,
                   [access, answered](bool shown) {
                     shown ? answered(true) : openFolder(access.openable, answered);
                   });
  };
  examining_ = queue_.inBackground([folder] { return examineAccess(folder); }, show);
}

void DesktopWorkspace::reveal(const std::string& path) {
  askFileManager("ShowItems", path, [folder = path.substr(0, path.rfind('/') + 1)](bool shown) {
    if (!shown) QDesktopServices::openUrl(fileUrl(folder));
  });
}

Task DesktopWorkspace::trash(std::vector<std::string> paths, std::function<void()> done) {
  return queue_.inBackground(
      [paths = std::move(paths)] {
        std::size_t moved = 0;
        for (const std::string& path : paths) moved += moveToTrash(path) ? 1 : 0;
        return moved;
      },
      [done = std::move(done)](std::size_t) { done(); });
}

}  // namespace marbelot
