// PNG, encoded for the clipboard and decoded, beside libpng, libspng and Qt. 3840 by 2160, one
// thread; compare the times within one run. `ratio` is the file's size in libpng's at its default
// level.
#include <benchmark/benchmark.h>
#include <png.h>
#include <spng.h>

#include <QGuiApplication>
#include <QImage>
#include <cmath>
#include <cstdlib>
#include <map>
#include <vector>

#include "bench/desktop_picture.h"
#include "platform/image_codec.h"
#include "platform/linux/png_reader.h"

namespace marbelot {
namespace {

constexpr int width = 3840;
constexpr int height = 2160;

enum Kind { screen, photo, translucent };

// Smooth shapes under a sensor's noise.
QImage photograph() {
  QImage image(width, height, QImage::Format_RGBA8888);
  std::uint32_t state = 1;
  for (int y = 0; y < height; ++y) {
    auto* line = image.scanLine(y);
    for (int x = 0; x < width; ++x) {
      for (int k = 0; k < 4; ++k) {
        state = state * 1664525 + 1013904223;
        const double smooth = 128 + 80 * std::sin(x / (190.0 + 40 * k)) * std::cos(y / 230.0 + k);
        line[4 * x + k] = k == 3 ? 255 : static_cast<uchar>(smooth + (state >> 29));
      }
    }
  }
  return image;
}

const QImage& picture(int kind) {
  static const QImage pictures[] = {desktopPicture(width, height), photograph(), [] {
                                      QImage image = desktopPicture(width, height);
                                      for (int y = 0; y < height; ++y) {
                                        for (int x = 0; x < width; ++x) {
                                          image.scanLine(y)[4 * x + 3] =
                                              static_cast<uchar>(255 - y / 10);
                                        }
                                      }
                                      return image;
                                    }()};
  return pictures[kind];
}

// The rows as the other libraries take them.
struct Rows {
  std::vector<std::uint8_t> bytes;
  int channels;
  std::uint8_t* row(int y) { return bytes.data() + std::size_t{1} * y * width * channels; }
};
Rows& rows(int kind) {
  static std::map<int, Rows> known;
  Rows& rows = known[kind];
  if (!rows.bytes.empty()) return rows;
  rows.channels = kind == translucent ? 4 : 3;
  rows.bytes.resize(std::size_t{1} * width * height * rows.channels);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      for (int k = 0; k < rows.channels; ++k)
        rows.row(y)[x * rows.channels + k] = picture(kind).constScanLine(y)[4 * x + k];
    }
  }
  return rows;
}

const Bitmap& bitmap(int kind) {
  static std::map<int, Bitmap> known;
  if (const auto found = known.find(kind); found != known.end()) return found->second;
  const QImage image = picture(kind).convertToFormat(QImage::Format_RGBA8888_Premultiplied);
  Bitmap made = *Bitmap::make(width, height);
  for (int y = 0; y < height; ++y) std::copy_n(image.constScanLine(y), 4 * width, made.row(y));
  return known.emplace(kind, std::move(made)).first->second;
}

