// What a desktop supplies, in one place. Backends make it; it outlives the application object.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/image.h"
#include "platform/keyboard.h"
#include "platform/main_queue.h"
#include "platform/pasteboard.h"
#include "platform/screen_capture.h"
#include "platform/screens.h"
#include "platform/status_item.h"
#include "platform/text_recognizer.h"
#include "platform/updater.h"
#include "platform/user_defaults.h"
#include "platform/web_windows.h"
#include "platform/window.h"

namespace marbelot {

class FolderStream {
 public:
  virtual ~FolderStream() = default;
  // Looks whether the path has come to mean another folder without the system's telling, as on a
  // network's file system; watches that one then, and calls `changed`. For backends that watch
  // paths, there is nothing to look for.
  virtual void check() {}
  // Whether the system has no more means for telling of changes right now. `changed` is called
  // every second then, and once more when it tells of them again.
  virtual bool isRefused() const { return false; }
};

class FolderEvents {
 public:
  virtual ~FolderEvents() = default;
  // Calls `changed` whenever something in the folder may have changed, until the stream is dropped.
  // Several changes may come as one call. Null when the folder cannot be watched and never will be.
  virtual std::unique_ptr<FolderStream> watch(const std::string& folder,
                                              std::function<void()> changed) = 0;
};

// Every message of the program stands under this title, whatever its subject.
inline constexpr const char* noticeTitle = "Screenshot copied to clipboard";

class Notices {
 public:
  virtual ~Notices() = default;
  // Posts a notification and returns at once; lost silently where the desktop shows none.
  virtual void post(const std::string& title, const std::string& text) = 0;
};

// An application that can open a link.
struct LinkApplication {
  std::string id;    // what the workspace knows it by
  std::string name;  // in the user's language
  std::optional<Image> icon;
  bool isDefault = false;
};

class Workspace {
 public:
  virtual ~Workspace() = default;
  virtual void openPath(const std::string& path) = 0;
  // Opens the URL with the application of that id, or with the default one when it is empty.
  virtual void openUrl(const std::string& url, const std::string& application) = 0;
  void openUrl(const std::string& url) { openUrl(url, {}); }
  // Tells which applications can open the URL, on the main thread and perhaps before this returns:
  // the default one first, if there is one, each name once, this program never.
  virtual void findApplications(const std::string& url,
                                std::function<void(std::vector<LinkApplication>)> found) = 0;
  // Leads the user to where access to `folder` is granted: the system's privacy settings, or the
  // folder's properties in the file manager. Calls `advise` with one line for the user when there
  // is something to do that is not told there, or nothing that could be opened.
  virtual void openPrivacySettings(const std::string& folder,
                                   std::function<void(const std::string&)> advise) = 0;
  // Makes a note of the text in the system's program for notes and shows it. Tells on the main
  // thread, later: none when it is there, else what went wrong, empty when nobody knows.
  virtual void addNote(const SharedText& text,
                       std::function<void(const std::optional<std::string>& problem)> done) = 0;
  // Shows the file, selected, in the file manager.
  virtual void reveal(const std::string& path) = 0;
  // Moves files to the trash in the background, across file systems too; what cannot be moved stays
  // where it is. Calls `done` afterwards, unless the handle was dropped by then.
  [[nodiscard]] virtual Task trash(std::vector<std::string> paths, std::function<void()> done) = 0;
};

// What another process can ask of the running program: texts in, a text out. On the main thread.
struct RemoteRequest {
  std::string name;                    // e.g. "CopyEntry"
  std::vector<std::string> arguments;  // their names
  // Given as many texts as there are names; JSON, or an error for the user, empty when done.
  std::function<std::string(const std::vector<std::string>&)> answer;
  // The reply, an empty one, comes first: an open menu or a program that ends answers nobody.
  bool replyFirst = false;
};
using RemoteRequests = std::vector<RemoteRequest>;

class Application {
 public:
  virtual ~Application() = default;
  virtual void terminate() = 0;
  // The Dock icon's menu, asked for each time it is shown; systems without a Dock never ask.
  virtual void setDockMenu(std::function<std::shared_ptr<Menu>()> build,
                           std::function<void(const MenuItem&)> chosen) = 0;
  virtual void serve(RemoteRequests requests) = 0;
};

struct Platform {
  Application& application;
  MainQueue& queue;
  Pasteboard& pasteboard;
  UserDefaults& defaults;
  FolderEvents& folderEvents;
  Notices& notices;
  Workspace& workspace;
  StatusItem& statusItem;
  Windows& windows;
  Dialogs& dialogs;
  Screens& screens;
  KeyMonitors& keyMonitors;
  ScreenCapture& screenCapture;
  TextRecognizer& recognizer;
  WebWindows& webWindows;
  Updates& updates;
};

}  // namespace marbelot
