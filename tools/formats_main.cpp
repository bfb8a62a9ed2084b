// marbelot-formats: what marbelot-imaging leaves to the toolkit and other libraries.
#include <libheif/heif.h>
#include <poppler-qt6.h>

#include <QBuffer>
#include <QColorSpace>
#include <QCoreApplication>
#include <QImage>
#include <QImageIOHandler>
#include <QImageReader>
#include <QImageWriter>
#include <QTransform>
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/descriptor.h"
#include "platform/fast_path.h"
#include "platform/image.h"
#include "platform/linux/color_transform.h"
#include "platform/linux/imaging.h"
#include "platform/linux/pixel_rows.h"
#include "tools/cmyk_jpeg.h"
#include "tools/imaging_process.h"

namespace {

constexpr std::array<std::string_view, 7> withTransparency{"png", "tiff", "webp", "ico",
                                                           "cur", "icns", "xpm"};

// The colours that the camera noted.
QColorSpace heicColors(const heif_image_handle* handle) {
  QByteArray profile(static_cast<qsizetype>(heif_image_handle_get_raw_color_profile_size(handle)),
                     Qt::Uninitialized);
  if (profile.isEmpty() ||
      heif_image_handle_get_raw_color_profile(handle, profile.data()).code != heif_error_Ok)
    return {};
  return QColorSpace::fromIccProfile(profile);
}

QImage decodedHeic(std::string_view bytes) {
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
  QImage image = heif_image_handle_has_alpha_channel(handle)
                     ? view.copy()
                     : view.convertToFormat(QImage::Format_RGBX8888);
  image.setColorSpace(heicColors(handle));
  return image;
}

QImage upright(const QImage& image, QImageIOHandler::Transformations how) {
  const QImage mirrored = image.mirrored(how.testFlag(QImageIOHandler::TransformationMirror),
                                         how.testFlag(QImageIOHandler::TransformationFlip));
  return how.testFlag(QImageIOHandler::TransformationRotate90)
             ? mirrored.transformed(QTransform().rotate(90))
             : mirrored;
}

QImage decoded(std::string_view bytes, marbelot::ImageFormat format) {
  if (format == marbelot::ImageFormat::heic) return decodedHeic(bytes);
  QByteArray view = QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size()));
  QBuffer device(&view);
  device.open(QIODevice::ReadOnly);
  // Megabytes: the largest picture that its header may claim, at eight bytes a pixel.
  QImageReader::setAllocationLimit(static_cast<int>(marbelot::maximumImagePixels * 8 >> 20));
  QImageReader reader(&device);
  if (format == marbelot::ImageFormat::jpeg) {
    if (const QImage inks = decodedCmykJpeg(bytes); !inks.isNull())
      return upright(inks, reader.transformation());
  }
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

bool writePixels(QImage image) {
  auto bitmap = marbelot::outputBitmap(image.width(), image.height());
  if (!bitmap) return false;
  const QByteArray profile = image.colorSpace().iccProfile();
  const bool isGray = image.pixelFormat().colorModel() == QPixelFormat::Grayscale;
  const auto transform = marbelot::ColorTransform::fromProfile(
      {profile.data(), static_cast<std::size_t>(profile.size())}, isGray);
  const bool deep = image.depth() > 32;
  image.convertTo(deep && transform && !isGray ? QImage::Format_RGBA64 : QImage::Format_RGBA8888);
  std::vector<std::uint8_t> samples(static_cast<std::size_t>(image.width()) * 4);
  std::uint8_t* const row = samples.data();
  for (int y = 0; y < image.height(); ++y) {
    const uchar* const line = image.constScanLine(y);
    if (transform && image.format() == QImage::Format_RGBA64) {
      transform->apply(reinterpret_cast<const std::uint16_t*>(line), row, image.width());
    } else {
      std::memcpy(row, line, samples.size());
      if (transform) transform->apply(row, image.width());
    }
    marbelot::premultiply(row, bitmap->row(y), image.width());
  }
  marbelot::finishStreaming();
  return true;
}

// The first page, at two pixels a point or as large as fits; what nothing is drawn on stays clear.
QImage firstPage(std::string_view pdf) {
  const auto document = Poppler::Document::loadFromData(
      QByteArray::fromRawData(pdf.data(), static_cast<qsizetype>(pdf.size())));
  if (!document || document->isLocked()) return {};
  const auto page = document->page(0);
  if (!page) return {};
  document->setRenderHint(Poppler::Document::Antialiasing);
  document->setRenderHint(Poppler::Document::TextAntialiasing);
  document->setRenderHint(Poppler::Document::IgnorePaperColor);
  constexpr double pointsPerInch = 72, pixelsPerPoint = 2, largestSide = 16384;
  const double side = std::max(page->pageSizeF().width(), page->pageSizeF().height());
  const double scale = std::min(pixelsPerPoint, largestSide / side);
  return page->renderToImage(scale * pointsPerInch, scale * pointsPerInch);
}

bool writeEncoded(QImage image, std::string_view encoding, bool transparency) {
  if (!transparency) image = onWhite(image);
  QByteArray output;
  QBuffer device(&output);
  device.open(QIODevice::WriteOnly);
  QImageWriter writer(&device,
                      QByteArray(encoding.data(), static_cast<qsizetype>(encoding.size())));
  if (encoding == "png") writer.setCompression(11);  // of 100; zlib's level 1
  if (encoding == "jpeg") writer.setQuality(92);
  if (encoding == "webp") writer.setQuality(100);  // lossless
  return writer.write(image) &&
         marbelot::writeFully(STDOUT_FILENO,
                              {output.data(), static_cast<std::size_t>(output.size())});
}

}  // namespace

int main(int argc, char** argv) {
  marbelot::limitResources();
  const std::string_view task = argc == 2 ? argv[1] : "";
  const auto isOneOf = [&](const auto& names) {
    return std::find(names.begin(), names.end(), task) != names.end();
  };
  const bool toPixels = task == marbelot::pixelsTask;
  if (task == marbelot::pdfTask) {
    const QCoreApplication application(argc, argv);
    const QImage page = firstPage(marbelot::standardInput());
    return !page.isNull() && writePixels(page) ? 0 : 1;
  }
  if (!toPixels && !isOneOf(marbelot::encodings)) return 2;

  const std::string_view bytes = marbelot::standardInput();
  const auto header = marbelot::imageHeader(bytes);
  if (!header) return 1;
  const QCoreApplication application(argc, argv);  // the format plug-ins are found through it
  const QImage image = decoded(bytes, header->format);
  if (image.isNull()) return 1;
  const bool done =
      toPixels ? writePixels(image) : writeEncoded(image, task, isOneOf(withTransparency));
  return done ? 0 : 1;
}
