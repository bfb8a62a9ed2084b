#include "platform/linux/folder_access.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "platform/files.h"
#include "platform/text.h"

namespace marbelot {
namespace {

namespace fs = std::filesystem;

// As a shell takes it for one word.
std::string quoted(const std::string& path) {
  std::string word = "'";
  for (const char c : path) word += c == '\'' ? "'\\''" : std::string(1, c);
  return text::sanitized(word + "'");
}

}  // namespace

FolderAccess examineAccess(const std::string& folder) {
  FolderAccess access;
  access.folder = folder;
  files::list(folder, &access.problem);
  std::error_code failed;
  fs::path at = fs::absolute(folder, failed);
  struct stat status {};
  bool missing = false;
  while (stat(at.c_str(), &status) != 0 && at.has_relative_path()) {
    missing = missing || errno == ENOENT;
    at = at.parent_path();
  }
  access.nearest = at;
  if (!missing && !access.problem.empty())
    access.atNearest = S_ISDIR(status.st_mode) ? FolderAccess::locked : FolderAccess::inTheWay;
  while (at.has_relative_path() && (faccessat(AT_FDCWD, at.c_str(), R_OK | X_OK, AT_EACCESS) != 0 ||
                                    !fs::is_directory(at, failed)))
    at = at.parent_path();
  access.openable = at;
  return access;
}

std::string accessAdvice(const FolderAccess& access, bool shownInFileManager) {
  const std::string folder = text::sanitized(access.folder);
  if (access.problem.empty())
    return shownInFileManager ? "" : folder + " can be read. There is no file manager to show it.";
  std::string advice = folder + ": " + access.problem + ". ";
  if (!shownInFileManager) advice += "There is no file manager to open. ";
  switch (access.atNearest) {
    case FolderAccess::nothing:
      return advice + (shownInFileManager ? "Make the folder, or save screenshots elsewhere."
                                          : "Make the folder: mkdir -p " + quoted(access.folder));
    case FolderAccess::locked:
      return advice + (shownInFileManager ? "Allow reading " + text::sanitized(access.nearest) + "."
                                          : "Allow reading: chmod u+rx " + quoted(access.nearest));
    case FolderAccess::inTheWay:
      return advice + "Move away " + text::sanitized(access.nearest) + ".";
  }
  return advice;
}

}  // namespace marbelot
