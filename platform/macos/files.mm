// Files by POSIX, well-known folders and the screenshot tool's marks by Foundation.
#include "platform/files.h"

#import <Foundation/Foundation.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/stdio.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

#include "platform/descriptor.h"
#include "platform/image.h"
#include "platform/macos/conversions.h"

namespace marbelot::files {
namespace {

// A rename that never replaces. Not every volume has it (FAT, some network ones): there the name is
// taken by an empty file first, which only we may replace.
bool moveToFreeName(const std::string& from, const std::string& to) {
  if (renamex_np(from.c_str(), to.c_str(), RENAME_EXCL) == 0) return true;
  if (errno != ENOTSUP) return false;
  const Descriptor place(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!place) return false;
  if (rename(from.c_str(), to.c_str()) == 0) return true;
  unlink(to.c_str());
  return false;
}

double seconds(const timespec& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

std::string withoutTrailingSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::string folderOrInHome(NSSearchPathDirectory folder, const std::string& name) {
  NSString* found = NSSearchPathForDirectoriesInDomains(folder, NSUserDomainMask, YES).firstObject;
  return found != nil ? utf8(found) : join(homeFolder(), name);
}

}  // namespace

std::optional<std::vector<std::string>> list(const std::string& folder, std::string* problem) {
  @autoreleasepool {
    NSError* error = nil;
    NSArray<NSString*>* found =
        [NSFileManager.defaultManager contentsOfDirectoryAtPath:nsPath(folder) error:&error];
    if (found == nil) {
      if (problem != nullptr) *problem = utf8(error.localizedDescription);
      return std::nullopt;
    }
    std::vector<std::string> names;
    names.reserve(found.count);
    for (NSString* name in found) names.push_back(utf8(name));
    return names;
  }
}

std::optional<FileInfo> info(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return FileInfo{.modified = seconds(status.st_mtimespec),
                  .created = seconds(status.st_birthtimespec),
                  .bytes = static_cast<std::size_t>(status.st_size),
                  .hidden = (status.st_flags & UF_HIDDEN) != 0 || hasHiddenName(path)};
}

bool isTaken(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0;
}

std::optional<FolderIdentity> folderIdentity(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return std::nullopt;
  return FolderIdentity{static_cast<std::uint64_t>(status.st_dev), status.st_ino,
                        seconds(status.st_birthtimespec)};
}

SharedBytes read(const std::string& path, std::size_t maximumBytes) {
  // Without O_NONBLOCK a pipe of that name would hold the program up.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status;
  if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return nullptr;
  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > maximumBytes) return nullptr;
  std::string bytes(size, '\0');
  if (!readFully(file.get(), bytes.data(), size)) return nullptr;
  return share(std::move(bytes));
}

bool create(const std::string& path, std::string_view bytes) {
  if (access(path.c_str(), F_OK) == 0) return false;
  @autoreleasepool {
    // Written under a name that nothing looks for, so that no reader ever sees half of it.
    const std::string draft = path + "." + utf8(NSUUID.UUID.UUIDString) + ".part";
    const Descriptor file(open(draft.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file) return false;
    const bool made = writeFully(file.get(), bytes) && moveToFreeName(draft, path);
    if (!made) unlink(draft.c_str());
    return made;
  }
}

bool makeFolder(const std::string& path) {
  @autoreleasepool {
    [NSFileManager.defaultManager createDirectoryAtPath:nsPath(path)
                            withIntermediateDirectories:YES
                                             attributes:@{
                                               NSFilePosixPermissions : @0700
                                             }
                                                  error:nil];
    return folderIdentity(path).has_value();
  }
}

std::string homeFolder() { return withoutTrailingSlash(utf8(NSHomeDirectory())); }

std::string desktopFolder() { return join(homeFolder(), "Desktop"); }

std::string downloadsFolder() { return folderOrInHome(NSDownloadsDirectory, "Downloads"); }

std::string documentsFolder() { return folderOrInHome(NSDocumentDirectory, "Documents"); }

std::string picturesFolder() { return folderOrInHome(NSPicturesDirectory, "Pictures"); }

std::string temporaryFolder() { return withoutTrailingSlash(utf8(NSTemporaryDirectory())); }

std::optional<std::string> screenshotLocation() {
  @autoreleasepool {
    NSUserDefaults* tool = [[NSUserDefaults alloc] initWithSuiteName:@"com.apple.screencapture"];
    NSString* location = [tool stringForKey:@"location"];
    if (location == nil) return std::nullopt;
    return utf8(location);
  }
}

std::vector<std::string> usualScreenshotFolders() { return {}; }

static bool isMarkedAndWhole(const std::string& path) {
  constexpr char mark[] = "com.apple.metadata:kMDItemIsScreenCapture";
  if (getxattr(path.c_str(), mark, nullptr, 0, 0, 0) <= 0) return false;
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status;
  if (!file || fstat(file.get(), &status) != 0 || status.st_size == 0) return false;
  // The tool marks a file when it is whole, but a copy made by a sync service may carry the mark
  // from the start. PNG, the usual format, tells its end.
  using namespace std::literals;
  constexpr std::string_view pngStart = "\x89PNG\r\n\x1A\n"sv;
  std::string start(pngStart.size(), '\0');
  if (!readFully(file.get(), start.data(), start.size(), 0) || start != pngStart) return true;
  return Image::fromFile(path).has_value();
}

// Nothing tells when a writer closes a file here, so one that is not whole is looked at again.
ScreenshotState screenshotState(const std::string& path) {
  return isMarkedAndWhole(path) ? ScreenshotState::finished : ScreenshotState::no;
}

}  // namespace marbelot::files
