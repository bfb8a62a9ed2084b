// The operations on pictures, for pipes and files: no running instance needed.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "image/image_tag.h"
#include "image/operations.h"
#include "platform/descriptor.h"
#include "platform/image_codec.h"
#include "platform/text_recognizer.h"
#include "tools/arguments.h"

namespace marbelot::ctl {
namespace {

constexpr const char* unreadable = "the image cannot be read";

int fail(const std::string& message) {
  std::fprintf(stderr, "marbelotctl: %s\n", message.c_str());
  return failed;
}

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

}  // namespace

int runImageCommand(Arguments& arguments, bool& known) {
  const bool isEdit = arguments.command() == "image";
  const bool isOcr = arguments.command() == "ocr";
  known = isEdit || isOcr || arguments.command() == "tag";
  const std::vector<std::string>& words = arguments.rest();
  if (!known || arguments.hasUnknownOptions() || (isEdit ? words.size() != 3 : words.size() > 1))
    return wrongUsage;

  const std::string in = isEdit ? words[1] : words.empty() ? "-" : words[0];
  auto bytes = readBytes(in);
  if (!bytes) return fail("cannot read " + (in == "-" ? std::string("standard input") : in));
  const auto image = Image::fromBytes(share(*std::move(bytes)));
  if (!image) return fail(unreadable);
  if (isEdit) return editImage(words[0], *image, words[2]);
  if (isOcr) return readText(*image);
  const auto tag = imageTag(*image);
  if (!tag) return fail(unreadable);
  return writeFully(STDOUT_FILENO, *tag + "\n") ? done : fail("cannot write the result");
}

}  // namespace marbelot::ctl
