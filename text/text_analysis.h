// What menus show of a text, found once per text and kept.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "classification/classifier.h"
#include "platform/main_queue.h"
#include "platform/value.h"
#include "text/text_targets.h"

namespace marbelot {

struct TextAnalysis {
  ClipCategory category = ClipCategory::text;
  std::string language;  // of source code; empty when unknown
  std::string title;     // masked, on one line, in quotes, shortened in its middle
  // The masked beginning on one line, longer than the title, to tell apart texts that share one.
  std::string beginning;
  std::shared_ptr<const TextTargets> targets;  // what can be done with it; null when provisional
  bool provisional = false;  // not known yet; the title tells the size and nothing else

  // What stands before the title: "Python ", or nothing.
  std::string label() const { return language.empty() ? std::string() : language + " "; }
};

// Linear in the length of the text; safe on any thread.
TextAnalysis analyse(std::string_view text);

// For texts that would have the same title: of each, in quotes, the piece in which its beginning
// differs from all the others'; empty where it does not.
std::vector<std::string> titlesAtDifference(const std::vector<std::string_view>& beginnings);

// "812 bytes", "1.2 MB"; decimal units.
std::string byteCountTitle(std::size_t bytes);

// The analyses of the texts that are shown, by the identity of the text. Main thread only.
class TextAnalyses {
 public:
  explicit TextAnalyses(MainQueue& queue) : queue_(queue) {}

  // The analysis of the text. Short texts are analysed at once, as long as the present event has
  // time left; others in the background, one after another, with a provisional answer until then.
  std::shared_ptr<const TextAnalysis> of(const SharedText& text);

  // Lets go of what was found in texts that are gone.
  void forgetGone();

  // An analysis that was provisional is there.
  std::function<void()> onArrival;

 private:
  struct Entry {
    std::weak_ptr<const std::string> text;  // the address alone could be another text's by now
    std::shared_ptr<const TextAnalysis> analysis;
    std::uint64_t lastUse = 0;
  };
  bool affordable(std::size_t bytes);
  Entry& entryFor(const SharedText& text);
  void makeRoom();
  void startNext();

  MainQueue& queue_;
  std::unordered_map<const std::string*, Entry> entries_;
  std::deque<std::weak_ptr<const std::string>> waiting_;
  Task running_;
  bool busy_ = false;
  std::size_t spentBytes_ = 0;  // analysed on the main thread in the present event
  Task refill_;
  std::uint64_t uses_ = 0;
};

}  // namespace marbelot
