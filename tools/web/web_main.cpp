// marbelot-web page|map WIDTH HEIGHT: shows a page, or an address on a map, in a window of that
// size. Standard input tells what, in three lines: the URL or address, the window's title, and its
// title if the address is not found. Exit status 0 once the window is closed, 2 for wrong usage.
#include <sys/resource.h>

#include <QApplication>
#include <QFile>

#include "tools/web/web_window.h"

int main(int argc, char** argv) {
  const rlimit none{0, 0};
  ::setrlimit(RLIMIT_CORE, &none);  // a core dump would leave what was shown on the disk
  // A preview is worth no driver, and drivers are what fails most.
  if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND")) qputenv("QT_QUICK_BACKEND", "software");
  qputenv("QTWEBENGINE_CHROMIUM_FLAGS",
          qgetenv("QTWEBENGINE_CHROMIUM_FLAGS") + " --disable-gpu --disable-breakpad");
  QGuiApplication::setDesktopFileName("org.marbelot.Marbelot");
  QCoreApplication::setApplicationName("marbelot-web");
  const QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();

  QFile input;
  const bool opened = input.open(stdin, QIODevice::ReadOnly);
  const auto line = [&] { return QString::fromUtf8(input.readLine()).trimmed(); };
  const QString subject = opened ? line() : QString();
  const QString title = line();
  const QString notFoundTitle = line();
  const bool map = arguments.value(1) == "map";
  const QSize size(arguments.value(2).toInt(), arguments.value(3).toInt());
  // As browsers take links: a stray "%" or "|" is meant as it stands.
  const QUrl url(subject, QUrl::TolerantMode);
  const bool isPage = url.isValid() && url.userInfo().isEmpty() &&
                      (url.scheme() == "https" || url.scheme() == "http");
  if (arguments.size() != 4 || size.isEmpty() || subject.isEmpty() || (!map && !isPage)) return 2;

  marbelot::WebWindow window(title, size);
  window.show();
  window.raise();
  window.activateWindow();
  if (map) {
    window.showAddress(subject, notFoundTitle);
  } else {
    window.showPage(url);
  }
  return QApplication::exec();
}
