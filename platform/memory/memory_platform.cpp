#include "platform/memory/memory_platform.h"

#include <algorithm>
#include <filesystem>

#include "platform/files.h"
#include "platform/text.h"

namespace marbelot::memory {

std::string App::ask(const std::string& name, const std::vector<std::string>& arguments) const {
  for (const RemoteRequest& request : requests_) {
    if (request.name == name && request.arguments.size() == arguments.size())
      return request.answer(arguments);
  }
  return "there is no request " + name;
}

Task Queue::schedule(double seconds, double interval, std::function<void()> work) {
  auto token = std::make_shared<char>();
  timers_.push_back({now_ + seconds, interval, std::move(work), token});
  return Task(token);
}

Task Queue::after(double seconds, std::function<void()> work) {
  return schedule(seconds, 0, std::move(work));
}

Task Queue::every(double seconds, std::function<void()> work) {
  return schedule(seconds, seconds, std::move(work));
}

void Queue::drain() {
  while (!posted_.empty() || (!background_.empty() && !holdBackground)) {
    auto& from = posted_.empty() ? background_ : posted_;
    const auto work = std::move(from.front());
    from.pop_front();
    work();
  }
}

void Queue::advance(double seconds) {
  const double until = now_ + seconds;
  drain();
  for (;;) {
    std::erase_if(timers_, [](const Timer& timer) { return timer.token.expired(); });
    const auto next =
        std::min_element(timers_.begin(), timers_.end(),
                         [](const Timer& a, const Timer& b) { return a.due < b.due; });
    // Sums of intervals such as 0.05 fall a little beside their exact value.
    if (next == timers_.end() || next->due > until + 1e-9) break;
    now_ = std::max(now_, next->due);
    const auto work = next->work;
    if (next->interval > 0) {
      next->due += next->interval;
    } else {
      timers_.erase(next);
    }
    work();
    drain();
  }
  now_ = until;
}

std::vector<PasteboardChange> Clipboard::changesSince(std::int64_t count) {
  std::erase_if(untold_, [&](const PasteboardChange& change) { return change.count <= count; });
  return std::exchange(untold_, {});
}

std::int64_t Clipboard::replace(PasteboardContents contents) {
  contents_ = std::move(contents);
  untold_.push_back({++count_, contents_});
  return count_;
}

std::int64_t Clipboard::replaceAndAnnounce(PasteboardContents contents) {
  if (announces) {
    queue_.post([this] {
      if (handler_) handler_();
    });
  }
  return replace(std::move(contents));
}

std::optional<std::int64_t> Clipboard::write(SharedText text, bool concealed) {
  if (refuses) return std::nullopt;
  PasteboardContents contents;
  contents.text = std::move(text);
  contents.types = {"text/plain;charset=utf-8"};
  contents.concealed = concealed;
  return replaceAndAnnounce(std::move(contents));
}

std::optional<std::int64_t> Clipboard::write(const Image& image, bool concealed) {
  if (refuses || !image.isReadable()) return std::nullopt;
  PasteboardContents contents;
  contents.image = image;
  contents.types = {std::string(mimeType(image.format()))};
  contents.concealed = concealed;
  return replaceAndAnnounce(std::move(contents));
}

void Clipboard::copyElsewhere(PasteboardContents contents, bool announced) {
  replace(std::move(contents));
  if ((announced || announces) && handler_) handler_();
}

void Clipboard::copyElsewhere(const std::string& text, bool announced) {
  PasteboardContents contents;
  contents.text = share(text);
  contents.types = {"text/plain;charset=utf-8"};
  copyElsewhere(std::move(contents), announced);
}

void Clipboard::learn(PasteboardContents contents) {
  contents_ = std::move(contents);
  if (handler_) handler_();
}

std::optional<Value> Defaults::storedValue(std::string_view key) const {
  if (std::find(reads.begin(), reads.end(), key) == reads.end()) reads.emplace_back(key);
  const auto found = stored.find(key);
  return found == stored.end() ? std::nullopt : std::optional(found->second);
}

void Defaults::set(std::string_view key, Value value) {
  stored.insert_or_assign(std::string(key), std::move(value));
  ++writes;
}

namespace {
class Stream : public FolderStream {
 public:
  explicit Stream(Folders& folders) : folders_(folders) {}
  void check() override { ++folders_.checks; }
  bool isRefused() const override { return folders_.refusing; }
  std::shared_ptr<char> token = std::make_shared<char>();

