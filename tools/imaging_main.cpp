// marbelot-imaging ENCODING: reads an encoded image from standard input and writes it in one of the
// `encodings` to standard output. Exit status 0 done, 1 damaged or too large, 2 usage.
#include <libheif/heif.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <algorithm>
#include <array>
#include <memory>
#include <string>

#include "platform/image.h"
#include "platform/linux/imaging.h"

namespace {

constexpr std::array<std::string_view, 7> withTransparency{"png", "tiff", "webp", "ico",
                                                           "cur", "icns", "xpm"};

void limitResources() {
  const auto limit = [](auto resource, rlim_t most) {
    const rlimit both{most, most};
    ::setrlimit(resource, &both);
  };
  limit(RLIMIT_CORE, 0);  // a core dump would leave clipboard contents on the disk
  limit(RLIMIT_CPU, 60);  // seconds
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  limit(RLIMIT_AS, rlim_t{4} << 30);  // bytes; the sanitizers' shadow memory would not fit
#endif
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
}

bool readAll(std::string& bytes) {
  std::array<char, 1 << 16> buffer{};
  for (;;) {
    const ssize_t got = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (got <= 0) return got == 0;
    bytes.append(buffer.data(), static_cast<std::size_t>(got));
  }
}

bool writeAll(const QByteArray& bytes) {
  for (qsizetype at = 0; at < bytes.size();) {
    const ssize_t put =
        ::write(STDOUT_FILENO, bytes.data() + at, static_cast<std::size_t>(bytes.size() - at));
    if (put <= 0) return false;
    at += put;
  }
  return true;
}

QImage decodedHeic(const std::string& bytes) {
  const std::unique_ptr<heif_context, decltype(&heif_context_free)> context(heif_context_alloc(),
                                                                            heif_context_free);
  heif_image_handle* handle = nullptr;
  if (heif_context_read_from_memory_without_copy(context.get(), bytes.data(), bytes.size(), nullptr)
              .code != heif_error_Ok ||
      heif_context_get_primary_image_handle(context.get(), &handle).code != heif_error_Ok)
    return {};
  const std::unique_ptr<heif_image_handle, decltype(&heif_image_handle_release)> primary(
      handle, heif_image_handle_release);
  heif_image* decoded = nullptr;
  if (heif_decode_image(handle, &decoded, heif_colorspace_RGB, heif_chroma_interleaved_RGBA,
                        nullptr)
          .code != heif_error_Ok)
    return {};
  const std::unique_ptr<heif_image, decltype(&heif_image_release)> pixels(decoded,
                                                                          heif_image_release);
  int stride = 0;
  const auto* plane = heif_image_get_plane_readonly(decoded, heif_channel_interleaved, &stride);
  if (!plane) return {};
  const QImage view(plane, heif_image_get_width(decoded, heif_channel_interleaved),
                    heif_image_get_height(decoded, heif_channel_interleaved), stride,
                    QImage::Format_RGBA8888);
  return heif_image_handle_has_alpha_channel(handle)
             ? view.copy()
             : view.convertToFormat(QImage::Format_RGBX8888);
}

QImage decoded(const std::string& bytes, marbelot::ImageFormat format) {
  if (format == marbelot::ImageFormat::heic) return decodedHeic(bytes);
  QByteArray view = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
  QBuffer device(&view);
  device.open(QIODevice::ReadOnly);
  // Megabytes: the largest picture that its header may claim, at eight bytes a pixel.
  QImageReader::setAllocationLimit(static_cast<int>(marbelot::maximumImagePixels * 8 >> 20));
  QImageReader reader(&device);
  reader.setAutoTransform(true);
  return reader.read();
}

// For the formats without transparency: on white, as it looks on paper and in most documents.
QImage onWhite(const QImage& image) {
  if (!image.hasAlphaChannel()) return image;
  QImage opaque = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
  for (int y = 0; y < opaque.height(); ++y) {
    auto* line = reinterpret_cast<QRgb*>(opaque.scanLine(y));
    for (int x = 0; x < opaque.width(); ++x) {
      const int rest = 255 - qAlpha(line[x]);
      line[x] = qRgb(qRed(line[x]) + rest, qGreen(line[x]) + rest, qBlue(line[x]) + rest);
    }
  }
  return opaque.convertToFormat(QImage::Format_RGB32);
}

}  // namespace

int main(int argc, char** argv) {
  limitResources();
  const QCoreApplication application(argc, argv);  // the format plug-ins are found through it
  const std::string_view encoding = argc == 2 ? argv[1] : "";
  const auto isOneOf = [&](const auto& names) {
    return std::find(names.begin(), names.end(), encoding) != names.end();
  };
  if (!isOneOf(marbelot::encodings)) return 2;

  std::string input;
  if (!readAll(input)) return 1;
  const auto header = marbelot::imageHeader(std::string_view(input));
  if (!header) return 1;
  QImage image = decoded(input, header->format);
  if (image.isNull()) return 1;
  if (!isOneOf(withTransparency)) image = onWhite(image);

  QByteArray output;
  QBuffer device(&output);
  device.open(QIODevice::WriteOnly);
  QImageWriter writer(&device, QByteArray(argv[1]));
  if (encoding == "png") writer.setCompression(11);  // of 100; zlib's level 1
  if (encoding == "jpeg") writer.setQuality(92);
  if (encoding == "webp") writer.setQuality(100);  // lossless
  return writer.write(image) && writeAll(output) ? 0 : 1;
}
