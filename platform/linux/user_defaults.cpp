#include "platform/linux/user_defaults.h"

#include <fcntl.h>
#include <rapidjson/writer.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "platform/descriptor.h"
#include "platform/files.h"
#include "platform/json.h"
#include "platform/text.h"

namespace marbelot {
namespace {

// What takes longer to write than half a frame belongs to another thread. A history of forty texts
// that are just not large is a third of this.
constexpr std::size_t largestWriteOnMain = std::size_t{4} << 20;
constexpr std::size_t largestFile = std::size_t{4} << 30;
// What rapidjson writes to: a buffered file that remembers whether all went well.
class FileStream {
 public:
  using Ch = char;
  explicit FileStream(int file) : file_(file) {}
  // The names that RapidJSON asks for. NOLINTBEGIN(readability-identifier-naming)
  void Put(char c) {
    if (used_ == buffer_.size()) Flush();
    buffer_[used_++] = c;
  }
  void Flush() {
    good_ = good_ && writeFully(file_, {buffer_.data(), used_});
    used_ = 0;
  }
  // NOLINTEND(readability-identifier-naming)
  bool good() const { return good_; }

 private:
  const int file_;
  std::array<char, 65536> buffer_;
  std::size_t used_ = 0;
  bool good_ = true;
};

using FileWriter = rapidjson::Writer<FileStream>;

void writeText(FileWriter& out, std::string_view text) {
  out.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

// The depth is that of what features store: lists of dictionaries of texts.
void writeValue(FileWriter& out, const Value& value) {
  if (const auto* flag = std::get_if<bool>(&value.data)) {
    out.Bool(*flag);
  } else if (const auto* whole = std::get_if<std::int64_t>(&value.data)) {
    out.Int64(*whole);
  } else if (const auto* number = std::get_if<double>(&value.data)) {
    out.Double(std::isfinite(*number) ? *number : 0);
  } else if (const auto* text = std::get_if<SharedText>(&value.data)) {
    writeText(out, **text);
  } else if (const auto* list = value.asList()) {
    out.StartArray();
    for (const Value& entry : *list) writeValue(out, entry);
    out.EndArray();
  } else if (const auto* dictionary = value.asDictionary()) {
    out.StartObject();
    for (const auto& [key, entry] : *dictionary) {
      writeText(out, key);
      writeValue(out, entry);
    }
    out.EndObject();
  }
}

// A settings file that is a link into somebody's collection of such files stays one.
std::string resolved(const std::string& path) {
  const std::unique_ptr<char, decltype(&free)> real(realpath(path.c_str(), nullptr), free);
  return real ? real.get() : path;
}

// Beside the settings file: "NAME.texts" for "NAME.json".
std::string textsFolder(const std::string& path) {
  const std::size_t dot = path.rfind(".json");
  return path.substr(0, dot) + ".texts";
}

std::size_t weight(const Value& value) {
  if (const auto* text = std::get_if<SharedText>(&value.data)) return (*text)->size() + 4;
  std::size_t sum = 8;
  if (const auto* list = value.asList())
    for (const Value& entry : *list) sum += weight(entry);
  if (const auto* dictionary = value.asDictionary())
    for (const auto& [key, entry] : *dictionary) sum += key.size() + weight(entry);
  return sum;
}

}  // namespace

std::string defaultsPath(const std::string& domain) {
  const char* configured = std::getenv("XDG_CONFIG_HOME");
  const std::string config =
      configured && *configured ? configured : files::join(files::homeFolder(), ".config");
  return files::join(files::join(config, "marbelot"), domain + ".json");
}

SharedText readDefaultsText(const std::string& path, std::string_view key) {
  const SharedBytes json = files::read(path, largestWriteOnMain);
  const auto root = json ? valueFromJson(*json) : std::nullopt;
  const auto* dictionary = root ? root->asDictionary() : nullptr;
  const Value* value = dictionary ? find(*dictionary, key) : nullptr;
  return value ? value->asText() : nullptr;
}

JsonDefaults::JsonDefaults(const std::string& path,
                           std::function<void(std::function<void()>)> onMain)
    : path_(resolved(path)),
      backgroundDone_([this, onMain = std::move(onMain), alive = std::weak_ptr<char>(alive_)] {
        onMain([this, alive] {
          if (alive.lock()) reportSaved();
        });
      }),
      texts_(textsFolder(path_), backgroundDone_) {
  load();
}

JsonDefaults::~JsonDefaults() {
  alive_.reset();
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  if (writer_.joinable()) writer_.join();
}

void JsonDefaults::load() {
  const SharedBytes json = files::read(path_, largestFile);
  struct stat status {};
  std::optional<Value> root;
  if (json) {
    root = valueFromJson(*json);
  } else if (stat(path_.c_str(), &status) != 0 && errno == ENOENT) {  // the first launch
    root = Value::Dictionary();
  }
  if (root && root->asDictionary()) return restore(*root->asDictionary());
  const std::string damaged = ".damaged " + text::fileTimestamp(text::now());
  const std::string aside = path_ + damaged;
  if (rename(path_.c_str(), aside.c_str()) == 0) {
    rename(textsFolder(path_).c_str(), (textsFolder(path_) + damaged).c_str());
    report("The settings were damaged and start afresh. The old file is kept as " +
           files::lastComponent(aside));
  } else {
    // What cannot be put aside must not be written over.
    mayWrite_ = false;
    report("The settings can be neither read nor replaced: " + files::lastComponent(path_));
  }
}

void JsonDefaults::restore(const Value::Dictionary& stored) {
  for (const auto& [key, value] : stored)
    if (auto whole = texts_.restored(key, value)) values_.insert_or_assign(key, std::move(*whole));
  texts_.deleteOthers();
  // Large texts that another version left in the file itself get their own before that is written.
  for (const auto& [key, value] : values_)
    outlined_.insert_or_assign(key, texts_.outlined(key, value));
  texts_.finish();
}

std::optional<Value> JsonDefaults::storedValue(std::string_view key) const {
  const auto found = values_.find(key);
  return found == values_.end() ? std::nullopt : std::optional(found->second);
}

void JsonDefaults::set(std::string_view key, Value value) {
  if (mayWrite_) outlined_.insert_or_assign(std::string(key), texts_.outlined(key, value));
  values_.insert_or_assign(std::string(key), std::move(value));
  if (mayWrite_) save();
}

void JsonDefaults::save() {
  std::size_t size = 0;
  for (const auto& [key, value] : outlined_) size += key.size() + weight(value);
  {
    std::unique_lock lock(mutex_);
    // A write that is under way must not end after a newer one.
    if (size > largestWriteOnMain || writing_ || pending_) {
      pending_ = {outlined_, texts_.state()};
      lock.unlock();
      if (!writer_.joinable()) writer_ = std::thread([this] { writeInBackground(); });
      wake_.notify_all();
      return;
    }
  }
  fileSaved_ = write(outlined_, texts_.state());
  reportSaved();
}

void JsonDefaults::writeInBackground() {
  std::unique_lock lock(mutex_);
  for (;;) {
    wake_.wait(lock, [this] { return pending_ || stopping_; });
    if (!pending_) return;
    const State state = *std::exchange(pending_, std::nullopt);
    writing_ = true;
    lock.unlock();
    fileSaved_ = write(state.outlined, state.texts);
    backgroundDone_();
    lock.lock();
    writing_ = false;
  }
}

bool JsonDefaults::write(const Values& outlined, std::uint64_t texts) {
  // Beside the file and renamed over it: whoever looks, and whatever ends this process, sees the
  // old state or the new one, whole.
  files::makeFolder(path_.substr(0, path_.rfind('/')));
  const std::string temporary = path_ + ".new";
  const Descriptor file(
      open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file || fchmod(file.get(), 0600) != 0) return false;
  auto stream = std::make_unique<FileStream>(file.get());
  FileWriter out(*stream);
  out.StartObject();
  for (const auto& [key, value] : outlined) {
    writeText(out, key);
    writeValue(out, value);
  }
  out.EndObject();
  stream->Put('\n');
  stream->Flush();
  if (stream->good() && rename(temporary.c_str(), path_.c_str()) == 0) {
    texts_.stored(texts);
    return true;
  }
  unlink(temporary.c_str());
  return false;
}

void JsonDefaults::reportSaved() {
  const bool failed = !fileSaved_ || !texts_.allWritten();
  if (failed && !saveFailed_) report("Couldn't save the settings and history: is the disk full?");
  saveFailed_ = failed;
}

}  // namespace marbelot
