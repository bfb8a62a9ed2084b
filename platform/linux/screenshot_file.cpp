// Which files a desktop's screenshot tools made, and whether they are done writing.

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <ctime>

#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/image.h"
#include "platform/text.h"

namespace marbelot::files {
namespace {

constexpr const char* screenCaptureAttribute = "user.com.apple.metadata:kMDItemIsScreenCapture";

// How file names of screenshots begin, lower-cased, as the tools of GNOME, KDE, Xfce, MATE, Deepin
// and Flatpak's portal translate the word.
constexpr std::array<std::string_view, 24> nameBeginnings = {
    "screenshot",      "screen shot",        "screen_shot",        "screencapture",
    "bildschirmfoto",  "bildschirmaufnahme", "capture d’écran",    "capture d'écran",
    "capture d’ecran", "captura de",         "captura_de",         "schermafbeelding",
    "schermata",       "istantanea",         "skärmbild",          "skjermbilde",
    "skærmbillede",    "kuvakaappaus",       "zrzut ekranu",       "zrzut_ekranu",
    "снимок экрана",   "ekran görüntüsü",    "スクリーンショット", "截图"};
// What scrot, grim, Flameshot and ksnip put elsewhere into their names.
constexpr std::array<std::string_view, 5> nameParts = {"_scrot.", "_grim.", "_hyprshot.",
                                                       "flameshot", "ksnip_"};

// Flameshot's own pattern: a name that begins like 2026-11-21_10-00.
bool beginsWithFlameshotStamp(std::string_view name) {
  constexpr std::string_view pattern = "dddd-dd-dd_dd-dd";
  if (name.size() < pattern.size()) return false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const bool fits = pattern[i] == 'd' ? name[i] >= '0' && name[i] <= '9' : name[i] == pattern[i];
    if (!fits) return false;
  }
  return true;
}

bool nameTellsScreenshot(const std::string& path) {
  const std::string name = text::lowercased(text::sanitized(lastComponent(path)));
  const auto begins = [&](std::string_view word) { return name.starts_with(word); };
  const auto contains = [&](std::string_view word) { return name.find(word) != std::string::npos; };
  return beginsWithFlameshotStamp(name) ||
         std::any_of(nameBeginnings.begin(), nameBeginnings.end(), begins) ||
         std::any_of(nameParts.begin(), nameParts.end(), contains);
}

// Screenshot tools name themselves in a PNG's text chunks, which stand before the image data:
// Software=gnome-screenshot, Software=Spectacle, Title=Screenshot and the like.
bool pngTextTellsScreenshot(int file) {
  std::array<char, 8192> head{};
  const ssize_t got = pread(file, head.data(), head.size(), 0);
  if (got < 8) return false;
  const std::string_view bytes(head.data(), static_cast<std::size_t>(got));
  if (!bytes.starts_with("\x89PNG\r\n\x1a\n")) return false;
  const std::size_t data = bytes.find("IDAT");
  const std::string lower = text::lowercased(text::sanitized(std::string(bytes.substr(0, data))));
  if (lower.find("text") == std::string::npos) return false;
  for (const std::string_view word :
       {"screenshot", "screenshooter", "spectacle", "flameshot", "screen capture", "scrot", "grim"})
    if (lower.find(word) != std::string::npos) return true;
  return false;
}

enum class Writing { over, underWay, unknown };

// On file systems of other machines a lease says nothing about their writers, or is always refused.
bool isRemote(int file) {
  struct statfs system {};
  if (fstatfs(file, &system) != 0) return false;
  constexpr std::array<std::uint32_t, 4> remote = {NFS_SUPER_MAGIC, SMB_SUPER_MAGIC, 0xFF534D42U,
                                                   0xFE534D42U};  // the last two: CIFS, SMB 2
  return std::find(remote.begin(), remote.end(), static_cast<std::uint32_t>(system.f_type)) !=
         remote.end();
}

// The kernel knows whether anybody has the file open for writing: only then it refuses a read
// lease.
Writing writing(int file) {
  if (isRemote(file)) return Writing::unknown;
  // A writer that comes while we hold the lease makes the kernel signal us; this one is ignored.
  fcntl(file, F_SETSIG, SIGURG);
  if (fcntl(file, F_SETLEASE, F_RDLCK) == 0) {
    fcntl(file, F_SETLEASE, F_UNLCK);
    return Writing::over;
  }
  return errno == EAGAIN ? Writing::underWay : Writing::unknown;
}

// Where nothing better is to be had (no leases, another user's file): nobody wrote for a moment.
bool isQuiet(const struct stat& status) {
  timespec now{};
  if (clock_gettime(CLOCK_REALTIME, &now) != 0) return false;
  const double age = static_cast<double>(now.tv_sec - status.st_mtim.tv_sec) +
                     static_cast<double>(now.tv_nsec - status.st_mtim.tv_nsec) / 1e9;
  return age > 0.2 || age < 0;
}

}  // namespace

ScreenshotState screenshotState(const std::string& path) {
  // Not blocking, so that a pipe somebody put there is no trap.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
    return ScreenshotState::no;
  const Writing state = writing(file.get());
  if (state == Writing::underWay) return ScreenshotState::beingWritten;
  if (status.st_size == 0 || (state == Writing::unknown && !isQuiet(status)))
    return ScreenshotState::no;
  const bool made = fgetxattr(file.get(), screenCaptureAttribute, nullptr, 0) > 0 ||
                    nameTellsScreenshot(path) || pngTextTellsScreenshot(file.get());
  return made ? ScreenshotState::finished : ScreenshotState::no;
}

}  // namespace marbelot::files
