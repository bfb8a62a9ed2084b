#include "platform/linux/screen_capture.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QEvent>
#include <QStandardPaths>
#include <QWidget>
#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/files.h"
#include "platform/image_codec.h"
#include "platform/linux/desktop_entries.h"
#include "platform/linux/raw_picture.h"
#include "platform/linux/sway_windows.h"
#include "platform/linux/themed_icon.h"
#include "platform/linux/wayland_screen.h"
#include "platform/linux/x11_desktop.h"

namespace marbelot {
namespace {

// In which the screen is drawn again where a menu was.
constexpr double menuGoneSeconds = 0.06;
constexpr std::size_t largestPicture = std::size_t{2} << 30;  // bytes, as tools write them

std::optional<Bitmap> cropped(const Bitmap& whole, const X11Margins& margins) {
  auto part = Bitmap::make(whole.width() - margins.left - margins.right,
                           whole.height() - margins.top - margins.bottom);
  if (!part) return std::nullopt;
  for (int y = 0; y < part->height(); ++y) {
    std::memcpy(part->row(y), whole.row(y + margins.top) + margins.left * Bitmap::pixelBytes,
                static_cast<std::size_t>(part->width()) * Bitmap::pixelBytes);
  }
  return part;
}

bool hasMargins(const X11Margins& margins) {
  return margins.left || margins.right || margins.top || margins.bottom;
}

// The tool's picture as we save it; null when it is none.
SharedBytes pngOf(std::string bytes, const X11Margins& margins) {
  SharedBitmap pixels;
  if (auto raw = rawPicture(bytes)) {
    pixels = std::make_shared<const Bitmap>(*std::move(raw));
  } else if (const auto image = Image::fromBytes(share(std::move(bytes)))) {
    pixels = decode(*image);
  }
  if (!pixels) return nullptr;
  const auto part = hasMargins(margins) ? cropped(*pixels, margins) : std::nullopt;
  return encodePng(part ? *part : *pixels);
}

}  // namespace

struct DesktopScreenCapture::Job {
  CaptureRequest request;
  std::string path;
  std::function<void()> taken;
  std::function<void(const std::string& problem)> finished;
  std::size_t step = 0;
  std::unique_ptr<ChildProcess> child;
  std::unique_ptr<PortalScreenshot> portal;
  Task saving;
  bool started = false;
  bool cancelled = false;
};

DesktopScreenCapture::DesktopScreenCapture(MainQueue& queue, SessionBus& bus)
    : queue_(queue), bus_(bus) {
  QCoreApplication::instance()->installEventFilter(this);
  if (isWayland()) askCompositor();
}

DesktopScreenCapture::~DesktopScreenCapture() = default;

bool DesktopScreenCapture::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Hide && watched->isWidgetType() &&
      static_cast<QWidget*>(watched)->windowType() == Qt::Popup)
    sincePopup_.start();
  return false;
}

X11Windows& DesktopScreenCapture::windows() {
  if (!windows_) windows_ = std::make_unique<X11Windows>("");
  return *windows_;
}

Task DesktopScreenCapture::capture(const std::vector<std::string>& arguments,
                                   const std::string& path, std::function<void()> taken,
                                   std::function<void(const std::string& problem)> finished) {
  auto job = std::make_shared<Job>();
  job->path = path;
  job->taken = std::move(taken);
  job->finished = std::move(finished);
  job->request = captureRequest(arguments);
  if (job->request.subject == CaptureRequest::Subject::window && !isSway()) {
    const auto window = static_cast<xcb_window_t>(job->request.window);
    job->request.margins = windows().margins(window);
    job->request.window = windows().framed(window);
  }
  jobs_.push_back(job);
  const double since = sincePopup_.isValid() ? double(sincePopup_.elapsed()) / 1000 : 1;
  starting_ = queue_.after(std::max(0.0, menuGoneSeconds - since), [this] { startWaiting(); });
  return Task(std::shared_ptr<void>(job.get(), [this, held = job](void*) { cancel(held.get()); }));
}

void DesktopScreenCapture::askCompositor() {
  if (asking_) return;
  asking_ = queue_.inBackground(waylandShowsScreen, [this](std::optional<bool> shows) {
    asking_.cancel();
    // Without an answer nobody but the portal is left, until the next picture.
    waylandShowsScreen_ = shows.value_or(false);
    startWaiting();
    waylandShowsScreen_ = shows;
  });
}

// As soon as those that were cancelled are gone, which hold the pointer until then.
void DesktopScreenCapture::startWaiting() {
  if (isWayland() && !waylandShowsScreen_) return askCompositor();
  if (std::any_of(jobs_.begin(), jobs_.end(), [](const auto& job) { return job->cancelled; }))
    return;
  const auto jobs = jobs_;
  for (const auto& job : jobs)
    if (!std::exchange(job->started, true)) begin(*job);
}

void DesktopScreenCapture::begin(Job& job) {
  // Windows that have numbers are X11's or sway's, which shows the screen.
  const bool isWindow = job.request.subject == CaptureRequest::Subject::window;
  isWayland() && !isWindow && !*waylandShowsScreen_ ? askPortal(job) : run(job, "");
}

