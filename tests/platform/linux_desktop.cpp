#include <QApplication>
#include <QDBusConnection>
#include <QDesktopServices>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QUrl>
#include <stdexcept>

#include "platform/linux/desktop_pasteboard.h"
#include "platform/linux/inotify_folder_events.h"
#include "platform/linux/key_monitors.h"
#include "platform/linux/notices.h"
#include "platform/linux/qt_dialogs.h"
#include "platform/linux/qt_main_queue.h"
#include "platform/linux/qt_windows.h"
#include "platform/linux/screen_capture.h"
#include "platform/linux/screens.h"
#include "platform/linux/session_bus.h"
#include "platform/linux/tesseract_recognizer.h"
#include "platform/linux/text_view.h"
#include "platform/linux/tray_status_item.h"
#include "platform/linux/user_defaults.h"
#include "platform/linux/wayland_clipboard.h"
#include "platform/linux/web_windows.h"
#include "platform/linux/workspace.h"
#include "platform/linux/x11_clipboard.h"
#include "tests/platform/conformance.h"
#include "tests/platform/qt_wait.h"
#include "tests/platform/wayland_test_clients.h"
#include "tests/platform/x11_test_clients.h"
#include "tests/support/temporary_home.h"
#include "updates/appcast_updater.h"

namespace marbelot {
namespace {

struct NoApplication : Application {
  void terminate() override {}
  void setDockMenu(std::function<std::shared_ptr<Menu>()>,
                   std::function<void(const MenuItem&)>) override {}
  void serve(RemoteRequests) override {}
};

// A session bus of the tests' own, on which nothing is started on demand.
class PrivateBus {
 public:
  PrivateBus() {
    writeFile(home_ / "bus.conf",
              "<busconfig><type>session</type><listen>unix:tmpdir=" + home_.path() +
                  "</listen><policy context='default'><allow own='*'/><allow eavesdrop='true'/>"
                  "<allow send_destination='*' eavesdrop='true'/></policy></busconfig>");
    daemon_.start("dbus-daemon", {"--nofork", "--print-address", "--config-file",
                                  QString::fromStdString(home_ / "bus.conf")});
    daemon_.waitForReadyRead();
    qputenv("DBUS_SESSION_BUS_ADDRESS", daemon_.readLine().trimmed());
  }
  ~PrivateBus() {
    daemon_.kill();
    daemon_.waitForFinished();
  }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

 private:
  TemporaryHome home_;
  QProcess daemon_;
};

// The other programs on the bus and behind the links.
// The methods have the buses' names. NOLINTBEGIN(readability-identifier-naming)
class Others : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

 public:
  std::vector<std::string> notices, opened, revealed;

 public Q_SLOTS:
  Q_SCRIPTABLE QStringList GetCapabilities() { return {}; }
  // NOLINTNEXTLINE(performance-unnecessary-value-param): as the bus calls it
  Q_SCRIPTABLE uint Notify(QString, uint, QString, QString, QString body, QStringList, QVariantMap,
                           int) {
    notices.push_back(body.toStdString());
    return static_cast<uint>(notices.size());
  }
  void open(const QUrl& url) {
    opened.push_back(
        (url.isLocalFile() ? url.toLocalFile() : url.toString(QUrl::FullyEncoded)).toStdString());
  }
};

// The program for notes, as far as it is asked.
class Gnote : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.gnome.Gnote.RemoteControl")

 public:
  int notes = 0;

 public Q_SLOTS:
  Q_SCRIPTABLE QString CreateNamedNote(const QString&) { return {}; }  // the name is taken
  Q_SCRIPTABLE QString CreateNote() { return "note://gnote/1"; }
  Q_SCRIPTABLE bool SetNoteContents(const QString&, const QString& text) {
    notes += text == "a \"note\"\nof two lines" ? 1 : 0;
    return true;
  }
  Q_SCRIPTABLE bool DisplayNote(const QString&) { return true; }
};

// The programs for links, as files in a folder of desktop files.
class LinkPrograms {
 public:
  LinkPrograms() {
    std::string cache = "[MIME Cache]\nx-scheme-handler/marbelot-test=";
    for (const auto& [id, name] :
         {std::pair("chisel", "Chisel"), std::pair("chisel-again", "Chisel"),
          std::pair("org.marbelot.Marbelot", "Marbelot"), std::pair("quarry", "Quarry")}) {
      writeFile(home_ / "applications/" + id + ".desktop",
                std::string("[Desktop Entry]\nType=Application\nExec=true %u\nName=") + name +
                    "\nMimeType=x-scheme-handler/marbelot-test;\n");
      cache += std::string(id) + ".desktop;";
    }
    writeFile(home_ / "applications/mimeinfo.cache", cache + "\n");
    writeFile(home_ / "applications/mimeapps.list",
              "[Default Applications]\nx-scheme-handler/marbelot-test=quarry.desktop\n");
    // Nothing else, so that no other program opens what the tests hand on.
    qputenv("XDG_DATA_DIRS", QByteArray::fromStdString(home_.path()));
  }

