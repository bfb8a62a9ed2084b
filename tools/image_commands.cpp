// The operations on pictures, for pipes and files: no running instance needed.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "image/image_tag.h"
#include "image/operations.h"
#include "platform/descriptor.h"
#include "platform/image_codec.h"
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

}  // namespace

int runImageCommand(Arguments& arguments, bool& known) {
  const bool isTag = arguments.command() == "tag";
  known = isTag || arguments.command() == "image";
  const std::vector<std::string>& words = arguments.rest();
  if (!known || arguments.hasUnknownOptions() || (isTag ? words.size() > 1 : words.size() != 3))
    return wrongUsage;

  const std::string in = isTag ? (words.empty() ? "-" : words[0]) : words[1];
  auto bytes = readBytes(in);
  if (!bytes) return fail("cannot read " + (in == "-" ? std::string("standard input") : in));
  const auto image = Image::fromBytes(share(*std::move(bytes)));
  if (!image) return fail(unreadable);
  if (!isTag) return editImage(words[0], *image, words[2]);
  const auto tag = imageTag(*image);
  if (!tag) return fail(unreadable);
  return writeFully(STDOUT_FILENO, *tag + "\n") ? done : fail("cannot write the result");
}

}  // namespace marbelot::ctl
