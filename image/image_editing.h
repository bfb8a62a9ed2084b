// The operations on pictures as actions: from a file, the clipboard or its history to the
// clipboard.
#pragma once

#include <deque>
#include <functional>
#include <optional>

#include "image/edit_request.h"
#include "platform/platform.h"
#include "shell/pending_copy.h"
#include "shell/shell.h"

namespace marbelot {

// Main thread only; everything it is given outlives it. The pixels are worked on in the background,
// one edit after the other, with the outcome that working at once would have had: an edit of the
// clipboard begins with what the edits before it make, and what somebody copies while an edit is
// under way stays on the clipboard, where the result would have been replaced by it.
class ImageEditing {
 public:
  // The picture in the history entry that the sender was made for, none when it is no picture.
  using HistoryImage = std::function<std::optional<Image>(const MenuItem& sender)>;
  // Takes what an edit made that is not to replace a newer copy.
  using Overtaken = std::function<void(const Image& result)>;

  ImageEditing(Platform& platform, Shell& shell, ActionTable& actions, HistoryImage historyImage,
               Overtaken overtaken);

 private:
  struct Job {
    const Operation* operation;
    std::shared_ptr<const EditRequest> request;
    std::optional<Image> entry;    // of the history
    PasteboardContents clipboard;  // what it held when the job was asked for
    PendingCopy copy;
    bool follows;  // nothing was copied between it and the job before it

    bool isOfClipboard() const;
    bool isConcealed() const { return isOfClipboard() && clipboard.concealed; }
  };
  struct Outcome {
    std::optional<Image> result;
    std::string message;  // empty: nothing is said
  };

  void edit(const Operation& operation, const MenuItem& sender);
  void startNext();
  void finish(Outcome outcome);
  void deliver(const Image& result, const std::string& message);
  static Outcome worked(const Job& job);

  Platform& platform_;
  Shell& shell_;
  const HistoryImage historyImage_;
  const Overtaken overtaken_;
  std::deque<Job> jobs_;  // the first one is being worked on
  Task working_;
};

}  // namespace marbelot
