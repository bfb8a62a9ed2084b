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
  const PendingCopy copy(platform_.pasteboard, shell_);
  const bool follows = !jobs_.empty() && jobs_.back().copy.replaced() == copy.replaced();
  jobs_.push_back({&operation, editRequest(sender), historyImage_(sender),
                   platform_.pasteboard.contents(), copy, follows});
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
  const Job& made = jobs_.front();
  const PendingCopy copy = made.copy;
  if (copy.keepIfOvertaken(result, made.isConcealed(), message, overtaken_)) return;
  const auto written =
      copy.write(result, made.isConcealed(),
                 made.isOfClipboard() ? message : message + " — copied to clipboard");
  if (!written) return;
  for (Job& job : jobs_)
    if (job.copy.replaced() == copy.replaced()) job.copy.follow(*written);
}

}  // namespace marbelot