 private:
  TemporaryHome home_;
};

class FileManager : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

 public:
  explicit FileManager(Others& others) : others_(others) {}

 public Q_SLOTS:
  Q_SCRIPTABLE void ShowItems(const QStringList& urls, const QString&) {
    for (const QString& url : urls)
      others_.revealed.push_back(QUrl(url).toLocalFile().toStdString());
  }

 private:
  Others& others_;
};
// NOLINTEND(readability-identifier-naming)

QString titleOf(const QAction& action) {
  if (action.isSeparator()) return "—";
  return action.text().section('\t', 0, 0).replace("&&", "&");
}

class LinuxDesktop : public TestDesktop {
 public:
  explicit LinuxDesktop(std::unique_ptr<ClipboardConnection> clipboard)
      : pasteboard_(queue_, std::move(clipboard)) {
    QDBusConnection user =
        QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), userBus);
    user.registerObject("/org/freedesktop/Notifications", &others_,
                        QDBusConnection::ExportScriptableSlots);
    user.registerService("org.freedesktop.Notifications");
    user.registerObject("/org/freedesktop/FileManager1", &fileManager_,
                        QDBusConnection::ExportScriptableSlots);
    user.registerService("org.freedesktop.FileManager1");
    user.registerObject("/org/gnome/Gnote/RemoteControl", &gnote_,
                        QDBusConnection::ExportScriptableSlots);
    user.registerService("org.gnome.Gnote");
    for (const char* scheme : schemes) QDesktopServices::setUrlHandler(scheme, &others_, "open");
    EXPECT_TRUE(waitWithQt([&] { return bus_.connected(); }));
  }
  ~LinuxDesktop() override {
    for (const char* scheme : schemes) QDesktopServices::unsetUrlHandler(scheme);
    QDBusConnection::disconnectFromBus(userBus);
  }
  LinuxDesktop(const LinuxDesktop&) = delete;
  LinuxDesktop& operator=(const LinuxDesktop&) = delete;

  Platform& platform() override { return platform_; }
  bool wait(const std::function<bool()>& done) override { return waitWithQt(done); }

  void copyElsewhere(const std::string& text) override {
    owner_ = std::make_unique<X11Owner>(qgetenv("DISPLAY").toStdString(),
                                        TestOwner::Data{{"UTF8_STRING", text}});
  }
  std::string pasteElsewhere() override {
    return paste(qgetenv("DISPLAY").toStdString(), "UTF8_STRING").value_or("");
  }

  std::vector<ShownItem> shown(const Path& path) override {
    std::vector<ShownItem> items;
    const QMenu* menu = level(path);
    if (!menu) return items;
    for (const QAction* action : menu->actions()) {
      if (action->isVisible()) {
        items.push_back({titleOf(*action).toStdString(), action->isEnabled(), action->isChecked(),
                         action->menu() != nullptr});
      }
    }
    return items;
  }
  void highlight(const Path& path) override {
    QAction* action = item(path);
    if (action) level({path.begin(), path.end() - 1})->setActiveAction(action);
  }
  void choose(const Path& path) override {
    highlight(path);
    if (QMenu* menu = level({path.begin(), path.end() - 1})) QTest::keyClick(menu, Qt::Key_Return);
  }
  void closeMenu() override {
    while (QWidget* popup = QApplication::activePopupWidget()) popup->close();
  }

  void press(const std::string& window, const std::string& button) override {
    for (auto* each : find(window).findChildren<QPushButton*>()) {
      if (each->text() == QString::fromStdString(button))
        return QTest::mouseClick(each, Qt::LeftButton);
    }
    ADD_FAILURE() << "no button " << button;
  }
  void press(const std::string& window, Key key) override {
    QWidget& pane = find(window);
    pane.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&pane));
    QWidget* focused = pane.focusWidget() ? pane.focusWidget() : &pane;
    switch (key) {
      case Key::escape:
        return QTest::keyClick(focused, Qt::Key_Escape);
      case Key::commandReturn:
        return QTest::keyClick(focused, Qt::Key_Return, Qt::ControlModifier);
      case Key::commandW:
        return QTest::keyClick(focused, Qt::Key_W, Qt::ControlModifier);
    }
  }
  void type(const std::string& window, const std::string& text) override {
    auto* view = find(window).findChild<TextView*>();
    EXPECT_TRUE(waitWithQt([&] { return !view->isReadOnly(); }));
    view->moveCursor(QTextCursor::End);
    QTest::keyClicks(view, QString::fromStdString(text));
  }

  std::vector<std::string> notices() override { return others_.notices; }
  std::vector<std::string> opened() override { return others_.opened; }
  std::vector<std::string> revealed() override { return others_.revealed; }
  int notes() override { return gnote_.notes; }

 protected:
  std::unique_ptr<TestOwner> owner_;

 private:
  static constexpr const char* userBus = "user";
  static constexpr const char* schemes[] = {"https", "file"};

  static QWidget& find(const std::string& window) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (widget->isVisible() &&
          widget->property(windowIdProperty).toString() == QString::fromStdString(window))
        return *widget;
    }
    throw std::runtime_error("no window " + window);
  }

  static QMenu* level(const Path& path) {
    QMenu* menu = nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      if (auto* open = qobject_cast<QMenu*>(widget);
          open && open->isVisible() && !qobject_cast<QMenu*>(open->parentWidget()))
        menu = open;
    }
    for (const std::string& title : path) {
      QAction* action = menu ? actionOf(*menu, title) : nullptr;
      if (!action || !action->menu()) return nullptr;
      if (!action->menu()->isVisible()) {
        menu->setActiveAction(action);
        QTest::keyClick(menu, Qt::Key_Right);
        EXPECT_TRUE(waitWithQt([&] { return action->menu()->isVisible(); })) << title;
      }
      menu = action->menu();
    }
    return menu;
  }
  static QAction* actionOf(const QMenu& menu, const std::string& title) {
    for (QAction* action : menu.actions())
      if (action->isVisible() && titleOf(*action) == QString::fromStdString(title)) return action;
    ADD_FAILURE() << "no item " << title;
    return nullptr;
  }
  static QAction* item(const Path& path) {
    const QMenu* menu = level({path.begin(), path.end() - 1});
    return menu ? actionOf(*menu, path.back()) : nullptr;
  }

  TemporaryHome home_;
  Others others_;
  FileManager fileManager_{others_};
  Gnote gnote_;
  NoApplication application_;
  QtMainQueue queue_;
  SessionBus bus_{queue_};
  DesktopPasteboard pasteboard_;
  JsonDefaults defaults_{home_ / "settings.json",
                         [this](std::function<void()> work) { queue_.post(std::move(work)); }};
  InotifyFolderEvents folderEvents_;
  DesktopNotices notices_{bus_};
  DesktopWorkspace workspace_{queue_, bus_};
  TrayStatusItem statusItem_{bus_};
  PictureCache pictures_{queue_};
  QtWindows windows_{pictures_};
  QtDialogs dialogs_{bus_, pictures_};
  QtScreens screens_;
  QtKeyMonitors keyMonitors_;
  DesktopScreenCapture screenCapture_{queue_, bus_};
  TesseractRecognizer recognizer_{queue_};
  HelperWebWindows webWindows_;
  AppcastUpdates updates_{{queue_, defaults_, notices_, dialogs_, workspace_}, {}, {}};
  Platform platform_{application_,   queue_,      pasteboard_, defaults_,
                     folderEvents_,  notices_,    workspace_,  statusItem_,
                     windows_,       dialogs_,    screens_,    keyMonitors_,
                     screenCapture_, recognizer_, webWindows_, updates_};
};

