#include "platform/backend.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <QAccessible>
#include <QApplication>
#include <QPalette>
#include <QSocketNotifier>
#include <QTimer>
#include <csignal>
#include <cstdio>

#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/linux/desktop_pasteboard.h"
#include "platform/linux/inotify_folder_events.h"
#include "platform/linux/key_monitors.h"
#include "platform/linux/notices.h"
#include "platform/linux/portal_shortcut.h"
#include "platform/linux/qt_dialogs.h"
#include "platform/linux/qt_main_queue.h"
#include "platform/linux/qt_windows.h"
#include "platform/linux/remote_control.h"
#include "platform/linux/screen_capture.h"
#include "platform/linux/screens.h"
#include "platform/linux/session_bus.h"
#include "platform/linux/symbols.h"
#include "platform/linux/tesseract_recognizer.h"
#include "platform/linux/tray_status_item.h"
#include "platform/linux/user_defaults.h"
#include "platform/linux/wayland_clipboard.h"
#include "platform/linux/web_fetch.h"
#include "platform/linux/web_windows.h"
#include "platform/linux/workspace.h"
#include "platform/linux/x11_clipboard.h"
#include "platform/linux/x11_desktop.h"
#include "updates/appcast_updater.h"

namespace marbelot {
namespace {

class QtApplication : public Application {
 public:
  explicit QtApplication(RemoteControl& remote) : remote_(remote) {}
  void terminate() override { QCoreApplication::quit(); }
  // No Linux desktop asks a program for a Dock menu; the menu entry has a few commands for docks.
  void setDockMenu(std::function<std::shared_ptr<Menu>()>,
                   std::function<void(const MenuItem&)>) override {}
  void serve(RemoteRequests requests) override { remote_.serve(std::move(requests)); }

 private:
  RemoteControl& remote_;
};

// All that a signal handler can reach.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
int signalPipe[2] = {-1, -1};

// SIGTERM and SIGINT end the program the ordinary way, so that a write under way is completed.
void quitOnSignals(QObject& owner) {
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalPipe) != 0) return;
  auto* notifier = new QSocketNotifier(signalPipe[1], QSocketNotifier::Read, &owner);
  QObject::connect(notifier, &QSocketNotifier::activated, &owner, &QCoreApplication::quit);
  struct sigaction action {};
  action.sa_handler = [](int) {
    const char byte = 0;
    [[maybe_unused]] const ssize_t put = write(signalPipe[0], &byte, 1);
  };
  sigaction(SIGTERM, &action, nullptr);
  sigaction(SIGINT, &action, nullptr);
  signal(SIGPIPE, SIG_IGN);
}

// Held by the running instance. Two of them would each record every copy.
struct InstanceLock {
  enum { unknown, ours, taken } state = unknown;
  Descriptor file;
};

InstanceLock takeInstanceLock() {
  const std::string path = defaultsPath("instance");
  files::makeFolder(path.substr(0, path.rfind('/')));
  const std::string lockPath = path.substr(0, path.rfind('.')) + ".lock";
  Descriptor lock(open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  // A config folder that cannot be written is no reason not to run.
  const bool held = lock && flock(lock.get(), LOCK_EX | LOCK_NB) == 0;
  if (held) return {InstanceLock::ours, std::move(lock)};
  if (lock && errno == EWOULDBLOCK) return {InstanceLock::taken, {}};
  return {};
}

// Returns the variables that it has set, which are for this program alone.
std::vector<std::string> setEnvironment() {
  std::vector<std::string> ours;
  const auto set = [&ours](const char* name, const char* value) {
    if (qEnvironmentVariableIsSet(name)) return;
    qputenv(name, value);
    ours.emplace_back(name);
  };
  // Under Wayland too our windows are X11's, where there is XWayland: only so can they be placed,
  // kept above others, and stay without the focus.
  set("QT_QPA_PLATFORM", qEnvironmentVariableIsSet("DISPLAY") ? "xcb" : "wayland");
  // Drawing with OpenGL would load a driver for a menu.
  set("QT_XCB_GL_INTEGRATION", "none");
  QCoreApplication::setApplicationName("marbelot");
  QGuiApplication::setDesktopFileName("org.marbelot.Marbelot");
  QGuiApplication::setQuitOnLastWindowClosed(false);
  return ours;
}

// Qt's styles grey disabled items out until they cannot be read, and half of the menu's lines are
// disabled because they only tell something.
void darkenDisabledText() {
  QPalette palette = QApplication::palette();
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    const QColor text = palette.color(QPalette::Active, role);
    const QColor ground = palette.color(QPalette::Active, QPalette::Window);
    const auto mixed = [](int a, int b) { return (a * 6 + b * 4) / 10; };
    palette.setColor(QPalette::Disabled, role,
                     QColor(mixed(text.red(), ground.red()), mixed(text.green(), ground.green()),
                            mixed(text.blue(), ground.blue())));
  }
  QApplication::setPalette(palette);
}

