#include "image/image_editing.h"

#include <utility>

#include "platform/image_codec.h"

namespace marbelot {

ImageEditing::ImageEditing(Platform& platform, Shell& shell, ActionTable& actions,
                           HistoryImage historyImage, Overtaken overtaken)
    : platform_(platform),
      shell_(shell),
      historyImage_(std::move(historyImage)),
      overtaken_(std::move(overtaken)) {
  for (const Operation& operation : operations()) {
    actions.add(std::string(operation.selector),
                [this, &operation](const MenuItem& sender) { edit(operation, sender); });
  }
}

bool ImageEditing::Job::isOfClipboard() const {
  return std::holds_alternative<EditClipboard>(request->source);
}

void ImageEditing::edit(const Operation& operation, const MenuItem& sender) {
  const std::int64_t changeCount = platform_.pasteboard.changeCount();
  const bool follows = !jobs_.empty() && jobs_.back().changeCount == changeCount;
  jobs_.push_back({&operation, editRequest(sender), historyImage_(sender),
                   platform_.pasteboard.contents(), changeCount, follows});
  if (jobs_.size() == 1) startNext();
}

void ImageEditing::startNext() {
  if (jobs_.empty()) return;
  working_ = platform_.queue.inBackground([job = jobs_.front()] { return worked(job); },
                                          [this](Outcome outcome) { finish(std::move(outcome)); });
}

ImageEditing::Outcome ImageEditing::worked(const Job& job) {
  const std::string unreadable =
      job.isOfClipboard() ? "No image on clipboard" : "Couldn't read that image";
  const auto* file = std::get_if<EditFile>(&job.request->source);
  const std::optional<Image> image = file                  ? Image::fromFile(file->path)
                                     : job.isOfClipboard() ? job.clipboard.image
                                                           : job.entry;
  const SharedBitmap pixels = image ? decode(*image) : nullptr;
  const auto edit = pixels ? job.operation->edit(job.request->param) : std::nullopt;
  if (!edit) return {std::nullopt, unreadable};
  Result result = edit->apply(*pixels);
  if (!result)
    return {std::nullopt, std::string(failureMessage(*job.operation, result, unreadable))};
  return {Image::fromPixels(std::make_shared<const Bitmap>(std::move(*result))), edit->message};
}

void ImageEditing::finish(Outcome outcome) {
  const Job job = jobs_.front();
  if (outcome.result) {
    deliver(*outcome.result, outcome.message);
  } else if (!outcome.message.empty()) {
    shell_.notify(outcome.message);
  }
  jobs_.pop_front();
  if (!jobs_.empty() && jobs_.front().follows) {
    jobs_.front().clipboard =
        outcome.result ? PasteboardContents{nullptr, outcome.result, {}, job.isConcealed()}
                       : job.clipboard;
  }
  startNext();
}

void ImageEditing::deliver(const Image& result, const std::string& message) {
  const std::int64_t replaced = jobs_.front().changeCount;
  const bool concealed = jobs_.front().isConcealed();
  if (platform_.pasteboard.changeCount() != replaced) {
    if (concealed) return shell_.notify(overtakenMessage);
    overtaken_(result);
    shell_.notify(message + keptInHistory);
    return;
  }
  const auto written = platform_.pasteboard.write(result, concealed);
  shell_.confirmCopy(written.has_value(),
                     jobs_.front().isOfClipboard() ? message : message + " — copied to clipboard");
  if (!written) return;
  for (Job& job : jobs_)
    if (job.changeCount == replaced) job.changeCount = *written;
}

}  // namespace marbelot
