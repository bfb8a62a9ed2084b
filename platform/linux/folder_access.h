// Why a folder cannot be read, and what its user can do about it.
#pragma once

#include <string>

namespace marbelot {

struct FolderAccess {
  std::string folder;
  std::string problem;   // of listing it, in the system's own words; empty: there is none
  std::string nearest;   // the folder, or as much of the way to it as there is
  std::string openable;  // the same, or as much as can be listed
  enum { nothing, locked, inTheWay } atNearest = nothing;
};

// Asks the file system, which may take its time.
FolderAccess examineAccess(const std::string& folder);

// One line: what is wrong, and what to do in the file manager or, where there is none, in a
// terminal. Empty when there is nothing to say.
std::string accessAdvice(const FolderAccess& access, bool shownInFileManager);

}  // namespace marbelot
