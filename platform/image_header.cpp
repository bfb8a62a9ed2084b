#include "platform/image_header.h"

#include <array>
#include <cstring>
#include <string>

namespace marbelot {
namespace {

class MemorySource final : public ByteSource {
 public:
  explicit MemorySource(std::string_view bytes) : bytes_(bytes) {}
  std::uint64_t size() const override { return bytes_.size(); }
  bool read(std::uint64_t offset, char* to, std::size_t count) const override {
    if (offset > bytes_.size() || count > bytes_.size() - offset) return false;
    std::memcpy(to, bytes_.data() + offset, count);
    return true;
  }

 private:
  std::string_view bytes_;
};

// Numbers of either byte order at any offset; what is not there reads as 0 and is remembered.
class Reader {
 public:
  explicit Reader(const ByteSource& source) : source_(source) {}

  std::uint32_t big(std::uint64_t offset, std::size_t bytes) const {
    const auto raw = load(offset, bytes);
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i) value = value << 8 | raw[i];
    return value;
  }
  std::uint32_t little(std::uint64_t offset, std::size_t bytes) const {
    const auto raw = load(offset, bytes);
    std::uint32_t value = 0;
    for (std::size_t i = bytes; i-- > 0;) value = value << 8 | raw[i];
    return value;
  }
  bool matches(std::uint64_t offset, std::string_view expected) const {
    std::array<char, 16> raw{};
    return expected.size() <= raw.size() && source_.read(offset, raw.data(), expected.size()) &&
           std::string_view(raw.data(), expected.size()) == expected;
  }
  std::uint64_t size() const { return source_.size(); }
  bool failed() const { return failed_; }

 private:
  std::array<unsigned char, 4> load(std::uint64_t offset, std::size_t bytes) const {
    std::array<unsigned char, 4> raw{};
    if (!source_.read(offset, reinterpret_cast<char*>(raw.data()), bytes)) failed_ = true;
    return raw;
  }

  const ByteSource& source_;
  mutable bool failed_ = false;
};

struct Size {
  std::int64_t width = 0;
  std::int64_t height = 0;
};

// https://www.w3.org/TR/png-3/#5DataRep. Checksums are left to the decoder; the walk to IEND tells
// a file that is still being written.
std::optional<Size> pngSize(const Reader& in) {
  if (!in.matches(8, std::string_view("\0\0\0\rIHDR", 8))) return std::nullopt;
  const Size size{in.big(16, 4), in.big(20, 4)};
  for (std::uint64_t at = 8; !in.failed();) {
    const std::uint64_t next = at + 12 + in.big(at, 4);
    if (in.failed() || next > in.size()) return std::nullopt;
    if (in.matches(at + 4, "IEND")) return size;
    at = next;
  }
  return std::nullopt;
}

struct Directory {
  Size size;
  bool turned = false;     // shown after a quarter turn
  std::uint64_t next = 0;  // where the offset of the next directory stands; 0: this is none
};

// TIFF 6.0: a directory's ImageWidth (256), ImageLength (257) and Orientation (274), SHORT or LONG.
// Its offset stands at `pointer`; all offsets count from `start`.
constexpr std::uint64_t firstPointer = 4;
Directory directoryAt(const Reader& in, std::uint64_t start, std::uint64_t pointer = firstPointer) {
  const bool bigEndian = in.matches(start, "MM");
  const auto number = [&](std::uint64_t offset, std::size_t bytes) {
    return bigEndian ? in.big(start + offset, bytes) : in.little(start + offset, bytes);
  };
  const std::uint64_t begin = number(pointer, 4);
  Directory directory;
  if (begin == 0) return directory;
  const auto entries = number(begin, 2);
  for (std::uint64_t i = 0; i < entries && !in.failed(); ++i) {
    const std::uint64_t entry = begin + 2 + 12 * i;
    const auto tag = number(entry, 2);
    const auto type = number(entry + 2, 2);
    if (type != 3 && type != 4) continue;
    const auto value = number(entry + 8, type == 3 ? 2 : 4);
    if (tag == 256) directory.size.width = value;
    if (tag == 257) directory.size.height = value;
    if (tag == 274) directory.turned = value >= 5 && value <= 8;
  }
  directory.next = begin + 2 + 12 * std::uint64_t{entries};
  number(directory.next, 4);  // the directory must be whole
  return directory;
}

Size shown(Size size, bool turned) { return turned ? Size{size.height, size.width} : size; }

std::optional<Size> tiffSize(const Reader& in) {
  const Directory directory = directoryAt(in, 0);
  return shown(directory.size, directory.turned);
}

// ITU-T T.81, annex B: segments up to the start of a frame.
std::optional<Size> jpegSize(const Reader& in) {
  bool turned = false;
  for (std::uint64_t at = 2; !in.failed();) {
    if (in.big(at, 1) != 0xFF) return std::nullopt;
    const auto marker = in.big(at + 1, 1);
    if (marker == 0xFF) {  // padding
      ++at;
      continue;
    }
    if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) {  // no length follows
      at += 2;
      continue;
    }
    const bool frame =
        marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
    if (frame) {
      const std::uint64_t components = in.big(at + 9, 1);
      if (in.big(at + 2, 2) != 8 + 3 * components) return std::nullopt;
      in.big(at + 9 + 3 * components, 1);
      return shown({in.big(at + 7, 2), in.big(at + 5, 2)}, turned);
    }
    if (marker == 0xE1 && in.matches(at + 4, std::string_view("Exif\0\0", 6))) {
      // Damage in there is no damage to the picture.
      const Reader exif = in;
      turned = directoryAt(exif, at + 10).turned;
    }
    const auto length = in.big(at + 2, 2);
    if (marker == 0xD9 || marker == 0xDA || length < 2) return std::nullopt;
    at += 2 + length;
  }
  return std::nullopt;
}

