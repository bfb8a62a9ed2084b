// Folder events by FSEvents, delivered on the main thread.
#import <CoreServices/CoreServices.h>
#import <Foundation/Foundation.h>
#include <dispatch/dispatch.h>

#include "platform/macos/conversions.h"
#include "platform/macos/services.h"

namespace marbelot {
namespace {

// Short enough for a screenshot to seem instant; the first event of a burst comes without it.
constexpr CFTimeInterval kLatency = 0.05;  // seconds

class EventStream final : public FolderStream {
 public:
  explicit EventStream(std::function<void()> changed) : changed_(std::move(changed)) {}
  ~EventStream() override {
    if (stream_ == nullptr) return;
    if (started_) FSEventStreamStop(stream_);
    FSEventStreamInvalidate(stream_);
    FSEventStreamRelease(stream_);
  }
  EventStream(const EventStream&) = delete;
  EventStream& operator=(const EventStream&) = delete;

  bool start(const std::string& folder) {
    @autoreleasepool {
      FSEventStreamContext context = {0, this, nullptr, nullptr, nullptr};
      NSArray<NSString*>* paths = @[ nsPath(folder) ];
      stream_ =
          FSEventStreamCreate(kCFAllocatorDefault, &EventStream::happened, &context,
                              (__bridge CFArrayRef)paths, kFSEventStreamEventIdSinceNow, kLatency,
                              kFSEventStreamCreateFlagNoDefer | kFSEventStreamCreateFlagFileEvents);
    }
    if (stream_ == nullptr) return false;
    FSEventStreamSetDispatchQueue(stream_, dispatch_get_main_queue());
    started_ = FSEventStreamStart(stream_);
    return started_;
  }

 private:
  static void happened(ConstFSEventStreamRef, void* info, size_t, void*,
                       const FSEventStreamEventFlags*, const FSEventStreamEventId*) {
    // A copy, because the callee may drop the stream.
    const std::function<void()> changed = static_cast<EventStream*>(info)->changed_;
    changed();
  }

  std::function<void()> changed_;
  FSEventStreamRef stream_ = nullptr;
  bool started_ = false;
};

class FileSystemEvents final : public FolderEvents {
 public:
  std::unique_ptr<FolderStream> watch(const std::string& folder,
                                      std::function<void()> changed) override {
    auto stream = std::make_unique<EventStream>(std::move(changed));
    if (!stream->start(folder)) return nullptr;
    return stream;
  }
};

}  // namespace

std::unique_ptr<FolderEvents> makeFolderEvents() { return std::make_unique<FileSystemEvents>(); }

}  // namespace marbelot
