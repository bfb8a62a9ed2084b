// Keeps the large texts of a store in files of their own, so that a small change never costs
// writing them again and never waits for one of them.
//
// In the store such a text is the dictionary {"textFile": 17, "bytes": 50000}; its UTF-8 bytes are
// the file "17.txt" of the store's folder for texts, both readable by their owner only. A file is
// never changed, and no number is used twice in a run. A text whose file is missing or of another
// length is left out when the store is read: it was still being written when the program was ended
// by force.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/value.h"

namespace marbelot {

// Used by one thread, except for stored().
class LargeTexts {
 public:
  // Longer texts get a file; that is some ten pages.
  static constexpr std::size_t longestInStore = 32 * 1024;
  // Writing this much takes a third of a frame; longer texts are left to a thread.
  static constexpr std::size_t longestWrittenAtOnce = std::size_t{8} << 20;

  // The folder is made when it is needed. `written` is called on any thread when the background is
  // done with a text.
  LargeTexts(std::string folder, std::function<void()> written);
  // Waits for what is still to be written and deleted.
  ~LargeTexts();

  // The value that was stored under `key`, with the texts in place of their references; none when
  // it is the reference of a text that is missing.
  std::optional<Value> restored(std::string_view key, const Value& stored);
  // Once everything has been restored: deletes the files that nothing refers to.
  void deleteOthers();

  // What to store in place of `value`. Its texts of up to 8 MB are on disk when this returns.
  Value outlined(std::string_view key, const Value& value);
  // Stands for everything that has been outlined so far.
  std::uint64_t state() const { return state_; }
  // The store has been written as it was at `state`: deletes what it no longer refers to. Any
  // thread.
  void stored(std::uint64_t state);

  // False while a text that is referred to could not be written; it is tried again when it is
  // outlined again.
  bool allWritten() const;
  // Waits for what is still to be written and deleted.
  void finish();

 private:
  struct File;
  using Files = std::vector<std::shared_ptr<File>>;

  std::string pathOf(std::uint64_t number) const;
  std::optional<Value> restoredPart(const Value& part, Files& used);
  std::shared_ptr<File> fileOf(std::uint64_t number, std::uint64_t bytes);
  Value outlinedPart(const Value& part, Files& used);
  void use(std::string_view key, Files used);
  void write(File& file) const;
  void inBackground(std::function<void()> work);
  void run();

  const std::string folder_;
  const std::function<void()> written_;
  std::map<const std::string*, std::shared_ptr<File>> files_;  // by their text
  std::map<std::string, Files, std::less<>> used_;             // by key
  std::uint64_t lastNumber_ = 0;
  std::uint64_t state_ = 0;

  mutable std::mutex mutex_;
  std::vector<std::pair<std::uint64_t, std::shared_ptr<File>>> unused_;  // since which state
  std::deque<std::function<void()>> work_;
  bool working_ = false;
  bool stopping_ = false;
  std::condition_variable wake_;
  std::condition_variable idle_;
  std::thread thread_;
};

}  // namespace marbelot
