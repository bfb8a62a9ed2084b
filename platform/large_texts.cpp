#include "platform/large_texts.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <utility>

#include "platform/files.h"
#include "platform/text.h"

namespace marbelot {
namespace {

constexpr std::string_view fileKey = "textFile";
constexpr std::string_view bytesKey = "bytes";
constexpr std::string_view extension = ".txt";

struct Reference {
  std::uint64_t number;
  std::uint64_t bytes;
};

std::optional<Reference> referenceIn(const Value& value) {
  const Value::Dictionary* fields = value.asDictionary();
  if (!fields || fields->size() != 2) return std::nullopt;
  const Value* file = find(*fields, fileKey);
  const Value* bytes = find(*fields, bytesKey);
  const std::int64_t number = file ? file->asInteger().value_or(0) : 0;
  const std::int64_t size = bytes ? bytes->asInteger().value_or(0) : 0;
  if (number < 1 || size < 1) return std::nullopt;
  return Reference{static_cast<std::uint64_t>(number), static_cast<std::uint64_t>(size)};
}

// The number in a name that was given here, finished ("17.txt") or not ("17.txt.a1B2c3").
std::optional<std::uint64_t> numberIn(const std::string& name) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  const std::string_view rest(end, static_cast<std::size_t>(name.data() + name.size() - end));
  if (error != std::errc() || !rest.starts_with(extension)) return std::nullopt;
  return number;
}

}  // namespace

struct LargeTexts::File {
  std::uint64_t number = 0;
  SharedText text;
  int users = 0;
  enum State { wanted, beingWritten, written, failed, unwanted };
  std::atomic<State> state = wanted;
};

LargeTexts::LargeTexts(std::string folder, std::function<void()> written)
    : folder_(std::move(folder)), written_(std::move(written)) {}

LargeTexts::~LargeTexts() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  if (thread_.joinable()) thread_.join();
}

std::string LargeTexts::pathOf(std::uint64_t number) const {
  return files::join(folder_, std::to_string(number) + std::string(extension));
}

std::optional<Value> LargeTexts::restored(std::string_view key, const Value& stored) {
  Files used;
  std::optional<Value> value = restoredPart(stored, used);
  use(key, std::move(used));
  return value;
}

std::optional<Value> LargeTexts::restoredPart(const Value& part, Files& used) {
  if (const auto reference = referenceIn(part)) {
    auto file = fileOf(reference->number, reference->bytes);
    if (!file) return std::nullopt;
    Value text = file->text;
    used.push_back(std::move(file));
    return text;
  }
  if (const auto* list = part.asList()) {
    Value::List entries;
    for (const Value& entry : *list)
      if (auto value = restoredPart(entry, used)) entries.push_back(std::move(*value));
    return entries;
  }
  if (const auto* dictionary = part.asDictionary()) {
    Value::Dictionary fields;
    for (const auto& [name, field] : *dictionary)
      if (auto value = restoredPart(field, used)) fields.emplace_back(name, std::move(*value));
    return fields;
  }
  return part;
}

std::shared_ptr<LargeTexts::File> LargeTexts::fileOf(std::uint64_t number, std::uint64_t bytes) {
  for (const auto& [text, file] : files_)
    if (file->number == number) return file;
  lastNumber_ = std::max(lastNumber_, number);
  const SharedBytes read = files::read(pathOf(number), bytes);
  if (!read || read->size() != bytes || !text::isValid(*read)) return nullptr;
  auto file = std::make_shared<File>();
  file->number = number;
  file->text = read;
  file->state = File::written;
  files_[file->text.get()] = file;
  return file;
}

void LargeTexts::deleteOthers() {
  for (const std::string& name : files::list(folder_).value_or(std::vector<std::string>())) {
    const auto number = numberIn(name);
    const bool known = std::any_of(files_.begin(), files_.end(), [&](const auto& file) {
      return files::lastComponent(pathOf(file.second->number)) == name;
    });
    if (number && !known) ::unlink(files::join(folder_, name).c_str());
  }
}

Value LargeTexts::outlined(std::string_view key, const Value& value) {
  Files used;
  Value outline = outlinedPart(value, used);
  use(key, std::move(used));
  return outline;
}

Value LargeTexts::outlinedPart(const Value& part, Files& used) {
  if (const auto* list = part.asList()) {
    Value::List entries;
    entries.reserve(list->size());
    for (const Value& entry : *list) entries.push_back(outlinedPart(entry, used));
    return entries;
  }
  if (const auto* dictionary = part.asDictionary()) {
    Value::Dictionary fields;
    fields.reserve(dictionary->size());
    for (const auto& [name, field] : *dictionary)
      fields.emplace_back(name, outlinedPart(field, used));
    return fields;
  }
  const SharedText text = part.asText();
  if (!text || text->size() <= longestInStore) return part;
  std::shared_ptr<File>& file = files_[text.get()];
  if (!file) file = std::make_shared<File>();
  if (file->state == File::wanted || file->state == File::failed) {
    file->number = ++lastNumber_;
    file->text = text;
    file->state = File::beingWritten;
    if (text->size() <= longestWrittenAtOnce) {
      write(*file);
    } else {
      inBackground([this, file] {
        if (file->state != File::unwanted) write(*file);
        written_();
      });
    }
  }
  used.push_back(file);
  return Value::Dictionary{{std::string(fileKey), static_cast<std::int64_t>(file->number)},
                           {std::string(bytesKey), static_cast<std::int64_t>(text->size())}};
}

void LargeTexts::use(std::string_view key, Files used) {
  for (const auto& file : used) ++file->users;
  auto& before = used_.try_emplace(std::string(key)).first->second;
  std::swap(before, used);
  const std::lock_guard lock(mutex_);
  ++state_;
  for (const auto& file : used) {
    if (--file->users > 0) continue;
    files_.erase(file->text.get());
    unused_.emplace_back(state_, file);
  }
}

void LargeTexts::write(File& file) const {
  files::makeFolder(folder_);
  const bool written = files::create(pathOf(file.number), *file.text);
  file.state = written ? File::written : File::failed;
}

void LargeTexts::stored(std::uint64_t state) {
  Files gone;
  {
    const std::lock_guard lock(mutex_);
    std::erase_if(unused_, [&](const auto& unused) {
      if (unused.first > state) return false;
      gone.push_back(unused.second);
      return true;
    });
  }
  for (const auto& file : gone) {
    file->state = File::unwanted;
    // Comes after the writing of the same text.
    inBackground([path = pathOf(file->number)] { ::unlink(path.c_str()); });
  }
}

bool LargeTexts::allWritten() const {
  return std::none_of(files_.begin(), files_.end(),
                      [](const auto& file) { return file.second->state == File::failed; });
}

void LargeTexts::inBackground(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  work_.push_back(std::move(work));
  if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
  wake_.notify_all();
}

void LargeTexts::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    wake_.wait(lock, [this] { return stopping_ || !work_.empty(); });
    if (work_.empty()) return;
    const auto work = std::move(work_.front());
    work_.pop_front();
    working_ = true;
    lock.unlock();
    work();
    lock.lock();
    working_ = false;
    idle_.notify_all();
  }
}

void LargeTexts::finish() {
  std::unique_lock lock(mutex_);
  idle_.wait(lock, [this] { return work_.empty() && !working_; });
}

}  // namespace marbelot
