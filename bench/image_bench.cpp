// The operations on a screenshot of 3840 by 2160, beside the libraries one would use instead. Best
// of many turns, in processor time, of all threads where there are several. "x" is the time over
// that of a warm memcpy of the picture (of an emblem: of its square), measured by turns with each.
// Ours allocates its result; the others write into memory that is there already, wherever they can.
//
// image_bench [NAME…]: only the operations whose names begin so.
#include <cairo/cairo.h>

#include <QGuiApplication>
#include <QTransform>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <functional>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>
#include <vips/vips8>

#include "bench/desktop_picture.h"
#include "image/operations.h"
#include "tests/image/reference.h"

namespace marbelot {
namespace {

constexpr int width = 3840, height = 2160;
constexpr std::size_t pictureBytes = std::size_t{4} * width * height;

Bitmap toBitmap(const QImage& image) {
  const QImage pixels = image.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
  Bitmap bitmap = *Bitmap::make(image.width(), image.height());
  for (int y = 0; y < image.height(); ++y) {
    std::memcpy(bitmap.row(y), pixels.constScanLine(y),
                4 * static_cast<std::size_t>(image.width()));
  }
  return bitmap;
}

Bitmap& picture() {
  static Bitmap bitmap = toBitmap(desktopPicture(width, height));
  return bitmap;
}

// --- The same pixels as others see them ----------------------------------------------------------

cv::Mat mat(Bitmap& bitmap) {
  return {bitmap.height(), bitmap.width(), CV_8UC4, bitmap.data(), bitmap.bytesPerRow()};
}

QImage qImage(const Bitmap& bitmap) {
  return {bitmap.data(), bitmap.width(), bitmap.height(),
          static_cast<qsizetype>(bitmap.bytesPerRow()), QImage::Format_RGBA8888_Premultiplied};
}

vips::VImage vImage(const Bitmap& bitmap) {
  return vips::VImage::new_from_memory(
      const_cast<std::uint8_t*>(bitmap.data()),
      bitmap.bytesPerRow() * static_cast<std::size_t>(bitmap.height()), bitmap.width(),
      bitmap.height(), 4, VIPS_FORMAT_UCHAR);
}

// A surface of Cairo's; that its red is our blue makes no difference here.
class Surface {
 public:
  explicit Surface(Bitmap& bitmap, cairo_format_t format = CAIRO_FORMAT_ARGB32)
      : surface_(cairo_image_surface_create_for_data(bitmap.data(), format, bitmap.width(),
                                                     bitmap.height(),
                                                     static_cast<int>(bitmap.bytesPerRow()))),
        context_(cairo_create(surface_)) {}
  ~Surface() {
    cairo_destroy(context_);
    cairo_surface_destroy(surface_);
  }
  Surface(const Surface&) = delete;
  Surface& operator=(const Surface&) = delete;

  cairo_t* context() { return context_; }
  cairo_surface_t* surface() { return surface_; }

  void fill(double red, double green, double blue, double alpha) {
    cairo_set_operator(context_, CAIRO_OPERATOR_SOURCE);
    cairo_set_source_rgba(context_, red, green, blue, alpha);
    cairo_paint(context_);
    cairo_set_operator(context_, CAIRO_OPERATOR_OVER);
  }

  void roundedPath(double x, double y, double w, double h, double radius) {
    cairo_new_path(context_);
    cairo_arc(context_, x + w - radius, y + radius, radius, -M_PI / 2, 0);
    cairo_arc(context_, x + w - radius, y + h - radius, radius, 0, M_PI / 2);
    cairo_arc(context_, x + radius, y + h - radius, radius, M_PI / 2, M_PI);
    cairo_arc(context_, x + radius, y + radius, radius, M_PI, 3 * M_PI / 2);
    cairo_close_path(context_);
  }