std::optional<Size> bmpSize(const Reader& in) {
  const auto header = in.little(14, 4);
  if (header == 12) return Size{in.little(18, 2), in.little(20, 2)};
  if (header < 16 || header > 1024) return std::nullopt;
  const std::int64_t height = static_cast<std::int32_t>(in.little(22, 4));
  return Size{static_cast<std::int32_t>(in.little(18, 4)), height < 0 ? -height : height};
}

// https://developers.google.com/speed/webp/docs/riff_container, RFC 6386 section 9.1
std::optional<Size> webpSize(const Reader& in) {
  if (in.matches(12, "VP8X")) return Size{in.little(24, 3) + 1LL, in.little(27, 3) + 1LL};
  if (in.matches(12, "VP8L")) {
    const auto bits = in.little(21, 4);
    if (in.big(20, 1) != 0x2F) return std::nullopt;
    return Size{(bits & 0x3FFF) + 1LL, (bits >> 14 & 0x3FFF) + 1LL};
  }
  if (in.matches(12, "VP8 ") && in.matches(23, "\x9D\x01\x2A"))
    return Size{in.little(26, 2) & 0x3FFF, in.little(28, 2) & 0x3FFF};
  return std::nullopt;
}

// ISO/IEC 14496-12 boxes: where the contents start and end.
struct Box {
  std::uint64_t start = 0;
  std::uint64_t end = 0;
};

std::optional<Box> findBox(const Reader& in, Box within, std::string_view type) {
  for (std::uint64_t at = within.start; at + 8 <= within.end && !in.failed();) {
    std::uint64_t length = in.big(at, 4);
    std::uint64_t header = 8;
    if (length == 1) {
      length = std::uint64_t{in.big(at + 8, 4)} << 32 | in.big(at + 12, 4);
      header = 16;
    } else if (length == 0) {
      length = within.end - at;
    }
    if (length < header || length > within.end - at) return std::nullopt;
    if (in.matches(at + 4, type)) return Box{at + header, at + length};
    at += length;
  }
  return std::nullopt;
}