void DesktopScreenCapture::run(Job& job, const std::string& before) {
  const std::vector<CaptureStep>& steps = captureSteps(job.request);
  const CaptureStep& step = steps[job.step];
  const QString program = QStandardPaths::findExecutable(step.program);
  if (program.isEmpty()) {
    return finish(job, std::string("Taking pictures of the screen needs ") + step.program +
                           ": install the package “" + step.package + "”.");
  }
  std::vector<std::string> words = step.arguments(job.request, before);
  words.insert(words.begin(), program.toStdString());
  job.child = ChildProcess::start(
      std::move(words),
      [this, &job](ChildProcess::Result result) { stepEnded(job, std::move(result)); },
      step.input ? step.input() : "");
  if (!job.child) finish(job, std::string("Couldn't start ") + step.program);
}

void DesktopScreenCapture::stepEnded(Job& job, ChildProcess::Result result) {
  job.child.reset();
  if (job.cancelled) {
    std::erase_if(jobs_, [&](const auto& other) { return other.get() == &job; });
    return startWaiting();
  }
  // Given up by the user, or failed.
  if (result.status != 0) return finish(job, "");
  if (++job.step == captureSteps(job.request).size()) return save(job, std::move(result.output));
  run(job, contents(result.output, largestPicture));
}

void DesktopScreenCapture::save(Job& job, Descriptor output) {
  job.taken();
  job.saving = queue_.inBackground(
      [file = std::make_shared<Descriptor>(std::move(output)), path = job.path,
       margins = job.request.margins] {
        const SharedBytes png = pngOf(contents(*file, largestPicture), margins);
        return png && files::create(path, *png);
      },
      [this, &job](bool saved) { finish(job, saved ? "" : "Couldn't save the screenshot"); });
}

void DesktopScreenCapture::askPortal(Job& job) {
  if (!bus_.connected()) return finish(job, "Taking pictures of the screen needs a session bus");
  job.portal = std::make_unique<PortalScreenshot>(
      job.request.subject != CaptureRequest::Subject::screen,
      [this, &job](const PortalScreenshot::Answer& answer) { takeOver(job, answer); });
}

// The portal's file was made for us alone, and is one too many once we have saved ours.
void DesktopScreenCapture::takeOver(Job& job, const PortalScreenshot::Answer& answer) {
  if (answer.file.empty()) return finish(job, answer.problem);
  job.taken();
  job.saving = queue_.inBackground(
      [from = answer.file, to = job.path] {
        const auto image = Image::fromBytes(files::read(from, largestPicture));
        const SharedBytes png = image ? pngBytes(*image) : nullptr;
        if (!png || !files::create(to, *png)) return false;
        ::unlink(from.c_str());
        return true;
      },
      [this, &job](bool saved) { finish(job, saved ? "" : "Couldn't save the screenshot"); });
}

void DesktopScreenCapture::finish(Job& job, const std::string& problem) {
  const auto told = std::move(job.finished);
  std::erase_if(jobs_, [&](const auto& other) { return other.get() == &job; });
  told(problem);
}

void DesktopScreenCapture::cancel(const Job* job) {
  const auto found = std::find_if(jobs_.begin(), jobs_.end(),
                                  [&](const auto& other) { return other.get() == job; });
  if (found == jobs_.end()) return;
  if ((*found)->child) {
    (*found)->cancelled = true;
    (*found)->child->kill();
  } else {
    jobs_.erase(found);
  }
}

const DesktopScreenCapture::Program& DesktopScreenCapture::program(const std::string& application) {
  const auto [program, isNew] = programs_.try_emplace(application);
  if (isNew) {
    const DesktopEntry entry = entryOfClass(application);
    program->second = {entry.name, themedIcon(entry.icon)};
  }
  return program->second;
}

std::vector<RunningApplication> DesktopScreenCapture::runningApplications() {
  std::vector<RunningApplication> applications;
  const auto known = [&applications](std::int64_t pid) {
    return std::find_if(applications.begin(), applications.end(),
                        [&](const auto& other) { return other.pid == pid; });
  };
  if (isSway()) {
    for (const SwayWindow& window : swayWindows()) {
      const auto& [name, icon] = program(window.application);
      if (window.pid != getpid() && known(window.pid) == applications.end())
        applications.push_back({window.pid, name, icon});
    }
    return applications;
  }
  std::map<xcb_window_t, std::optional<Image>> icons;
  for (const X11Window& window : windows().stacked()) {
    if (!window.isListed || window.pid == 0 || window.pid == getpid()) continue;
    const auto before = icons_.find(window.id);
    auto icon = before == icons_.end() ? windows().icon(window.id) : before->second;
    icons.emplace(window.id, icon);
    if (const auto same = known(window.pid); same == applications.end()) {
      const Program& owner = program(window.className);
      applications.push_back({window.pid, owner.name, icon ? icon : owner.icon});
    } else if (!same->icon) {
      same->icon = std::move(icon);
    }
  }
  icons_ = std::move(icons);
  return applications;
}

void DesktopScreenCapture::activate(std::int64_t pid) {
  if (isSway()) return focusSwayWindows(pid);
  xcb_window_t front = XCB_WINDOW_NONE;
  for (const X11Window& window : windows().stacked()) {
    if (window.pid != pid) continue;
    if (window.isShown) windows().raise(window.id);
    front = window.id;
  }
  if (front != XCB_WINDOW_NONE) windows().activate(front);
}

std::optional<std::int64_t> DesktopScreenCapture::frontWindow(std::int64_t pid) {
  if (isSway()) {
    for (const SwayWindow& window : swayWindows())
      if (window.pid == pid && window.isShown) return window.id;
    return std::nullopt;
  }
  std::optional<std::int64_t> front;
  for (const X11Window& window : windows().stacked())
    if (window.pid == pid && window.isShown) front = window.id;
  return front;
}

}  // namespace marbelot