std::string byLibpng(int kind, int level) {
  Rows& from = rows(kind);
  std::string out;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  const auto write = [](png_structp self, png_bytep data, size_t bytes) {
    static_cast<std::string*>(png_get_io_ptr(self))->append(reinterpret_cast<char*>(data), bytes);
  };
  png_set_write_fn(png, &out, write, nullptr);
  png_set_IHDR(png, info, width, height, 8,
               from.channels == 4 ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (level > 0) png_set_compression_level(png, level);
  png_write_info(png, info);
  for (int y = 0; y < height; ++y) png_write_row(png, from.row(y));
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return out;
}

const std::string& reference(int kind) {
  static std::map<int, std::string> known;
  std::string& png = known[kind];
  if (png.empty()) png = byLibpng(kind, 0);
  return png;
}

void count(benchmark::State& state, int kind, std::size_t bytes) {
  state.counters["ratio"] =
      static_cast<double>(bytes) / static_cast<double>(reference(kind).size());
}

void encodeOurs(benchmark::State& state, Kind kind) {
  const Bitmap& from = bitmap(kind);
  std::size_t bytes = 0;
  for (auto _ : state) bytes = encodePng(from)->size();
  count(state, kind, bytes);
}

void encodeLibpng(benchmark::State& state, Kind kind, int level) {
  rows(kind);
  std::size_t bytes = 0;
  for (auto _ : state) bytes = byLibpng(kind, level).size();
  count(state, kind, bytes);
}

void encodeSpng(benchmark::State& state, Kind kind, int level) {
  Rows& from = rows(kind);
  size_t bytes = 0;
  for (auto _ : state) {
    spng_ctx* context = spng_ctx_new(SPNG_CTX_ENCODER);
    spng_set_option(context, SPNG_ENCODE_TO_BUFFER, 1);
    if (level > 0) spng_set_option(context, SPNG_IMG_COMPRESSION_LEVEL, level);
    spng_ihdr header{width, height, 8, 0, 0, 0, 0};
    header.color_type =
        from.channels == 4 ? SPNG_COLOR_TYPE_TRUECOLOR_ALPHA : SPNG_COLOR_TYPE_TRUECOLOR;
    spng_set_ihdr(context, &header);
    spng_encode_image(context, from.bytes.data(), from.bytes.size(), SPNG_FMT_PNG,
                      SPNG_ENCODE_FINALIZE);
    int error = 0;
    std::free(spng_get_png_buffer(context, &bytes, &error));
    spng_ctx_free(context);
  }
  count(state, kind, bytes);
}

void decodeOurs(benchmark::State& state, const std::string& png) {
  for (auto _ : state) {
    const auto made = decodePng(png, [](int w, int h) { return Bitmap::make(w, h); });
    if (!made) state.SkipWithError("not read");
  }
}

void decodeQt(benchmark::State& state, const std::string& png) {
  const auto bytes = QByteArray::fromRawData(png.data(), static_cast<qsizetype>(png.size()));
  for (auto _ : state)
    if (QImage::fromData(bytes, "PNG").isNull()) state.SkipWithError("not read");
}

void decodeSpng(benchmark::State& state, const std::string& png) {
  std::vector<char> out(std::size_t{4} * width * height);
  for (auto _ : state) {
    spng_ctx* context = spng_ctx_new(0);
    spng_set_png_buffer(context, png.data(), png.size());
    if (spng_decode_image(context, out.data(), out.size(), SPNG_FMT_RGBA8, 0) != 0)
      state.SkipWithError("not read");
    spng_ctx_free(context);
  }
}

void decodeLibpng(benchmark::State& state, const std::string& png) {
  std::vector<char> out(std::size_t{4} * width * height);
  for (auto _ : state) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    png_image_begin_read_from_memory(&image, png.data(), png.size());
    image.format = PNG_FORMAT_RGBA;
    if (!png_image_finish_read(&image, nullptr, out.data(), 0, nullptr))
      state.SkipWithError("not read");
  }
}

void registerAll() {
  const auto add = [](const std::string& name, auto run) {
    benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
  };
  const std::pair<Kind, const char*> kinds[] = {
      {screen, "screen"}, {photo, "photo"}, {translucent, "translucent"}};
  for (const auto& [kind, kindName] : kinds) {
    const std::string name = kindName;
    const Kind k = kind;
    add("encode/" + name + "/ours", [k](auto& state) { encodeOurs(state, k); });
    add("encode/" + name + "/libpng", [k](auto& state) { encodeLibpng(state, k, 0); });
    add("encode/" + name + "/libpng at 1", [k](auto& state) { encodeLibpng(state, k, 1); });
    add("encode/" + name + "/spng", [k](auto& state) { encodeSpng(state, k, 0); });
    add("encode/" + name + "/spng at 1", [k](auto& state) { encodeSpng(state, k, 1); });
    const auto addDecoders = [&](const std::string& group, auto png) {
      add(group + "/ours", [png](auto& state) { decodeOurs(state, png()); });
      add(group + "/Qt", [png](auto& state) { decodeQt(state, png()); });
      add(group + "/spng", [png](auto& state) { decodeSpng(state, png()); });
      add(group + "/libpng", [png](auto& state) { decodeLibpng(state, png()); });
    };
    addDecoders("decode libpng's/" + name, [k]() -> const std::string& { return reference(k); });
    addDecoders("decode ours/" + name, [k]() -> const std::string& {
      static std::map<int, SharedBytes> known;
      SharedBytes& png = known[k];
      if (!png) png = encodePng(bitmap(k));
      return *png;
    });
  }
}

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  marbelot::registerAll();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
