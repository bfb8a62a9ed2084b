// Files and folders. Stateless, safe on any thread. Paths are the system's own bytes, which need
// not be UTF-8; text::sanitized makes them fit for display.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/value.h"

namespace marbelot::files {

// Names in the folder, without "." and ".."; none when it cannot be listed, and then `problem` says
// why, in the system's own words.
std::optional<std::vector<std::string>> list(const std::string& folder,
                                             std::string* problem = nullptr);

struct FileInfo {
  double modified = 0;  // seconds since 1970
  double created = 0;   // likewise; the same as `modified` where the file system does not tell
  std::size_t bytes = 0;
  bool hidden = false;  // by its name, or by the flag that the Finder sets
};
// None unless it is a regular file (links are followed).
std::optional<FileInfo> info(const std::string& path);
// Tells a folder from another one that takes its place.
struct FolderIdentity {
  std::uint64_t device = 0;
  std::uint64_t number = 0;  // on the device, which may give it to another folder later
  double created = 0;        // seconds since 1970; 0 where the file system does not tell
  bool operator==(const FolderIdentity&) const = default;
};
// None unless it is a folder (links are followed).
std::optional<FolderIdentity> folderIdentity(const std::string& path);
inline bool exists(const std::string& path) { return info(path).has_value(); }
// Whether anything has that name: a folder, a pipe or a link that leads nowhere, too.
bool isTaken(const std::string& path);

// Null when it cannot be read whole or is larger than `maximumBytes`.
SharedBytes read(const std::string& path, std::size_t maximumBytes);

// Makes a new file, readable by its owner only, whole or not at all. False when the name is taken
// or it cannot be written.
bool create(const std::string& path, std::string_view bytes);

// Makes the file hold these bytes, whole or not at all; a new one is readable by its owner only,
// one that was there keeps its mode. False when it cannot be written; then it is as it was.
bool replace(const std::string& path, std::string_view bytes);

// Makes the folder with those above it; folders it makes are for their owner only. True when the
// folder is there afterwards.
bool makeFolder(const std::string& path);

std::string join(const std::string& folder, const std::string& name);
// The last path component, slashes behind it aside.
std::string lastComponent(const std::string& path);
// The extension without its dot, its ASCII letters lower-cased; empty when there is none.
std::string lowercasedExtension(const std::string& name);
bool hasHiddenName(const std::string& path);
// Whether the extension is that of a picture as screenshot tools and this program save them.
bool isImageName(const std::string& name);
// "~" and "~/…" in the home folder, "~user/…" in that user's; anything else as it is.
std::string expandingTilde(const std::string& path);

std::string homeFolder();
std::string desktopFolder();
// The user's folder of downloads, or "Downloads" in the home folder.
std::string downloadsFolder();
// The user's folder of documents, or "Documents" in the home folder.
std::string documentsFolder();
// The user's pictures folder, or "Pictures" in the home folder.
std::string picturesFolder();
// Emptied by the system at some time; private to the user.
std::string temporaryFolder();

// The screenshot tool's own setting of where it saves; none when nothing is set.
std::optional<std::string> screenshotLocation();
// Where the desktop's own screenshot tools save as long as nothing is set, the best guess first.
// Such a folder need not exist: some are made for the first screenshot. Empty where that is simply
// the desktop folder.
std::vector<std::string> usualScreenshotFolders();

enum class ScreenshotState {
  no,            // not a screenshot, or not marked as one yet
  beingWritten,  // its writer has it open; that can still be so when an event tells of its closing
  finished,
};
// Whether the system's screenshot tool made the file.
ScreenshotState screenshotState(const std::string& path);

}  // namespace marbelot::files
