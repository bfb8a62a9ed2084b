// Which files a desktop's screenshot tools made, and whether they are done writing.

#include <endian.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
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
constexpr std::array<std::string_view, 29> nameBeginnings = {"screenshot",
                                                             "screen shot",
                                                             "screen_shot",
                                                             "screencapture",
                                                             "bildschirmfoto",
                                                             "bildschirmaufnahme",
                                                             "capture d’écran",
                                                             "capture d'écran",
                                                             "capture d’ecran",
                                                             "captura desde",
                                                             "captura de pant",
                                                             "captura_de_pant",
                                                             "captura de tela",
                                                             "captura_de_tela",
                                                             "captura de ecrã",
                                                             "captura_de_ecrã",
                                                             "schermafbeelding",
                                                             "schermata",
                                                             "istantanea",
                                                             "skärmbild",
                                                             "skjermbilde",
                                                             "skærmbillede",
                                                             "kuvakaappaus",
                                                             "zrzut ekranu",
                                                             "zrzut_ekranu",
                                                             "снимок экрана",
                                                             "ekran görüntüsü",
                                                             "スクリーンショット",
                                                             "截图"};
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

bool beginsAsScreenshots(std::string_view lower) {
  return std::any_of(nameBeginnings.begin(), nameBeginnings.end(),
                     [&](std::string_view word) { return lower.starts_with(word); });
}

bool nameTellsScreenshot(const std::string& path) {
  const std::string name = text::lowercased(text::sanitized(lastComponent(path)));
  const auto contains = [&](std::string_view word) { return name.find(word) != std::string::npos; };
  return beginsWithFlameshotStamp(name) || beginsAsScreenshots(name) ||
         std::any_of(nameParts.begin(), nameParts.end(), contains);
}

// Whether one of the name's words is a tool's: "gnome-screenshot", but no pilgrim's.
bool isScreenshotTool(std::string_view lower) {
  constexpr std::array<std::string_view, 7> tools = {
      "screenshot", "screenshooter", "spectacle", "flameshot", "scrot", "grim", "ksnip"};
  const auto isLetter = [](char c) { return c >= 'a' && c <= 'z'; };
  while (!lower.empty()) {
    const auto end = std::find_if_not(lower.begin(), lower.end(), isLetter);
    const auto length = static_cast<std::size_t>(end - lower.begin());
    if (std::find(tools.begin(), tools.end(), lower.substr(0, length)) != tools.end()) return true;
    lower.remove_prefix(std::min(length + 1, lower.size()));
  }
  return false;
}

// A text chunk of a PNG: a keyword, a zero and the text; in the international kind two bytes, which
// are zero where the text is not compressed, a language and a translation of the keyword stand
// between.
bool tellsScreenshot(std::string_view chunk, bool international) {
  const auto field = [&chunk] {
    const std::string_view found = chunk.substr(0, chunk.find('\0'));
    chunk.remove_prefix(std::min(found.size() + 1, chunk.size()));
    return found;
  };
  const std::string_view keyword = field();
  if (international) {
    chunk.remove_prefix(std::min<std::size_t>(2, chunk.size()));
    field();
    field();
  }
  const std::string value = text::lowercased(text::sanitized(std::string(chunk)));
  return keyword == "Software" ? isScreenshotTool(value)
                               : keyword == "Title" && beginsAsScreenshots(value);
}

// Screenshot tools name themselves in a PNG's text chunks, which stand before the image data:
// Software=gnome-screenshot, Software=Spectacle, Title=Screenshot and the like.
bool pngTextTellsScreenshot(int file) {
  std::array<char, 8192> head{};
  const ssize_t got = pread(file, head.data(), head.size(), 0);
  if (got < 8) return false;
  const std::string_view bytes(head.data(), static_cast<std::size_t>(got));
  if (!bytes.starts_with("\x89PNG\r\n\x1a\n")) return false;
  for (std::size_t at = 8; at + 8 <= bytes.size();) {
    std::uint32_t length = 0;
    std::memcpy(&length, &bytes[at], sizeof length);
    length = be32toh(length);
    const std::string_view type = bytes.substr(at + 4, 4);
    if (type == "IDAT") return false;
    if ((type == "tEXt" || type == "iTXt") &&
        tellsScreenshot(bytes.substr(at + 8, length), type == "iTXt"))
      return true;
    at += 12 + std::size_t{length};
  }
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