// Once, and not at each start: nothing has changed then.
void tellWhatIsMissing(Notices& notices, UserDefaults& defaults) {
  constexpr const char* told = "toldOfMissingXWayland";
  if (!isWayland() || toolkitConnection() || defaults.boolFor(told)) return;
  notices.post(noticeTitle,
               "Marbelot runs without XWayland. The menu opens as a window of its own, and windows "
               "can neither be put in their places nor kept above others. With XWayland they can.");
  defaults.set(told, true);
}

// Null where the menu has no key of its own to wait for. A user who wants none is not asked again.
std::unique_ptr<PortalShortcut> menuShortcut(StatusItem& statusItem, UserDefaults& defaults) {
  constexpr const char* declined = "declinedMenuShortcut";
  if (!isWayland() || defaults.boolFor(declined)) return nullptr;
  return std::make_unique<PortalShortcut>([&statusItem] { statusItem.popUpMenu(); },
                                          [&defaults] { defaults.set(declined, true); });
}

// Images and long texts go back to the system when they are done with. By itself the C library
// keeps blocks of up to 32 MB for the next time, once for each thread that had one.
void returnLargeBlocks() {
#ifdef __GLIBC__
  mallopt(M_MMAP_THRESHOLD, 8 << 20);
#endif
}

}  // namespace

int runApplication(int argc, char** argv, std::function<std::shared_ptr<void>(Platform&)> launch) {
  const InstanceLock lock = takeInstanceLock();
  if (lock.state == InstanceLock::taken) {
    const QCoreApplication core(argc, argv);
    if (askRunningProgramForMenu()) return 0;
    std::fputs("marbelot: already running, but not to be reached over the session bus\n", stderr);
    return 1;
  }
  if (!qEnvironmentVariableIsSet("DISPLAY") && !isWayland()) {
    std::fputs("marbelot: there is no display (neither DISPLAY nor WAYLAND_DISPLAY is set)\n",
               stderr);
    return 1;
  }
  returnLargeBlocks();
  std::vector<std::string> ours = setEnvironment();
  const QApplication application(argc, argv);
  darkenDisabledText();
  QApplication::setWindowIcon(symbolIcon("camera.on.rectangle.fill"));
  QObject context;
  quitOnSignals(context);

  QtMainQueue queue;
  SessionBus bus(queue);
  RemoteControl remote;
  QtApplication quitter(remote);
  // Never both, whose copies of each other would each count.
  DesktopPasteboard pasteboard(queue, connectWaylandClipboard({}, connectX11Clipboard()));
  JsonDefaults defaults(defaultsPath("org.marbelot.Marbelot"),
                        [&queue](std::function<void()> work) { queue.post(std::move(work)); });
  InotifyFolderEvents folderEvents;
  DesktopNotices notices(bus);
  DesktopWorkspace workspace(queue, bus, std::move(ours));
  TrayStatusItem statusItem(bus);
  PictureCache pictures(queue);
  QtWindows windows(pictures);
  QtDialogs dialogs(bus, pictures);
  QtScreens screens;
  QtKeyMonitors keyMonitors;
  DesktopScreenCapture screenCapture(queue, bus);
  TesseractRecognizer recognizer(queue);
  HelperWebWindows webWindows;
  AppcastUpdates updates({queue, defaults, notices, dialogs, workspace},
                         {MARBELOT_FEED_URL, MARBELOT_VERSION, "linux", systemVersion()},
                         webFetch(queue));
  Platform platform{quitter,       queue,      pasteboard, defaults, folderEvents, notices,
                    workspace,     statusItem, windows,    dialogs,  screens,      keyMonitors,
                    screenCapture, recognizer, webWindows, updates};

  std::shared_ptr<void> launched;
  std::unique_ptr<PortalShortcut> shortcut;
  const auto start = [&] {
    if (launched) return;
    launched = launch(platform);
    tellWhatIsMissing(notices, defaults);
    bus.whenKnown([&] {
      if (bus.connected()) shortcut = menuShortcut(statusItem, defaults);
    });
  };
  // Without the lock's word, the name on the bus tells whether there is another instance.
  if (lock.state == InstanceLock::ours) QTimer::singleShot(0, &context, start);
  bus.whenKnown([&] {
    QAccessible::setRootObject(qApp);
    if (bus.connected() && !remote.publish() && askRunningProgramForMenu()) {
      QCoreApplication::quit();
    } else {
      start();
    }
  });
  // QGuiApplication's own would first tell the accessibility bridge, which waits for the bus.
  const int status = QCoreApplication::exec();
  launched.reset();
  return status;
}

}  // namespace marbelot
