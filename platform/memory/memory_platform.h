// Every service of the seam kept in memory, with a clock that the test moves.
#pragma once

#include <deque>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "platform/memory/shown_menu.h"
#include "platform/platform.h"

namespace marbelot::memory {

class Queue : public MainQueue {
 public:
  Task after(double seconds, std::function<void()> work) override;
  Task every(double seconds, std::function<void()> work) override;
  void post(std::function<void()> work) override { posted_.push_back(std::move(work)); }
  void background(std::function<void()> work) override {
    ending ? work() : background_.push_back(std::move(work));
  }

  // Runs all posted and background work until there is none.
  void drain();
  // Moves the clock, running what becomes due in order.
  void advance(double seconds);
  double now() const override { return wall ? *wall : 1e9 + now_; }
  // Where the wall clock stands still; otherwise it goes with the timers'.
  std::optional<double> wall;
  // Background work is done at once: the end of the program waits for it.
  bool ending = false;
  // While held, background work waits, as on a busy machine.
  bool holdBackground = false;

 private:
  struct Timer {
    double due;
    double interval;  // 0: once
    std::function<void()> work;
    std::weak_ptr<void> token;
  };
  Task schedule(double seconds, double interval, std::function<void()> work);
  double now_ = 0;
  std::vector<Timer> timers_;
  std::deque<std::function<void()>> posted_;
  std::deque<std::function<void()>> background_;
};

class Clipboard : public Pasteboard {
 public:
  explicit Clipboard(MainQueue& queue) : queue_(queue) {}
  std::int64_t changeCount() override { return ++asked, count_; }
  PasteboardContents contents() override { return contents_; }
  std::vector<PasteboardChange> changesSince(std::int64_t count) override;
  using Pasteboard::write;
  std::optional<std::int64_t> write(SharedText text, bool concealed) override;
  std::optional<std::int64_t> write(const Image& image, bool concealed) override;
  bool announcesChanges() const override { return announces; }
  void setChangeHandler(std::function<void()> handler) override { handler_ = std::move(handler); }

  bool announces = false;  // every change, as some systems do
  int asked = 0;           // how often the change count was asked for

  // Another program copies; `announced`: this change is told in any case.
  void copyElsewhere(PasteboardContents contents, bool announced = false);
  void copyElsewhere(const std::string& text, bool announced = false);
  // What was there before is known only now.
  void learn(PasteboardContents contents);
  bool refuses = false;  // what the program writes

 private:
  std::int64_t replace(PasteboardContents contents);
  std::int64_t replaceAndAnnounce(PasteboardContents contents);
  MainQueue& queue_;
  std::int64_t count_ = 1;
  PasteboardContents contents_;
  std::vector<PasteboardChange> untold_;
  std::function<void()> handler_;
};

class Defaults : public UserDefaults {
 public:
  void set(std::string_view key, Value value) override;
  void reportProblem(const std::string& message) { report(message); }

  std::map<std::string, Value, std::less<>> stored;
  mutable std::vector<std::string> reads;  // keys in the order of their first reading
  int writes = 0;

 private:
  std::optional<Value> storedValue(std::string_view key) const override;
};

class Folders : public FolderEvents {
 public:
  std::unique_ptr<FolderStream> watch(const std::string& folder,
                                      std::function<void()> changed) override;
  void fire();  // tells every live stream
  std::vector<std::string> watched;
  int checks = 0;
  bool refuses = false;   // to watch at all
  bool refusing = false;  // to tell of changes, for now

 private:
  std::vector<std::pair<std::weak_ptr<void>, std::function<void()>>> streams_;
};

struct Notice {
  std::string title;
  std::string text;
};

class NoticeList : public Notices {
 public:
  void post(const std::string& title, const std::string& text) override {
    posted.push_back({title, text});
  }
  // The last text; empty when there is none.
  std::string last() const { return posted.empty() ? std::string() : posted.back().text; }
  std::vector<Notice> posted;
};

class Desktop : public Workspace {
 public:
  explicit Desktop(MainQueue& queue) : queue_(queue) {}
  void openPath(const std::string& path) override { opened.push_back(path); }
  using Workspace::openUrl;
  void openUrl(const std::string& url, const std::string& application) override {
    opened.push_back(application.empty() ? url : url + " in " + application);
  }
  void findApplications(const std::string& url,
                        std::function<void(std::vector<LinkApplication>)> found) override {
    ++searches;
    found(applications[url.substr(0, url.find(':'))]);
  }
  void openPrivacySettings(const std::string& folder,
                           std::function<void(const std::string&)> advise) override {
    privacyOpened.push_back(folder);
    if (!advice.empty()) advise(advice);
  }
  void addNote(const SharedText& text,
               std::function<void(const std::optional<std::string>&)> done) override {
    notes.push_back(*text);
    noted = std::move(done);
  }
  void reveal(const std::string& path) override { revealed.push_back(path); }
  [[nodiscard]] Task trash(std::vector<std::string> paths, std::function<void()> done) override;
  std::vector<std::string> opened, privacyOpened, revealed, trashed;
  std::map<std::string, std::vector<LinkApplication>> applications;  // by scheme
  int searches = 0;                                                  // for them
  std::vector<std::string> notes;
  std::function<void(const std::optional<std::string>&)> noted;  // of the last one
  std::string advice;  // to whoever opens the privacy settings

