// What we put on the clipboard, in every form that other programs may ask for.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/image.h"
#include "platform/linux/background_worker.h"

namespace marbelot {

// A text or an image.
struct ClipboardOffer {
  SharedText text;
  std::optional<Image> image;
  bool concealed = false;
};

// The type names under which other programs can ask for it, the best one first.
std::vector<std::string> offeredTypes(const ClipboardOffer& offer);
// Those that cost little to make: all but an image's conversions to other formats than PNG.
std::vector<std::string> keptTypes(const ClipboardOffer& offer);

// Makes the forms when they are asked for: conversions on a thread beside, each only once.
class OfferedForms {
 public:
  // With null bytes where the form cannot be had.
  using Done = std::function<void(SharedBytes)>;

  // `wake` is called on another thread when collect() has to be called on this one.
  explicit OfferedForms(std::function<void()> wake);
  ~OfferedForms();

  // Replaces the offer. Forms of the one before that are under way are still delivered.
  void set(ClipboardOffer offer);
  void clear() { contents_.reset(); }
  // Reads what the first request would have to read.
  void preload();
  // Null while nothing is offered.
  const ClipboardOffer* offer() const;

  // `type` is one of offeredTypes(). Calls `done` at once, or later in collect().
  void request(std::string_view type, Done done);
  void collect();
  // Whether somebody still waits for a conversion.
  bool isConverting() const { return !waiting_.empty(); }

 private:
  struct Contents;
  struct Waiting;

  void convert(std::string_view type, Done done);

  std::shared_ptr<Contents> contents_;
  std::vector<Waiting> waiting_;
  std::uint64_t lastTicket_ = 0;
  BackgroundWorker<SharedBytes> converter_;
};

}  // namespace marbelot
