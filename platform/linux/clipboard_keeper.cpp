#include "platform/linux/clipboard_keeper.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "platform/linux/helper_program.h"

namespace marbelot {
namespace {

// Flags in the first byte of the memory file; the rest is the text, or the image as it is encoded.
constexpr char isImage = 1, isConcealed = 2;

}  // namespace

Descriptor startClipboardKeeper(const ClipboardOffer& offer, const std::string& mark,
                                const std::string& display) {
  const SharedBytes bytes = offer.image ? offer.image->bytes() : offer.text;
  const auto kind =
      static_cast<char>((offer.image ? isImage : 0) | (offer.concealed ? isConcealed : 0));
  const Descriptor memory(::memfd_create("marbelot-kept", MFD_CLOEXEC));
  std::array<int, 2> ends{};
  if (!bytes || !memory || !writeFully(memory.get(), {&kind, 1}) ||
      !writeFully(memory.get(), *bytes) || ::pipe2(ends.data(), O_CLOEXEC) != 0)
    return {};
  Descriptor ours(ends[0]);
  const Descriptor theirs(ends[1]);

  const pid_t child = startProgram({.arguments = {helperPath("marbelot-keeper"), mark, display},
                                    .standard = {memory.get(), theirs.get(), ProgramStart::nowhere},
                                    .outlivesTerminal = true});
  return child >= 0 ? std::move(ours) : Descriptor();
}

std::optional<ClipboardOffer> keptOffer(int from) {
  struct stat status {};
  if (::fstat(from, &status) != 0 || status.st_size < 1 || ::lseek(from, 0, SEEK_SET) != 0)
    return std::nullopt;
  char kind = 0;
  std::string bytes(static_cast<std::size_t>(status.st_size - 1), '\0');
  if (!readFully(from, &kind, 1) || !readFully(from, bytes.data(), bytes.size()))
    return std::nullopt;
  const bool concealed = (kind & isConcealed) != 0;
  if ((kind & isImage) == 0) return ClipboardOffer{share(std::move(bytes)), {}, concealed};
  std::optional<Image> image = Image::fromBytes(share(std::move(bytes)));
  if (!image) return std::nullopt;
  return ClipboardOffer{nullptr, std::move(image), concealed};
}

}  // namespace marbelot