 private:
  MainQueue& queue_;
};

class Icon : public StatusItem {
 public:
  bool setSymbol(const std::string& name, const std::string& text) override;
  void setTitle(const std::string& text) override { title = text; }
  void setMenu(std::shared_ptr<Menu> tree, MenuDelegate* owner) override;
  void menuChanged() override {
    ++changes;
    shown.sync(menu);
  }
  void popUpMenu() override { open(); }
  void setNoHostHandler(std::function<void()> handler) override { noHost = std::move(handler); }

  std::optional<Rect> openMenuFrame() const override { return menuFrame; }
  bool wasClosedByKey() const override { return closedByKey; }

  void open();

  std::optional<Rect> menuFrame;
  bool closedByKey = false;

  bool symbolsAvailable = true;
  std::vector<std::string> symbols;  // as they were shown, the present one last
  std::string description, title;
  std::shared_ptr<Menu> menu;
  ShownMenu shown;
  MenuDelegate* delegate = nullptr;
  int changes = 0;
  std::function<void()> noHost;
};

class MemoryWindow;

class DialogList : public Dialogs {
 public:
  void chooseFolder(FolderPanel panel, std::function<void(const std::string&)> chosen) override {
    panels.push_back(std::move(panel));
    folderChosen = std::move(chosen);
  }
  void saveFile(FilePanel panel, std::function<void(const std::string&)> chosen) override {
    filePanels.push_back(std::move(panel));
    fileChosen = std::move(chosen);
  }
  std::vector<FilePanel> filePanels;
  std::function<void(const std::string&)> fileChosen;  // of the last panel
  std::vector<FolderPanel> panels;
  std::function<void(const std::string&)> folderChosen;  // of the last panel
  void present(Alert alert, std::function<void(AlertAnswer)> answered) override;
  // Answers the oldest open alert.
  void answer(std::size_t button, const std::string& text = {});
  std::vector<Alert> shown;
  std::vector<std::string> raised;  // ids of open ones that were asked for again

  struct Open {
    std::string id;
    std::function<void(AlertAnswer)> answered;
  };
  const std::deque<Open>& open() const { return open_; }

 private:
  std::deque<Open> open_;
};

class WindowList : public Windows {
 public:
  explicit WindowList(const DialogList& dialogs) : dialogs_(dialogs) {}
  std::unique_ptr<Window> create(WindowDescription description) override;
  std::vector<WindowInfo> visible() const override;
  // Every character is three fifths as wide as the font is large.
  double textWidth(const std::string& text, const Font& font) const override;
  // The live window of that id, or null.
  MemoryWindow* find(const std::string& id) const;
  std::vector<MemoryWindow*> live;
  bool refusesGrab = false;  // of the keyboard

 private:
  const DialogList& dialogs_;
};

class MemoryWindow : public Window {
 public:
  MemoryWindow(WindowList& list, WindowDescription made);
  ~MemoryWindow() override;
  void show() override;
  void showWithoutActivating() override { shown = true, fading = false; }
  void hide() override;
  void fadeOut() override { fading = true; }
  void center() override { ++centred; }
  bool isVisible() const override { return shown; }
  bool isKey() const override { return shown && key; }
  Rect frame() const override { return at; }
  void setOrigin(Point origin, bool isAnimated) override;
  void setFrame(const Rect& frame) override;
  bool grabKeyboard(std::string& leftOut) override;
  void performDrag() override { ++drags; }
  void setTitle(const std::string& title) override { description.title = title; }
  void setContent(Size contentSize, std::vector<View> views) override;
  void redraw(const std::string& viewId) override { ++redrawn[viewId]; }
  using Window::setText;
  void setText(const std::string& viewId, const SharedText& text, bool isConcealed) override {
    texts[viewId] = text;
    concealed[viewId] = isConcealed;
  }
  SharedText text(const std::string& viewId) const override;
  void focus(const std::string& viewId) override { focused = viewId; }
  bool press(const std::string& viewId) override;
  void popUpMenu(const std::string& viewId, std::shared_ptr<Menu> menu,
                 std::function<void(const MenuItem&)> chosen) override;
  std::string viewAt(Point point) const override;

  WindowDescription description;
  // The user closes it.
  void close();
  // The user presses a key in it. True when it was taken.
  bool pressKey(KeyEvent event);
  // The view with that id, however deep; null when there is none.
  const View* find(const std::string& viewId) const;

  Rect at;
  std::map<std::string, SharedText> texts;
  std::map<std::string, bool> concealed;
  int filled = 0;  // times that the content was set
  std::map<std::string, int> redrawn;
  std::string focused;
  bool shown = false;
  bool fading = false;
  bool key = false;
  bool animated = false;  // the last move
  bool grabs = false;     // the keyboard
  int centred = 0;
  int drags = 0;
  // The menu that was popped up last, with the view below which it stands.
  std::string popUpView;
  std::shared_ptr<Menu> popUp;
  std::function<void(const MenuItem&)> popUpChosen;

