#include "platform/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <system_error>

#include "platform/descriptor.h"
#include "platform/linux/user_defaults.h"
#include "platform/text.h"

namespace marbelot::files {
namespace {

double seconds(const statx_timestamp& time) {
  return static_cast<double>(time.tv_sec) + time.tv_nsec / 1e9;
}

// False when the name is taken. File systems can rename without replacing, or link, or neither;
// then the name is taken by an empty file first, which only we may replace.
bool moveToFreeName(const std::string& from, const std::string& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno == EEXIST) return false;
  if (link(from.c_str(), to.c_str()) == 0) {
    unlink(from.c_str());
    return true;
  }
  if (errno == EEXIST) return false;
  if (!Descriptor(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600))) return false;
  if (rename(from.c_str(), to.c_str()) == 0) return true;
  unlink(to.c_str());
  return false;
}

}  // namespace

std::optional<std::vector<std::string>> list(const std::string& folder, std::string* problem) {
  const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(folder.c_str()), closedir);
  if (!directory) {
    if (problem) *problem = std::system_category().message(errno);
    return std::nullopt;
  }
  std::vector<std::string> names;
  while (const dirent* entry = readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  return names;
}

std::optional<FileInfo> info(const std::string& path) {
  struct statx status {};
  if (statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &status) != 0 ||
      !S_ISREG(status.stx_mode))
    return std::nullopt;
  const double modified = seconds(status.stx_mtime);
  const double created = status.stx_mask & STATX_BTIME ? seconds(status.stx_btime) : modified;
  return FileInfo{.modified = modified,
                  .created = created,
                  .bytes = static_cast<std::size_t>(status.stx_size),
                  .hidden = hasHiddenName(path)};
}

bool isTaken(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
}

std::optional<FolderIdentity> folderIdentity(const std::string& path) {
  struct statx status {};
  if (statx(AT_FDCWD, path.c_str(), 0, STATX_TYPE | STATX_INO | STATX_BTIME, &status) != 0 ||
      !S_ISDIR(status.stx_mode))
    return std::nullopt;
  const std::uint64_t device = std::uint64_t{status.stx_dev_major} << 32 | status.stx_dev_minor;
  const double created = status.stx_mask & STATX_BTIME ? seconds(status.stx_btime) : 0;
  return FolderIdentity{device, status.stx_ino, created};
}

SharedBytes read(const std::string& path, std::size_t maximumBytes) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return nullptr;
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > maximumBytes) return nullptr;
  auto bytes = std::make_shared<std::string>();
  bytes->resize(size);
  return readFully(file.get(), bytes->data(), size) ? bytes : nullptr;
}

bool create(const std::string& path, std::string_view bytes) {
  // Written beside its place and moved into it, so that nobody sees half a file and a name that is
  // taken is never overwritten.
  std::string temporary = path + ".XXXXXX";
  const Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
  if (!file) return false;
  const bool done = writeFully(file.get(), bytes) && moveToFreeName(temporary, path);
  if (!done) unlink(temporary.c_str());
  return done;
}

bool makeFolder(const std::string& path) {
  for (std::size_t end = 1; end != std::string::npos && !path.empty();) {
    end = path.find('/', end + 1);
    mkdir(path.substr(0, end).c_str(), 0700);
  }
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string homeFolder() {
  if (const char* home = std::getenv("HOME"); home && *home) return home;
  const passwd* user = getpwuid(getuid());
  return user ? user->pw_dir : "/";
}

std::string temporaryFolder() {
  const char* configured = std::getenv("TMPDIR");
  const std::string root = configured && *configured ? configured : "/tmp";
  const std::string path = join(root, "marbelot-" + std::to_string(getuid()));
  // In a folder that everybody may write to, somebody else may have made it first.
  const auto isOurs = [](const std::string& folder) {
    struct stat status {};
    if (lstat(folder.c_str(), &status) != 0) return true;  // whoever needs it makes it, for us only
    return S_ISDIR(status.st_mode) && status.st_uid == getuid() &&
           ((status.st_mode & 077) == 0 || chmod(folder.c_str(), 0700) == 0);
  };
  for (int i = 1; i < 100; ++i) {
    const std::string candidate = i == 1 ? path : path + "-" + std::to_string(i);
    if (isOurs(candidate)) return candidate;
  }
  return join(homeFolder(), ".cache");
}

}  // namespace marbelot::files
