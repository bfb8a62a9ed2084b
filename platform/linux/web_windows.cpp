#include "platform/linux/web_windows.h"

#include <signal.h>
#include <sys/prctl.h>

#include <QFile>
#include <QProcess>
#include <utility>

#include "platform/linux/helper_program.h"

namespace marbelot {
namespace {

constexpr const char* missing =
    "Previews and maps need Qt WebEngine: install qt6-webengine-dev and build Marbelot again";
constexpr const char* refused = "Couldn't show that page";
constexpr int cannotLoad = 127;  // how the dynamic linker ends a program whose libraries lack
constexpr int wrongUsage = 2;

// The helper's own display settings, which ours are not made for.
QProcessEnvironment environment() {
  QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
  variables.remove("QT_XCB_GL_INTEGRATION");
  return variables;
}

// What the helper is told, a line each; it is told on its standard input, because everybody can
// read command lines.
QByteArray told(const WebWindowDescription& description) {
  QByteArray lines;
  for (const std::string& text :
       {description.subject, description.title, description.notFoundTitle}) {
    QByteArray line = QByteArray::fromStdString(text);
    line.replace('\n', ' ').replace('\r', ' ');
    lines += line + '\n';
  }
  return lines;
}

const char* problemOf(int code, QProcess::ExitStatus status) {
  if (status != QProcess::NormalExit) return "";  // the code is a signal's
  if (code == cannotLoad) return missing;
  return code == wrongUsage ? refused : "";
}

class HelperWindow final : public WebWindow {
 public:
  explicit HelperWindow(WebWindowDescription description) : closed_(std::move(description.closed)) {
    process_.setProcessEnvironment(environment());
    process_.setStandardOutputFile(QProcess::nullDevice());
    process_.setStandardErrorFile(QProcess::nullDevice());
    process_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
    // Both only from the event loop: whoever asked for the window holds it by then.
    QObject::connect(
        &process_, &QProcess::errorOccurred, &process_,
        [this](QProcess::ProcessError error) {
          if (error == QProcess::FailedToStart) tell(missing);
        },
        Qt::QueuedConnection);
    QObject::connect(
        &process_, &QProcess::finished, &process_,
        [this](int code, QProcess::ExitStatus status) { tell(problemOf(code, status)); },
        Qt::QueuedConnection);
    const auto number = [](double points) { return QString::number(static_cast<int>(points)); };
    process_.start(QFile::decodeName(helperPath("marbelot-web").c_str()),
                   {description.kind == WebWindowDescription::Kind::map ? "map" : "page",
                    number(description.contentSize.width), number(description.contentSize.height)});
    process_.write(told(description));
    process_.closeWriteChannel();
  }
  ~HelperWindow() override {
    process_.disconnect();
    process_.kill();  // it has nothing to save, and nobody is to wait for it
  }
  HelperWindow(const HelperWindow&) = delete;
  HelperWindow& operator=(const HelperWindow&) = delete;

 private:
  // The callee may drop the window.
  void tell(const std::string& problem) {
    if (const auto closed = std::exchange(closed_, nullptr)) closed(problem);
  }

  std::function<void(const std::string&)> closed_;
  QProcess process_;
};

}  // namespace

std::unique_ptr<WebWindow> HelperWebWindows::open(WebWindowDescription description) {
  return std::make_unique<HelperWindow>(std::move(description));
}

}  // namespace marbelot
