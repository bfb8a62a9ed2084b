#include "tools/cmyk_jpeg.h"

#include <cstddef>
#include <cstdio>
// Needs the two above.
#include <jpeglib.h>
#include <lcms2.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

// Ends the codec's process, which is there for this one picture.
[[noreturn]] void fail(j_common_ptr) { std::_Exit(1); }
void ignore(j_common_ptr) {}

class Decompressor {
 public:
  explicit Decompressor(std::string_view bytes) {
    jpeg.err = jpeg_std_error(&errors_);
    errors_.error_exit = fail;
    errors_.output_message = ignore;
    jpeg_create_decompress(&jpeg);
    jpeg_mem_src(&jpeg, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    jpeg_save_markers(&jpeg, JPEG_APP0 + 2, 0xFFFF);  // where profiles are
    jpeg_read_header(&jpeg, TRUE);
  }
  ~Decompressor() { jpeg_destroy_decompress(&jpeg); }
  Decompressor(const Decompressor&) = delete;
  Decompressor& operator=(const Decompressor&) = delete;

  std::vector<JOCTET> profile() {
    JOCTET* data = nullptr;
    unsigned bytes = 0;
    if (jpeg_read_icc_profile(&jpeg, &data, &bytes) == FALSE) return {};
    const std::unique_ptr<JOCTET, decltype(&std::free)> owned(data, std::free);
    return {data, data + bytes};
  }

  jpeg_decompress_struct jpeg{};

 private:
  jpeg_error_mgr errors_{};
};

using Transform = std::unique_ptr<void, decltype(&cmsDeleteTransform)>;

Transform toSrgb(const std::vector<JOCTET>& icc, bool inverted) {
  using Profile = std::unique_ptr<void, decltype(&cmsCloseProfile)>;
  const Profile from(cmsOpenProfileFromMem(icc.data(), static_cast<cmsUInt32Number>(icc.size())),
                     cmsCloseProfile);
  const Profile srgb(cmsCreate_sRGBProfile(), cmsCloseProfile);
  const bool isCmyk = from && cmsGetColorSpace(from.get()) == cmsSigCmykData;
  return {isCmyk ? cmsCreateTransform(from.get(), inverted ? TYPE_CMYK_8_REV : TYPE_CMYK_8,
                                      srgb.get(), TYPE_RGB_8, INTENT_PERCEPTUAL, 0)
                 : nullptr,
          cmsDeleteTransform};
}

}  // namespace

QImage decodedCmykJpeg(std::string_view bytes) {
  Decompressor decompressor(bytes);
  jpeg_decompress_struct& jpeg = decompressor.jpeg;
  if (jpeg.jpeg_color_space != JCS_CMYK && jpeg.jpeg_color_space != JCS_YCCK) return {};
  jpeg.out_color_space = JCS_CMYK;
  // Photoshop's mark goes with inks stored the other way round: 255 is none.
  const bool inverted = jpeg.saw_Adobe_marker != FALSE;
  const Transform transform = toSrgb(decompressor.profile(), inverted);
  jpeg_start_decompress(&jpeg);
  QImage image(static_cast<int>(jpeg.output_width), static_cast<int>(jpeg.output_height),
               QImage::Format_RGB888);
  if (image.isNull()) return {};
  std::vector<JSAMPLE> inks(std::size_t{4} * jpeg.output_width);
  while (jpeg.output_scanline < jpeg.output_height) {
    uchar* to = image.scanLine(static_cast<int>(jpeg.output_scanline));
    JSAMPROW row = inks.data();
    jpeg_read_scanlines(&jpeg, &row, 1);
    if (transform) {
      cmsDoTransform(transform.get(), inks.data(), to, jpeg.output_width);
      continue;
    }
    for (std::size_t at = 0; at < inks.size(); at += 4) {
      const auto left = [&](std::size_t ink) {
        return inverted ? inks[at + ink] : 255 - inks[at + ink];
      };
      for (std::size_t ink = 0; ink < 3; ++ink)
        *to++ = static_cast<uchar>((left(ink) * left(3) + 127) / 255);
    }
  }
  return image;
}
