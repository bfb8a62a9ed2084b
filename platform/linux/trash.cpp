#include "platform/linux/trash.h"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>

#include "platform/descriptor.h"
#include "platform/files.h"

namespace marbelot {
namespace {

struct Trash {
  std::string folder;
  // Paths in it are told from here on; empty: from the root.
  std::string top;
};

std::optional<dev_t> deviceOf(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 ? std::optional(status.st_dev) : std::nullopt;
}

// The path without links in its folder; empty when there is no such folder.
std::string canonical(const std::string& path) {
  const std::string name = files::lastComponent(path);
  const std::string folder = path.substr(0, path.size() - name.size());
  std::array<char, PATH_MAX> resolved{};
  if (name.empty() || !realpath(folder.empty() ? "." : folder.c_str(), resolved.data())) return {};
  return files::join(resolved.data(), name);
}

std::string homeTrash() {
  const char* data = std::getenv("XDG_DATA_HOME");
  const std::string share =
      data && *data == '/' ? data : files::join(files::homeFolder(), ".local/share");
  return files::join(share, "Trash");
}

// The folder, made if need be, when it is one of ours alone and no link to somewhere else.
bool isOwnFolder(const std::string& path) {
  mkdir(path.c_str(), 0700);
  struct stat status {};
  return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == getuid();
}

// The folder in which the file system that holds the path begins.
std::string topFolder(const std::string& path, dev_t device) {
  std::string top = path;
  for (;;) {
    const std::size_t slash = top.rfind('/');
    if (slash == 0 || slash == top.npos) return deviceOf("/") == device ? "/" : top;
    const std::string above = top.substr(0, slash);
    if (deviceOf(above) != device) return top;
    top = above;
  }
}

// The trash of a file system other than the home folder's: one that its administrator has made for
// all users, or one of the user's own.
std::optional<Trash> trashAtTop(const std::string& path, dev_t device) {
  const std::string top = topFolder(path, device);
  const std::string user = std::to_string(getuid());
  const std::string shared = files::join(top, ".Trash");
  struct stat status {};
  if (lstat(shared.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
      (status.st_mode & S_ISVTX) && isOwnFolder(files::join(shared, user)))
    return Trash{files::join(shared, user), top};
  const std::string own = files::join(top, ".Trash-" + user);
  if (!isOwnFolder(own)) return std::nullopt;
  return Trash{own, top};
}

std::string percentEncoded(const std::string& path) {
  std::string encoded;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       std::string_view("/-_.~").find(c) != std::string_view::npos;
    if (plain) {
      encoded += c;
    } else {
      std::array<char, 4> code{};
      std::snprintf(code.data(), code.size(), "%%%02X", static_cast<unsigned>(byte));
      encoded += code.data();
    }
  }
  return encoded;
}

std::string infoText(const Trash& trash, const std::string& path) {
  // Relative where the trash moves with its disk.
  std::string told = path;
  if (!trash.top.empty()) told = path.substr(trash.top == "/" ? 1 : trash.top.size() + 1);
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  std::array<char, 32> date{};
  std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
  return "[Trash Info]\nPath=" + percentEncoded(told) + "\nDeletionDate=" + date.data() + "\n";
}

// "picture.png", "picture (2).png" …
std::string numbered(const std::string& name, int attempt) {
  if (attempt == 1) return name;
  const std::size_t dot = name.rfind('.');
  const std::size_t stem = dot == name.npos || dot == 0 ? name.size() : dot;
  return name.substr(0, stem) + " (" + std::to_string(attempt) + ")" + name.substr(stem);
}

// A copy that is on the disk when this returns, with the times and rights of the original.
bool copyFile(const std::string& from, const std::string& to) {
  const Descriptor source(open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  struct stat before {};
  if (!source || fstat(source.get(), &before) != 0 || !S_ISREG(before.st_mode)) return false;
  const Descriptor target(
      open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, before.st_mode & 0777));
  if (!target) return false;
  off_t copied = 0;
  while (copied < before.st_size) {
    const ssize_t put = sendfile(target.get(), source.get(), nullptr,
                                 static_cast<std::size_t>(before.st_size - copied));
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) break;
    copied += put;
  }
  const std::array<timespec, 2> times{before.st_atim, before.st_mtim};
  struct stat after {};
  // It may have been written to meanwhile; then the copy is not what would be lost.
  const bool same = copied == before.st_size && fstat(source.get(), &after) == 0 &&
                    after.st_size == before.st_size &&
                    after.st_mtim.tv_sec == before.st_mtim.tv_sec &&
                    after.st_mtim.tv_nsec == before.st_mtim.tv_nsec;
  if (same && futimens(target.get(), times.data()) == 0 && fsync(target.get()) == 0) return true;
  unlink(to.c_str());
  return false;
}

enum class Outcome { moved, taken, refused };

Outcome moveFile(const std::string& from, const std::string& to, bool mayCopy) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
    return Outcome::moved;
  if (errno == EEXIST) return Outcome::taken;
  // Some file systems know no such renaming. The name is ours: we have written its information.
  if (errno == EINVAL && access(to.c_str(), F_OK) != 0 && rename(from.c_str(), to.c_str()) == 0)
    return Outcome::moved;
  if (errno != EXDEV || !mayCopy || !copyFile(from, to)) return Outcome::refused;
  if (unlink(from.c_str()) == 0) return Outcome::moved;
  unlink(to.c_str());
  return Outcome::refused;
}

bool moveInto(const Trash& trash, const std::string& path, bool mayCopy) {
  const std::string name = files::lastComponent(path);
  const std::string filesFolder = files::join(trash.folder, "files");
  const std::string infoFolder = files::join(trash.folder, "info");
  if (!isOwnFolder(filesFolder) || !isOwnFolder(infoFolder)) return false;
  const std::string text = infoText(trash, path);
  for (int attempt = 1; attempt < 100000; ++attempt) {
    const std::string free = numbered(name, attempt);
    const std::string info = files::join(infoFolder, free + ".trashinfo");
    // Its information comes first and takes the name.
    const Descriptor file(open(info.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file && errno == EEXIST) continue;
    if (!file) return false;
    const Outcome outcome = writeFully(file.get(), text)
                                ? moveFile(path, files::join(filesFolder, free), mayCopy)
                                : Outcome::refused;
    if (outcome == Outcome::moved) return true;
    unlink(info.c_str());
    if (outcome == Outcome::refused) return false;
  }
  return false;
}

}  // namespace

bool moveToTrash(const std::string& given) {
  const std::string path = canonical(given);
  const auto device = path.empty() ? std::nullopt : deviceOf(path);
  if (!device) return false;
  const Trash home{homeTrash(), {}};
  files::makeFolder(home.folder);
  if (deviceOf(home.folder) != device) {
    if (const auto trash = trashAtTop(path, *device); trash && moveInto(*trash, path, false))
      return true;
  }
  return moveInto(home, path, true);
}

}  // namespace marbelot
