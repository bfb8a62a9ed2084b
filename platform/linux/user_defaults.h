// User defaults as one JSON file per domain under the XDG config folder.
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "platform/large_texts.h"
#include "platform/user_defaults.h"

namespace marbelot {

// Where the domain's file is: $XDG_CONFIG_HOME/marbelot/DOMAIN.json.
std::string defaultsPath(const std::string& domain);

// The top-level text value of a JSON file, read afresh; null when there is none.
SharedText readDefaultsText(const std::string& path, std::string_view key);

class JsonDefaults : public UserDefaults {
 public:
  // `onMain` runs a closure on the main thread; it is used for trouble found by the writer.
  JsonDefaults(const std::string& path, std::function<void(std::function<void()>)> onMain);
  // Waits for a write that is still under way.
  ~JsonDefaults() override;

  void set(std::string_view key, Value value) override;

 private:
  using Values = std::map<std::string, Value, std::less<>>;
  struct State {
    Values outlined;
    std::uint64_t texts = 0;  // the large texts' state at that moment
  };

  std::optional<Value> storedValue(std::string_view key) const override;
  void load();
  void restore(const Value::Dictionary& stored);
  void save();
  bool write(const Values& outlined, std::uint64_t texts);
  void writeInBackground();
  void reportSaved();

  const std::string path_;
  std::shared_ptr<char> alive_ = std::make_shared<char>();
  const std::function<void()> backgroundDone_;  // any thread
  LargeTexts texts_;
  Values values_;
  Values outlined_;  // the same with references to the large texts: what the file holds
  std::atomic<bool> fileSaved_ = true;
  bool saveFailed_ = false;  // and told
  bool mayWrite_ = true;

  // The writer of files that are large without large texts. `pending_` is the newest state that it
  // has not taken yet.
  std::thread writer_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::optional<State> pending_;
  bool writing_ = false;
  bool stopping_ = false;
};

}  // namespace marbelot
