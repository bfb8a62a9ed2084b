#include <QApplication>
#include <QProcess>

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

class LinuxDesktop : public TestDesktop {
 public:
  explicit LinuxDesktop(std::unique_ptr<ClipboardConnection> clipboard)
      : pasteboard_(queue_, std::move(clipboard)) {}
  Platform& platform() override { return platform_; }
  bool wait(const std::function<bool()>& done) override { return waitWithQt(done); }

 private:
  TemporaryHome home_;
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
  DesktopScreenCapture screenCapture_{queue_};
  TesseractRecognizer recognizer_{queue_};
  HelperWebWindows webWindows_;
  Platform platform_{application_, queue_,       pasteboard_,    defaults_,   folderEvents_,
                     notices_,     workspace_,   statusItem_,    windows_,    dialogs_,
                     screens_,     keyMonitors_, screenCapture_, recognizer_, webWindows_};
};

std::unique_ptr<TestDesktop> makeDesktop() {
  return std::make_unique<LinuxDesktop>(connectX11Clipboard());
}

// As on a desktop with XWayland: only the clipboard is the compositor's.
class WaylandDesktop : private PrivateCompositor, public LinuxDesktop {
 public:
  WaylandDesktop()
      : PrivateCompositor(waylandDesktops().front()),
        LinuxDesktop(connectWaylandClipboard(display())) {}
};

std::unique_ptr<TestDesktop> makeWaylandDesktop() { return std::make_unique<WaylandDesktop>(); }

INSTANTIATE_TEST_SUITE_P(Linux, Conformance, testing::Values(&makeDesktop));
INSTANTIATE_TEST_SUITE_P(Wayland, Conformance, testing::Values(&makeWaylandDesktop));

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
  const marbelot::PrivateServer server;
  const marbelot::PrivateBus bus;
  qputenv("DISPLAY", QByteArray::fromStdString(server.display()));
  qputenv("QT_QPA_PLATFORM", "xcb");
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