 private:
  void readTexts(const std::vector<View>& views);
  WindowList& list_;
};

class ScreenList : public Screens {
 public:
  std::vector<Screen> all() const override { return screens; }
  Point pointer() const override { return at; }
  Task onChange(std::function<void()> changed) override;
  void set(std::vector<Screen> now);

  std::vector<Screen> screens{{{0, 0, 1440, 900}, {0, 0, 1440, 875}, 1}};
  Point at{700, 400};

 private:
  std::vector<std::pair<std::weak_ptr<void>, std::function<void()>>> changed_;
};

class Keyboard : public KeyMonitors {
 public:
  Task addLocal(std::function<bool(const KeyEvent&)> pressed) override;
  Task addGlobal(std::function<void(const KeyEvent&)> pressed) override;
  // A key goes to a window of the program; true when a monitor took it away.
  bool pressHere(KeyEvent event);
  void pressElsewhere(KeyEvent event);
  std::size_t locals() const;
  std::size_t globals() const;

 private:
  std::vector<std::pair<std::weak_ptr<void>, std::function<bool(const KeyEvent&)>>> local_;
  std::vector<std::pair<std::weak_ptr<void>, std::function<void(const KeyEvent&)>>> global_;
};

// Captures that are under way until the test ends them.
class Camera : public ScreenCapture {
 public:
  struct Capture {
    std::vector<std::string> arguments;
    std::string path;
    std::function<void()> taken;
    std::function<void(const std::string& problem)> finished;
    std::weak_ptr<void> token;

    bool isAlive() const { return !token.expired(); }
    // The picture is saved there and then, unless it is null, and the tool ends.
    void end(const SharedBytes& picture, const std::string& problem = {}) const;
  };

  [[nodiscard]] Task capture(const std::vector<std::string>& arguments, const std::string& path,
                             std::function<void()> taken,
                             std::function<void(const std::string&)> finished) override;
  std::vector<RunningApplication> runningApplications() override { return applications; }
  void activate(std::int64_t pid) override { activated.push_back(pid); }
  std::optional<std::int64_t> frontWindow(std::int64_t pid) override;

  std::vector<Capture> captures;  // every one so far
  std::vector<RunningApplication> applications;
  std::map<std::int64_t, std::int64_t> frontWindows;  // by the program's id
  std::vector<std::int64_t> activated;
};

// What the updater that the program has started was told.
class UpdateList : public Updates {
 public:
  std::unique_ptr<Updater> startUpdater() override;
  int started = 0;
  int checks = 0, backgroundChecks = 0;
  std::optional<bool> automatic;
  std::optional<double> interval;  // seconds
};

class App : public Application {
 public:
  void terminate() override { terminated = true; }
  void setDockMenu(std::function<std::shared_ptr<Menu>()> build,
                   std::function<void(const MenuItem&)> chosen) override {
    dockMenu = std::move(build);
    dockChosen = std::move(chosen);
  }
  void serve(RemoteRequests asked) override { requests_ = std::move(asked); }
  // What another process would be answered.
  std::string ask(const std::string& name, const std::vector<std::string>& arguments = {}) const;
  bool terminated = false;
  std::function<std::shared_ptr<Menu>()> dockMenu;
  std::function<void(const MenuItem&)> dockChosen;

 private:
  RemoteRequests requests_;
};

// Reads nothing by itself: the test says what stands in a picture.
class Recognizer : public TextRecognizer {
 public:
  Task recognize(SharedBitmap picture, std::function<void(Recognition)> then) override;
  // Answers the request that came last, unless it was dropped.
  void answer(Recognition recognition);
  void answer(std::vector<std::string> lines);
  bool isReading() const;
  std::vector<SharedBitmap> pictures;  // as they were asked for

 private:
  std::weak_ptr<void> asked_;
  std::function<void(Recognition)> then_;
};

// Keeps the descriptions of the windows that are open.
class WebWindowList : public WebWindows {
 public:
  std::unique_ptr<WebWindow> open(WebWindowDescription description) override;
  std::list<WebWindowDescription> live;
};

struct MemoryPlatform {
  App application;
  Queue queue;
  Clipboard pasteboard{queue};
  Defaults defaults;
  Folders folderEvents;
  NoticeList notices;
  Desktop workspace{queue};
  Icon statusItem;
  DialogList dialogs;
  WindowList windows{dialogs};
  ScreenList screens;
  Keyboard keyMonitors;
  Camera screenCapture;
  Recognizer recognizer;
  WebWindowList webWindows;
  UpdateList updates;
  Platform platform{application,   queue,      pasteboard, defaults, folderEvents, notices,
                    workspace,     statusItem, windows,    dialogs,  screens,      keyMonitors,
                    screenCapture, recognizer, webWindows, updates};
};

// The item reached by its titles from the top; a title that ends in "*" matches by its beginning.
// Null when there is none.
MenuItemRef itemAt(const Menu& menu, const std::vector<std::string>& titles);

}  // namespace marbelot::memory
