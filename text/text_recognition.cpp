#include "text/text_recognition.h"

#include <utility>

#include "platform/image_codec.h"
#include "platform/text.h"

namespace marbelot {

TextRecognition::TextRecognition(Platform& platform, Shell& shell, ActionTable& actions,
                                 HistoryImage historyImage, Show show)
    : platform_(platform), shell_(shell), show_(std::move(show)) {
  actions.add("ocrClipboardImage", [this](const MenuItem&) {
    const PasteboardContents contents = platform_.pasteboard.contents();
    contents.image ? recognize(*contents.image, false, contents.concealed)
                   : shell_.notify("No image on the clipboard");
  });
  actions.add("ocrClipHistory:",
              [this, historyImage = std::move(historyImage)](const MenuItem& sender) {
                if (const auto image = historyImage(sender)) recognize(*image, false);
              });
  autoOCR.offerToggle(actions, shell, [this] {
    if (autoOCR) return;
    quiet_.reset();
    if (scan_ && scan_->quiet && !isDecoding_) end({});
  });
}

void TextRecognition::imageCopied(const Image& image, bool concealed) {
  if (autoOCR) recognize(image, true, concealed);
}

void TextRecognition::recognize(const Image& image, bool quiet, bool concealed) {
  (quiet ? quiet_ : asked_) = Scan{image, quiet, concealed};
  // What was asked for is not to be shown once more.
  if (!quiet && quiet_ && quiet_->image.isSame(image)) quiet_.reset();
  const bool makesWay = scan_ && (scan_->quiet || !quiet) && !isDecoding_;
  if (makesWay) {
    reading_.cancel();
    scan_.reset();
  }
  if (!scan_) startNext();
}

void TextRecognition::startNext() {
  scan_ = std::exchange(asked_ ? asked_ : quiet_, std::nullopt);
  if (!scan_) return;
  isDecoding_ = true;
  decoding_ = platform_.queue.inBackground([image = scan_->image] { return decode(image); },
                                           [this](SharedBitmap pixels) {
                                             isDecoding_ = false;
                                             startReading(std::move(pixels));
                                           });
}

void TextRecognition::startReading(SharedBitmap pixels) {
  const bool isOvertaken = asked_ || (scan_->quiet && quiet_);
  const bool isUnwanted = scan_->quiet && !autoOCR;
  if (isOvertaken || isUnwanted) return end({});
  if (!pixels) return end("Couldn't read the image");
  if (!scan_->quiet) shell_.notify("Scanning image for text…");
  reading_ = platform_.recognizer.recognize(
      std::move(pixels), [this](const Recognition& recognition) { finish(recognition); });
}

void TextRecognition::finish(const Recognition& recognition) {
  if (recognition.outcome != Recognition::Outcome::read)
    return end(recognition.advice.empty() ? "OCR failed" : "OCR failed: " + recognition.advice);
  std::string text;
  for (const std::string& line : recognition.lines) {
    if (&line != &recognition.lines.front()) text += '\n';
    text += line;
  }
  if (text::isAllBlank(text)) return end("No text found in the image");
  const Scan scan = *scan_;
  end({});
  show_(share(std::move(text)), scan.image, scan.concealed);
}

// Ends the scan that is under way; the message is for a user who asked for it.
void TextRecognition::end(const std::string& message) {
  const bool quiet = scan_->quiet;
  scan_.reset();
  reading_.cancel();
  if (!quiet && !message.empty()) shell_.notify(message);
  startNext();
}

}  // namespace marbelot