// The property boxes of the primary item decide (ISO/IEC 23008-12): its extent, and a quarter turn.
std::optional<Size> heicSize(const Reader& in) {
  auto meta = findBox(in, {0, in.size()}, "meta");
  if (!meta) return std::nullopt;
  meta->start += 4;
  const auto primary = findBox(in, *meta, "pitm");
  const auto properties = findBox(in, *meta, "iprp");
  if (!primary || !properties) return std::nullopt;
  const auto container = findBox(in, *properties, "ipco");
  const auto association = findBox(in, *properties, "ipma");
  if (!container || !association) return std::nullopt;

  const auto item = in.big(primary->start + 4, in.big(primary->start, 1) == 0 ? 2 : 4);
  const std::size_t idBytes = in.big(association->start, 1) == 0 ? 2 : 4;
  const std::size_t indexBytes = in.big(association->start + 3, 1) & 1 ? 2 : 1;
  const auto items = in.big(association->start + 4, 4);
  std::uint64_t at = association->start + 8;
  for (std::uint32_t i = 0; i < items && at < association->end && !in.failed(); ++i) {
    const auto id = in.big(at, idBytes);
    const auto count = in.big(at + idBytes, 1);
    at += idBytes + 1;
    if (id != item) {
      at += count * indexBytes;
      continue;
    }
    Size size;
    bool turned = false;
    for (std::uint32_t k = 0; k < count; ++k) {
      const auto index =
          in.big(at + k * indexBytes, indexBytes) & (indexBytes == 2 ? 0x7FFF : 0x7F);
      std::uint64_t box = container->start;
      for (std::uint32_t skip = 1; skip < index && box + 8 <= container->end; ++skip) {
        const auto length = in.big(box, 4);
        if (length < 8) return std::nullopt;
        box += length;
      }
      if (index == 0 || box + 8 > container->end) continue;
      if (in.matches(box + 4, "ispe")) size = {in.big(box + 12, 4), in.big(box + 16, 4)};
      if (in.matches(box + 4, "irot")) turned = in.big(box + 8, 1) & 1;
    }
    return turned ? Size{size.height, size.width} : size;
  }
  return std::nullopt;
}

bool isHeic(const Reader& in) {
  if (!in.matches(4, "ftyp")) return false;
  const std::uint64_t end = std::min<std::uint64_t>(in.big(0, 4), 256);
  for (std::uint64_t at = 8; at + 4 <= end;
       at += at == 8 ? 8 : 4) {  // the minor version is no brand
    for (const std::string_view brand : {"heic", "heix", "heim", "heis"})
      if (in.matches(at, brand)) return true;
  }
  return false;
}

std::optional<ImageHeader> checked(ImageFormat format, std::optional<Size> size, const Reader& in) {
  if (!size || in.failed() || size->width <= 0 || size->height <= 0) return std::nullopt;
  if (size->width > maximumImagePixels / size->height) return std::nullopt;
  return ImageHeader{format, static_cast<int>(size->width), static_cast<int>(size->height)};
}

}  // namespace

std::optional<ImageHeader> imageHeader(const ByteSource& source) {
  const Reader in(source);
  if (in.matches(0, "\x89PNG\r\n\x1A\n")) return checked(ImageFormat::png, pngSize(in), in);
  if (in.matches(0, "\xFF\xD8\xFF")) return checked(ImageFormat::jpeg, jpegSize(in), in);
  if (in.matches(0, std::string_view("II*\0", 4)))
    return checked(ImageFormat::tiff, tiffSize(in), in);
  if (in.matches(0, std::string_view("MM\0*", 4)))
    return checked(ImageFormat::tiff, tiffSize(in), in);
  if (in.matches(0, "GIF87a") || in.matches(0, "GIF89a")) {
    in.big(12, 1);  // the screen descriptor must be whole
    return checked(ImageFormat::gif, Size{in.little(6, 2), in.little(8, 2)}, in);
  }
  if (in.matches(0, "RIFF") && in.matches(8, "WEBP"))
    return checked(ImageFormat::webp, webpSize(in), in);
  if (in.matches(0, "BM")) return checked(ImageFormat::bmp, bmpSize(in), in);
  if (isHeic(in)) return checked(ImageFormat::heic, heicSize(in), in);
  return std::nullopt;
}

std::optional<ImageHeader> largestPage(std::string_view bytes) {
  std::optional<ImageHeader> largest = imageHeader(bytes);
  if (!largest || largest->format != ImageFormat::tiff) return largest;
  const MemorySource source(bytes);
  const Reader in(source);
  // A file may name its own beginning as the next page, and so go on without an end.
  constexpr int mostPages = 100;
  std::uint64_t pointer = firstPointer;
  for (int page = 0; page < mostPages; ++page) {
    const Directory directory = directoryAt(in, 0, pointer);
    const auto found = checked(ImageFormat::tiff, shown(directory.size, directory.turned), in);
    if (in.failed() || directory.next == 0) break;
    if (found) {
      largest->width = std::max(largest->width, found->width);
      largest->height = std::max(largest->height, found->height);
    }
    pointer = directory.next;
  }
  return largest;
}

std::optional<ImageHeader> imageHeader(std::string_view bytes) {
  return imageHeader(MemorySource(bytes));
}

}  // namespace marbelot
