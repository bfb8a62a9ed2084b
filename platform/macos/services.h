// What each file of the macOS backend makes. All main thread only.
#pragma once

#include <memory>

#include "platform/platform.h"

namespace marbelot {

std::unique_ptr<MainQueue> makeMainQueue();
std::unique_ptr<Pasteboard> makePasteboard();
// The program's own folder for what is neither a setting nor a document.
std::string supportFolder();
std::unique_ptr<UserDefaults> makeUserDefaults(MainQueue& queue);
std::unique_ptr<FolderEvents> makeFolderEvents();
std::unique_ptr<Notices> makeNotices();
std::unique_ptr<Workspace> makeWorkspace(MainQueue& queue);
std::unique_ptr<StatusItem> makeStatusItem(MainQueue& queue);
std::unique_ptr<Windows> makeWindows(MainQueue& queue);
std::unique_ptr<Dialogs> makeDialogs(MainQueue& queue);
std::unique_ptr<Screens> makeScreens();
std::unique_ptr<KeyMonitors> makeKeyMonitors();
std::unique_ptr<ScreenCapture> makeScreenCapture(MainQueue& queue);
std::unique_ptr<TextRecognizer> makeTextRecognizer(MainQueue& queue);
std::unique_ptr<Updates> makeUpdates(Dialogs& dialogs);
std::unique_ptr<WebWindows> makeWebWindows();

}  // namespace marbelot