 private:
  cairo_surface_t* surface_;
  cairo_t* context_;
};

// --- What is measured ----------------------------------------------------------------------------

struct Contender {
  const char* name;
  std::function<void()> work;
};

struct Case {
  const char* op;
  double goal;  // x
  std::vector<Contender> others;
  double share = 1;  // of the picture that "x" relates to
};

std::vector<Contender> borderOthers() {
  static Bitmap canvas = *Bitmap::make(width + 108, height + 108);
  return {{"Cairo",
           [] {
             Surface to(canvas), from(picture(), CAIRO_FORMAT_RGB24);
             to.fill(1, 0.2, 0.2, 1);
             cairo_set_source_surface(to.context(), from.surface(), 54, 54);
             cairo_paint(to.context());
           }},
          {"OpenCV",
           [] {
             cv::Mat to = mat(canvas);
             cv::copyMakeBorder(mat(picture()), to, 54, 54, 54, 54, cv::BORDER_CONSTANT,
                                {255, 59, 48, 255});
           }},
          {"Qt", [] {
             QImage to(canvas.data(), canvas.width(), canvas.height(),
                       static_cast<qsizetype>(canvas.bytesPerRow()),
                       QImage::Format_RGBA8888_Premultiplied);
             to.fill(QColor(255, 59, 48));
             QPainter painter(&to);
             painter.setCompositionMode(QPainter::CompositionMode_Source);
             painter.drawImage(54, 54, qImage(picture()));
           }}};
}

std::vector<Contender> turnOthers(double degrees, int code) {
  static cv::Mat to;
  return {
      {"Qt",
       [=] { const QImage made = qImage(picture()).transformed(QTransform().rotate(-degrees)); }},
      {"OpenCV", [=] { cv::rotate(mat(picture()), to, code); }}};
}

std::vector<Contender> flipOthers(bool leftRight) {
  static cv::Mat to;
  return {{"Qt", [=] { const QImage made = qImage(picture()).mirrored(leftRight, !leftRight); }},
          {"OpenCV", [=] { cv::flip(mat(picture()), to, leftRight ? 1 : 0); }}};
}

std::vector<Contender> transparentOthers() {
  return {{"OpenCV", [] {
             static cv::Mat to, near;
             cv::inRange(mat(picture()), cv::Scalar(215, 215, 215, 0),
                         cv::Scalar(255, 255, 255, 255), near);
             mat(picture()).copyTo(to);
             to.setTo(cv::Scalar(0, 0, 0, 0), near);
           }}};
}

std::vector<Contender> resizeOthers(double factor) {
  const int w = static_cast<int>(width * factor), h = static_cast<int>(height * factor);
  return {{"libvips",
           [=] {
             static std::vector<std::uint8_t> to(pictureBytes);
             const auto made = vImage(picture()).resize(factor);
             made.write(vips::VImage::new_from_memory(to.data(), pictureBytes, w, h, 4,
                                                      VIPS_FORMAT_UCHAR));
           }},
          {"Qt",
           [=] {
             const QImage made =
                 qImage(picture()).scaled(w, h, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
           }},
          {"OpenCV", [=] {
             static cv::Mat to;
             cv::resize(mat(picture()), to, {w, h}, 0, 0, cv::INTER_AREA);
           }}};
}

// The mask is blurred at a sixteenth of its size, which is quicker than any filter at full size.
std::vector<Contender> shadowOthers() {
  constexpr int margin = 194;
  static Bitmap canvas = *Bitmap::make(width + 2 * margin, height + 2 * margin);
  return {{"Cairo, OpenCV", [] {
             constexpr int small = 16;
             cv::Mat mask =
                 cv::Mat::zeros(canvas.height() / small + 1, canvas.width() / small + 1, CV_8U);
             const int at = margin / small;
             mask(cv::Rect(at, at, width / small, height / small)).setTo(255 * 0.45);
             cv::GaussianBlur(mask, mask, {0, 0}, 0.4 * margin / small);
             static cv::Mat large, shadow;
             cv::resize(mask, large, {canvas.width(), canvas.height()}, 0, 0, cv::INTER_LINEAR);
             static const cv::Mat black = cv::Mat::zeros(canvas.height(), canvas.width(), CV_8U);
             shadow = mat(canvas);
             cv::merge(std::vector<cv::Mat>{black, black, black, large}, shadow);
             Surface to(canvas), from(picture(), CAIRO_FORMAT_RGB24);
             to.roundedPath(margin, margin, width, height, 0.04 * height);
             cairo_set_source_surface(to.context(), from.surface(), margin, margin);
             cairo_fill(to.context());
           }}};
}

std::vector<Contender> emblemOthers() {
  static Bitmap canvas = *Bitmap::make(height, height);
  return {{"Cairo", [] {
             Surface to(canvas), from(picture(), CAIRO_FORMAT_RGB24);
             to.fill(0, 0, 0, 0);
             to.roundedPath(0, 0, height, height, height / 2.0);
             cairo_set_source_surface(to.context(), from.surface(), (height - width) / 2.0, 0);
             cairo_fill(to.context());
           }}};
}

// --- Report --------------------------------------------------------------------------------------

double milliseconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double timed(const std::function<void()>& work) {
  const double start = milliseconds();
  work();
  return milliseconds() - start;
}

void report(const Case& measured) {
  static std::vector<std::uint8_t> copy(pictureBytes);
  std::vector<Contender> all{{"ours", [&] { namedEdit(measured.op)->edit.apply(picture()); }}};
  all.insert(all.end(), measured.others.begin(), measured.others.end());
  std::printf("%-20s %5.1f", measured.op, measured.goal);
  for (const auto& [name, work] : all) {
    double memory = 1e9, best = 1e9, spent = 0;
    for (int turn = 0; turn < 5 || (turn < 60 && spent < 400); ++turn) {
      memory =
          std::min(memory, timed([] { std::memcpy(copy.data(), picture().data(), pictureBytes); }));
      const double took = timed(work);
      best = std::min(best, took);
      spent += took;
    }
    std::printf("   %s %.2f (%.1f ms)", name, best / memory / measured.share, best);
    std::fflush(stdout);
  }
  std::printf("\n");
}

// Peak signal-to-noise ratio, in dB, of what resizes a smaller picture, against Lanczos in doubles.
// The outermost pixels do not count: libraries differ in what they think lies beyond.
double quality(const Bitmap& made, const reference::Picture& expected) {
  constexpr int edge = 8;
  double sum = 0, count = 0;
  for (int y = edge; y < expected.height - edge; ++y) {
    for (int x = edge; x < expected.width - edge; ++x) {
      for (int c = 0; c < 3; ++c, ++count) {
        const double error = made.row(y)[4 * x + c] - std::round(expected.at(x, y)[c]);
        sum += error * error;
      }
    }
  }
  return 10 * std::log10(255 * 255 / (sum / count));
}

void reportQuality(double factor) {
  const Bitmap small = toBitmap(desktopPicture(width, height).copy(1100, 100, 640, 360));
  const int w = static_cast<int>(640 * factor), h = static_cast<int>(360 * factor);
  const auto expected = resampled(reference::Picture(small), reference::Axis{w, 0, 640.0 / w},
                                  reference::Axis{h, 0, 360.0 / h});
  const auto ours = marbelot::apply("resize:" + std::to_string(factor), small);
  Bitmap others = *Bitmap::make(w, h);
  vImage(small).resize(factor).write(vImage(others));
  std::printf("resize:%-13.2f ours %.1f dB", factor, quality(*ours, expected));
  std::printf("   libvips %.1f dB", quality(others, expected));
  const QImage qt = qImage(small).scaled(w, h, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  std::printf("   Qt %.1f dB", quality(toBitmap(qt), expected));
  Bitmap input = toBitmap(qImage(small));
  cv::Mat to = mat(others);
  cv::resize(mat(input), to, {w, h}, 0, 0, cv::INTER_AREA);
  std::printf("   OpenCV, area %.1f dB\n", quality(others, expected));
}

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  using namespace marbelot;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  if (VIPS_INIT(argv[0]) != 0) return 1;
  vips_concurrency_set(1);
  vips_cache_set_max(0);
  cv::setNumThreads(1);

  const double emblemShare = static_cast<double>(height) / width;
  const Case cases[] = {
      {"border:red", 1.1, borderOthers()},
      {"rotate:90", 1.2, turnOthers(90, cv::ROTATE_90_COUNTERCLOCKWISE)},
      {"rotate:-90", 1.2, turnOthers(-90, cv::ROTATE_90_CLOCKWISE)},
      {"rotate:180", 1.0, turnOthers(180, cv::ROTATE_180)},
      {"flip:h", 1.4, flipOthers(true)},
      {"flip:v", 1.2, flipOthers(false)},
      {"transparent:white", 1.0, transparentOthers()},
      {"resize:0.75", 6, resizeOthers(0.75)},
      {"resize:0.5", 4, resizeOthers(0.5)},
      {"resize:0.25", 3, resizeOthers(0.25)},
      {"shadow:grow:medium", 2, shadowOthers()},
      {"emblem:circle:clear", 1.3, emblemOthers(), emblemShare},
  };
  const auto chosen = [&](const std::string& op) {
    const auto begins = [&](const char* name) { return op.starts_with(name); };
    return argc < 2 || std::any_of(argv + 1, argv + argc, begins);
  };
  std::printf("%-20s %5s\n", "operation", "goal");
  for (const Case& measured : cases) {
    if (chosen(measured.op)) report(measured);
  }
  for (const double factor : {0.75, 0.5, 0.25}) {
    if (chosen("resize")) reportQuality(factor);
  }
}