 private:
  Folders& folders_;
};
}  // namespace

std::unique_ptr<FolderStream> Folders::watch(const std::string& folder,
                                             std::function<void()> changed) {
  if (refuses) return nullptr;
  watched.push_back(folder);
  auto stream = std::make_unique<Stream>(*this);
  streams_.emplace_back(stream->token, std::move(changed));
  return stream;
}

void Folders::fire() {
  for (const auto& [token, changed] : std::vector(streams_))
    if (token.lock()) changed();
}

Task Desktop::trash(std::vector<std::string> paths, std::function<void()> done) {
  return queue_.inBackground([] { return true; },
                             [this, paths = std::move(paths), done = std::move(done)](bool) {
                               std::error_code error;
                               for (const std::string& path : paths)
                                 std::filesystem::remove(path, error);
                               trashed.insert(trashed.end(), paths.begin(), paths.end());
                               done();
                             });
}

std::unique_ptr<Updater> UpdateList::startUpdater() {
  class Told : public Updater {
   public:
    explicit Told(UpdateList& list) : list_(list) {}
    void checkForUpdates() override { ++list_.checks; }
    void checkForUpdatesInBackground() override { ++list_.backgroundChecks; }
    void setAutomaticallyChecksForUpdates(bool on) override { list_.automatic = on; }
    void setUpdateCheckInterval(double seconds) override { list_.interval = seconds; }

   private:
    UpdateList& list_;
  };
  ++started;
  return std::make_unique<Told>(*this);
}

void Camera::Capture::end(const SharedBytes& picture, const std::string& problem) const {
  if (!isAlive()) return;
  if (picture) files::create(path, *picture);
  // A copy: what it calls may ask for another capture.
  const auto told = finished;
  told(problem);
}

Task Camera::capture(const std::vector<std::string>& arguments, const std::string& path,
                     std::function<void()> taken,
                     std::function<void(const std::string&)> finished) {
  auto token = std::make_shared<char>();
  captures.push_back({arguments, path, std::move(taken), std::move(finished), token});
  return Task(std::move(token));
}

std::optional<std::int64_t> Camera::frontWindow(std::int64_t pid) {
  const auto found = frontWindows.find(pid);
  return found == frontWindows.end() ? std::nullopt : std::optional(found->second);
}

bool Icon::setSymbol(const std::string& name, const std::string& text) {
  if (!symbolsAvailable) return false;
  symbols.push_back(name);
  description = text;
  return true;
}

void Icon::setMenu(std::shared_ptr<Menu> tree, MenuDelegate* owner) {
  menu = std::move(tree);
  delegate = owner;
  shown.sync(menu);
}

void Icon::open() {
  delegate->menuWillOpen();
  shown.open(*menu);
}

std::unique_ptr<Window> WindowList::create(WindowDescription description) {
  return std::make_unique<MemoryWindow>(*this, std::move(description));
}

namespace {

// Calls `seen` with each view, those that others contain included.
template <class Seen>
void forEachView(const std::vector<View>& views, Seen seen) {
  for (const View& view : views) {
    seen(view);
    if (const auto* container = std::get_if<Container>(&view.content))
      forEachView(container->views, seen);
    if (const auto* canvas = std::get_if<Canvas>(&view.content)) forEachView(canvas->views, seen);
  }
}

// Drops what nobody holds any more, then calls the rest.
template <class Handlers, class Call>
void callLive(Handlers& handlers, Call call) {
  std::erase_if(handlers, [](const auto& handler) { return handler.first.expired(); });
  for (const auto& [token, handler] : Handlers(handlers))
    if (token.lock()) call(handler);
}

}  // namespace

std::vector<WindowInfo> WindowList::visible() const {
  WindowInfo alert;
  alert.id = "alert";
  std::vector<WindowInfo> infos(dialogs_.open().size(), alert);
  for (MemoryWindow* window : live) {
    if (!window->shown) continue;
    WindowInfo info{
        window->description.id, window->description.title, window->at, window->isKey(), {}, window};
    forEachView(window->description.views, [&info](const View& view) {
      if (const auto* button = std::get_if<Button>(&view.content)) {
        info.buttons.push_back(
            {view.id, button->title.empty() ? button->symbol : button->title, button->enabled});
      }
    });
    infos.push_back(std::move(info));
  }
  return infos;
}

double WindowList::textWidth(const std::string& text, const Font& font) const {
  return static_cast<double>(text::characterCount(text)) * font.size * 0.6;
}

MemoryWindow* WindowList::find(const std::string& id) const {
  for (MemoryWindow* window : live)
    if (window->description.id == id) return window;
  return nullptr;
}

MemoryWindow::MemoryWindow(WindowList& list, WindowDescription made)
    : description(std::move(made)),
      at{0, 0, description.contentSize.width, description.contentSize.height},
      list_(list) {
  readTexts(description.views);
  list_.live.push_back(this);
}

MemoryWindow::~MemoryWindow() { std::erase(list_.live, this); }

void MemoryWindow::readTexts(const std::vector<View>& views) {
  forEachView(views, [this](const View& view) {
    if (const auto* label = std::get_if<Label>(&view.content)) texts[view.id] = share(label->text);
    if (const auto* area = std::get_if<TextArea>(&view.content)) texts[view.id] = share(area->text);
    if (const auto* button = std::get_if<Button>(&view.content))
      texts[view.id] = share(button->title);
  });
}

void MemoryWindow::show() {
  for (MemoryWindow* other : list_.live) other->key = false;
  shown = key = true;
  fading = false;
}

void MemoryWindow::hide() { shown = fading = key = grabs = false; }

void MemoryWindow::setOrigin(Point origin, bool isAnimated) {
  animated = isAnimated;
  setFrame({origin.x, origin.y, at.width, at.height});
}

void MemoryWindow::setFrame(const Rect& frame) {
  fading = false;
  if (std::exchange(at, frame) != frame && description.moved) description.moved();
}

bool MemoryWindow::grabKeyboard(std::string& leftOut) {
  leftOut.clear();
  return grabs = !list_.refusesGrab;
}

void MemoryWindow::setContent(Size contentSize, std::vector<View> views) {
  ++filled;
  description.views = std::move(views);
  description.contentSize = contentSize;
  at.width = contentSize.width;
  at.height = contentSize.height;
  texts.clear();
  concealed.clear();
  readTexts(description.views);
}

SharedText MemoryWindow::text(const std::string& viewId) const {
  const auto found = texts.find(viewId);
  return found == texts.end() ? share({}) : found->second;
}

const View* MemoryWindow::find(const std::string& viewId) const {
  const View* found = nullptr;
  forEachView(description.views, [&](const View& view) {
    if (view.id == viewId) found = &view;
  });
  return found;
}

bool MemoryWindow::press(const std::string& viewId) {
  const View* view = find(viewId);
  const auto* button = view ? std::get_if<Button>(&view->content) : nullptr;
  if (!button || !button->enabled) return false;
  if (description.pressed) description.pressed(viewId);
  return true;
}

void MemoryWindow::popUpMenu(const std::string& viewId, std::shared_ptr<Menu> menu,
                             std::function<void(const MenuItem&)> chosen) {
  popUpView = viewId;
  popUp = std::move(menu);
  popUpChosen = std::move(chosen);
}

std::string MemoryWindow::viewAt(Point point) const {
  std::string found;
  const auto look = [&](const auto& self, const std::vector<View>& views, Point origin) -> void {
    for (const View& view : views) {
      const Rect frame{origin.x + view.frame.x, origin.y + view.frame.y, view.frame.width,
                       view.frame.height};
      if (!frame.contains(point)) continue;
      if (!view.id.empty()) found = view.id;
      if (const auto* container = std::get_if<Container>(&view.content))
        self(self, container->views, frame.origin());
      if (const auto* canvas = std::get_if<Canvas>(&view.content))
        self(self, canvas->views, frame.origin());
    }
  };
  look(look, description.views, at.origin());
  return found;
}

void MemoryWindow::close() {
  hide();
  if (description.closed) description.closed();
}

bool MemoryWindow::pressKey(KeyEvent event) {
  return description.keyDown && description.keyDown(event);
}

Task ScreenList::onChange(std::function<void()> changed) {
  const auto token = std::make_shared<char>();
  changed_.emplace_back(token, std::move(changed));
  return Task(token);
}

void ScreenList::set(std::vector<Screen> now) {
  screens = std::move(now);
  callLive(changed_, [](const auto& changed) { changed(); });
}

Task Keyboard::addLocal(std::function<bool(const KeyEvent&)> pressed) {
  const auto token = std::make_shared<char>();
  local_.emplace_back(token, std::move(pressed));
  return Task(token);
}

Task Keyboard::addGlobal(std::function<void(const KeyEvent&)> pressed) {
  const auto token = std::make_shared<char>();
  global_.emplace_back(token, std::move(pressed));
  return Task(token);
}

bool Keyboard::pressHere(KeyEvent event) {
  bool taken = false;
  callLive(local_, [&](const auto& pressed) { taken = taken || pressed(event); });
  return taken;
}

void Keyboard::pressElsewhere(KeyEvent event) {
  callLive(global_, [&](const auto& pressed) { pressed(event); });
}

std::size_t Keyboard::locals() const {
  return static_cast<std::size_t>(std::count_if(
      local_.begin(), local_.end(), [](const auto& local) { return !local.first.expired(); }));
}

std::size_t Keyboard::globals() const {
  return static_cast<std::size_t>(std::count_if(
      global_.begin(), global_.end(), [](const auto& global) { return !global.first.expired(); }));
}

void DialogList::present(Alert alert, std::function<void(AlertAnswer)> answered) {
  const bool open = std::any_of(open_.begin(), open_.end(), [&alert](const Open& other) {
    return !alert.id.empty() && other.id == alert.id;
  });
  if (open) {
    raised.push_back(alert.id);
    return;
  }
  open_.push_back({alert.id, std::move(answered)});
  shown.push_back(std::move(alert));
}

void DialogList::answer(std::size_t button, const std::string& text) {
  if (open_.empty()) return;
  const auto answered = std::move(open_.front().answered);
  open_.pop_front();
  answered({button, text});
}

Task Recognizer::recognize(SharedBitmap picture, std::function<void(Recognition)> then) {
  pictures.push_back(std::move(picture));
  const auto token = std::make_shared<char>();
  asked_ = token;
  then_ = std::move(then);
  return Task(token);
}

bool Recognizer::isReading() const { return !asked_.expired(); }

void Recognizer::answer(Recognition recognition) {
  const auto then = std::exchange(then_, nullptr);
  if (isReading() && then) then(std::move(recognition));
}

void Recognizer::answer(std::vector<std::string> lines) {
  answer(Recognition{Recognition::Outcome::read, std::move(lines), {}});
}

std::unique_ptr<WebWindow> WebWindowList::open(WebWindowDescription description) {
  struct Open : WebWindow {
    Open(WebWindowList& list, WebWindowDescription made)
        : live(list.live), at(live.insert(live.end(), std::move(made))) {}
    ~Open() override { live.erase(at); }
    std::list<WebWindowDescription>& live;
    std::list<WebWindowDescription>::iterator at;
  };
  return std::make_unique<Open>(*this, std::move(description));
}

MenuItemRef itemAt(const Menu& menu, const std::vector<std::string>& titles) {
  const Menu* level = &menu;
  MenuItemRef found;
  for (const std::string& title : titles) {
    if (!level) return nullptr;
    const bool prefix = !title.empty() && title.back() == '*';
    const auto at = std::find_if(level->items.begin(), level->items.end(), [&](const auto& item) {
      return prefix ? item->title.starts_with(title.substr(0, title.size() - 1))
                    : item->title == title && !item->separator;
    });
    if (at == level->items.end()) return nullptr;
    found = *at;
    level = found->submenu.get();
  }
  return found;
}

}  // namespace marbelot::memory
