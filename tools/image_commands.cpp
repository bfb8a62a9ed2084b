// The operations on pictures, for pipes and files: no running instance needed.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <functional>

#include "image/image_tag.h"
#include "image/operations.h"
#include "platform/descriptor.h"
#include "platform/image_codec.h"
#include "platform/text_recognizer.h"
#include "tools/command.h"

namespace marbelot::ctl {
namespace {

constexpr const char* unreadable = "the image cannot be read";

bool writeFile(const std::string& path, std::string_view bytes) {
  if (path == "-") return writeFully(STDOUT_FILENO, bytes);
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) return false;
  const bool written = writeFully(file, bytes);
  return close(file) == 0 && written;
}

int editImage(const std::string& op, const Image& image, const std::string& out) {
  const auto named = namedEdit(op);
  if (!named) {
    fail("there is no operation \"" + op + "\"");
    return wrongUsage;
  }
  const SharedBitmap pixels = decode(image);
  if (!pixels) return fail(unreadable);
  const Result result = named->edit.apply(*pixels);
  if (!result) {
    const std::string_view why = failureMessage(*named->operation, result, unreadable);
    return fail(why.empty() ? "the image would become too large" : std::string(why));
  }
  const SharedBytes png = encodePng(*result);
  return png && writeFile(out, *png) ? done : fail("cannot write " + out);
}

int readText(const Image& image) {
  const SharedBitmap pixels = decode(image);
  if (!pixels) return fail(unreadable);
  const Recognition found = recognizedText(*pixels);
  if (found.outcome != Recognition::Outcome::read)
    return fail("text recognition failed" + (found.advice.empty() ? "" : ": " + found.advice));
  if (found.lines.empty()) return fail("no text found in the image");
  std::string text;
  for (const std::string& line : found.lines) text += line + "\n";
  return writeFully(STDOUT_FILENO, text) ? done : fail("cannot write the result");
}

// Does the work on the image in the file.
int onImage(const std::string& file, const std::function<int(const Image&)>& work) {
  auto bytes = readBytes(file);
  if (!bytes) return fail("cannot read " + (file == "-" ? "standard input" : file));
  const auto image = Image::fromBytes(share(*std::move(bytes)));
  return image ? work(*image) : fail(unreadable);
}

int onOneImage(const Arguments& arguments, const std::function<int(const Image&)>& work) {
  if (arguments.words().size() > 1) return wrongUsage;
  return onImage(arguments.words().empty() ? "-" : arguments.words()[0], work);
}

int runEdit(const Arguments& arguments) {
  const auto& words = arguments.words();
  if (words.size() != 3) return wrongUsage;
  return onImage(words[1],
                 [&](const Image& image) { return editImage(words[0], image, words[2]); });
}

int runTag(const Arguments& arguments) {
  return onOneImage(arguments, [](const Image& image) {
    const auto tag = imageTag(image);
    if (!tag) return fail(unreadable);
    return writeFully(STDOUT_FILENO, *tag + "\n") ? done : fail("cannot write the result");
  });
}

int runRecognition(const Arguments& arguments) { return onOneImage(arguments, readText); }

}  // namespace

CommandGroup imageCommands() {
  static const Command commands[] = {
      {"image", "OP IN OUT",
       "e.g. border:red, shadow:grow:medium,\n"
       "emblem:circle:white, transparent:corner,\n"
       "rotate:90, flip:h, resize:0.5",
       runEdit},
      {"tag", "[FILE]", "an HTML <img> tag that holds the image", runTag},
      {"ocr", "[FILE]", "the text in the image; status 1 for none", runRecognition},
  };
  return {"On an image; \"-\" is standard input or output, and OUT becomes a PNG:", commands};
}

}  // namespace marbelot::ctl