std::unique_ptr<TestDesktop> makeDesktop() {
  return std::make_unique<LinuxDesktop>(connectX11Clipboard());
}

// As on a desktop with XWayland: only the clipboard is the compositor's.
class WaylandDesktop : private PrivateCompositor, public LinuxDesktop {
 public:
  WaylandDesktop()
      : PrivateCompositor(waylandDesktops().front()),
        LinuxDesktop(connectWaylandClipboard(display(), nullptr)) {}

  void copyElsewhere(const std::string& text) override {
    owner_ = std::make_unique<WaylandOwner>(display(), TestOwner::Data{{type, text}});
  }
  std::string pasteElsewhere() override { return pasteFromWayland(display(), type).value_or(""); }

 private:
  static constexpr const char* type = "text/plain;charset=utf-8";
};

std::unique_ptr<TestDesktop> makeWaylandDesktop() { return std::make_unique<WaylandDesktop>(); }

const bool added = desktops().emplace("Linux", &makeDesktop).second &&
                   desktops().emplace("Wayland", &makeWaylandDesktop).second;

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
  const marbelot::PrivateServer server;
  const marbelot::PrivateBus bus;
  qputenv("DISPLAY", QByteArray::fromStdString(server.display()));
  qputenv("QT_QPA_PLATFORM", "xcb");
  const marbelot::LinkPrograms programs;
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}

#include "linux_desktop.moc"
