#include "platform/memory/memory_platform.h"

#include <algorithm>

namespace marbelot::memory {

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
  if (announces)
    queue_.post([this] {
      if (handler_) handler_();
    });
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

std::optional<std::int64_t> Clipboard::write(const Image& image) {
  if (refuses || !image.isReadable()) return std::nullopt;
  PasteboardContents contents;
  contents.image = image;
  contents.types = {std::string(mimeType(image.format()))};
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

bool Desktop::trash(const std::string& path) {
  trashed.push_back(path);
  return true;
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
  ++builds;
}

std::unique_ptr<Window> WindowList::create(WindowDescription description) {
  return std::make_unique<MemoryWindow>(*this, std::move(description));
}

std::vector<WindowInfo> WindowList::visible() const {
  std::vector<WindowInfo> infos;
  for (const MemoryWindow* window : live)
    if (window->shown)
      infos.push_back(
          {window->description.id,
           window->description.title,
           {0, 0, window->description.contentSize.width, window->description.contentSize.height}});
  return infos;
}

MemoryWindow* WindowList::find(const std::string& id) const {
  for (MemoryWindow* window : live)
    if (window->description.id == id) return window;
  return nullptr;
}

MemoryWindow::MemoryWindow(WindowList& list, WindowDescription made)
    : description(std::move(made)), list_(list) {
  for (const View& view : description.views) texts[view.id] = share(view.text);
  list_.live.push_back(this);
}

MemoryWindow::~MemoryWindow() { std::erase(list_.live, this); }

SharedText MemoryWindow::text(const std::string& viewId) const {
  const auto found = texts.find(viewId);
  return found == texts.end() ? share({}) : found->second;
}

void MemoryWindow::close() {
  shown = false;
  if (description.closed) description.closed();
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
