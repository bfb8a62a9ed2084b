// What cameras and printers write: HEIC, and JPEGs of four inks.
#include <gtest/gtest.h>

#include <cstdio>
// Needs the one above.
#include <jpeglib.h>
#include <lcms2.h>
#include <libheif/heif.h>

#include <cstdlib>
#include <memory>
#include <vector>

#include "platform/image_codec.h"

namespace marbelot {
namespace {

using Inks = std::vector<std::uint8_t>;  // of one pixel: cyan, magenta, yellow, black; 255 is full

SharedBitmap decoded(const std::string& bytes) {
  const auto image = Image::fromBytes(share(bytes));
  return image ? decode(*image) : nullptr;
}

// 32 by 32 pixels of one colour. `photoshop`: stored the other way round, and marked so.
std::string cmykJpeg(const Inks& inks, bool photoshop, const std::string& profile = {}) {
  jpeg_compress_struct jpeg{};
  jpeg_error_mgr errors{};
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* data = nullptr;
  unsigned long bytes = 0;
  jpeg_mem_dest(&jpeg, &data, &bytes);
  jpeg.image_width = jpeg.image_height = 32;
  jpeg.input_components = 4;
  jpeg.in_color_space = JCS_CMYK;
  jpeg_set_defaults(&jpeg);
  jpeg_set_colorspace(&jpeg, JCS_CMYK);
  jpeg_set_quality(&jpeg, 100, TRUE);
  jpeg.write_Adobe_marker = photoshop ? TRUE : FALSE;
  jpeg_start_compress(&jpeg, TRUE);
  if (!profile.empty()) {
    jpeg_write_icc_profile(&jpeg, reinterpret_cast<const JOCTET*>(profile.data()),
                           static_cast<unsigned>(profile.size()));
  }
  Inks row;
  for (int x = 0; x < 32; ++x) {
    for (const std::uint8_t ink : inks)
      row.push_back(photoshop ? static_cast<std::uint8_t>(255 - ink) : ink);
  }
  JSAMPROW rows[] = {row.data()};
  while (jpeg.next_scanline < 32) jpeg_write_scanlines(&jpeg, rows, 1);
  jpeg_finish_compress(&jpeg);
  std::string out(reinterpret_cast<char*>(data), bytes);
  jpeg_destroy_compress(&jpeg);
  std::free(data);
  return out;
}

// A press whose paper is light and whose every ink only darkens it, without any colour.
std::string grayInks() {
  const auto sample = [](const cmsUInt16Number in[], cmsUInt16Number out[], void*) -> int {
    double left = 1;
    for (int ink = 0; ink < 4; ++ink) left *= 1 - 0.5 * in[ink] / 65535;
    out[0] = static_cast<cmsUInt16Number>(left * 0xFF00);  // L* of 0 to 100
    out[1] = out[2] = 0x8000;                              // no colour
    return 1;
  };
  cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
  cmsSetProfileVersion(profile, 2.1);
  cmsSetDeviceClass(profile, cmsSigOutputClass);
  cmsSetColorSpace(profile, cmsSigCmykData);
  cmsSetPCS(profile, cmsSigLabData);
  cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 4, 3);
  cmsStage* table = cmsStageAllocCLut16bit(nullptr, 9, 4, 3, nullptr);
  cmsStageSampleCLut16bit(table, sample, nullptr, 0);
  cmsPipelineInsertStage(pipeline, cmsAT_BEGIN, table);
  cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
  cmsPipelineFree(pipeline);
  cmsUInt32Number bytes = 0;
  cmsSaveProfileToMem(profile, nullptr, &bytes);
  std::string out(bytes, '\0');
  cmsSaveProfileToMem(profile, out.data(), &bytes);
  cmsCloseProfile(profile);
  return out;
}

void expectPixel(const SharedBitmap& bitmap, int red, int green, int blue) {
  ASSERT_TRUE(bitmap);
  const std::uint8_t* pixel = bitmap->row(bitmap->height() / 2) + 4 * (bitmap->width() / 2);
  EXPECT_NEAR(pixel[0], red, 3);
  EXPECT_NEAR(pixel[1], green, 3);
  EXPECT_NEAR(pixel[2], blue, 3);
  EXPECT_EQ(pixel[3], 255);
}

TEST(InksJpeg, LooksAsPrinted) {
  for (const bool photoshop : {false, true}) {
    SCOPED_TRACE(photoshop);
    expectPixel(decoded(cmykJpeg({255, 0, 0, 0}, photoshop)), 0, 255, 255);
    expectPixel(decoded(cmykJpeg({0, 128, 255, 0}, photoshop)), 255, 127, 0);
    expectPixel(decoded(cmykJpeg({0, 0, 0, 204}, photoshop)), 51, 51, 51);
  }
}

TEST(InksJpeg, FollowsItsProfile) {
  const std::string profile = grayInks();
  for (const bool photoshop : {false, true}) {
    SCOPED_TRACE(photoshop);
    expectPixel(decoded(cmykJpeg({0, 0, 0, 0}, photoshop, profile)), 255, 255, 255);
    // Half the lightness of paper, whichever ink it is: L* of 50.
    expectPixel(decoded(cmykJpeg({255, 0, 0, 0}, photoshop, profile)), 119, 119, 119);
    expectPixel(decoded(cmykJpeg({0, 0, 255, 0}, photoshop, profile)), 119, 119, 119);
  }
}

TEST(InksJpeg, MayBeDamaged) {
  const std::string whole = cmykJpeg({9, 99, 199, 0}, true);
  for (const std::size_t bytes : {whole.size() / 4, whole.size() / 2, whole.size() - 40})
    decoded(whole.substr(0, bytes));  // what is there, or nothing, and the program lives on
  std::string broken = cmykJpeg({255, 0, 0, 0}, false, grayInks());
  const std::size_t at = broken.find("acsp");
  ASSERT_NE(at, std::string::npos);
  broken.replace(at, 4, "none");
  expectPixel(decoded(broken), 0, 255, 255);
}

// A left half in red, with half its alpha if asked for, on blue.
std::string heic(bool transparent) {
  heif_image* image = nullptr;
  heif_image_create(64, 64, heif_colorspace_RGB,
                    transparent ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB,
                    &image);
  heif_image_add_plane(image, heif_channel_interleaved, 64, 64, 8);
  int stride = 0;
  std::uint8_t* plane = heif_image_get_plane(image, heif_channel_interleaved, &stride);
  const int samples = transparent ? 4 : 3;
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 64; ++x) {
      const std::uint8_t pixel[] = {static_cast<std::uint8_t>(x < 32 ? 220 : 30), 30,
                                    static_cast<std::uint8_t>(x < 32 ? 30 : 220),
                                    static_cast<std::uint8_t>(x < 32 ? 128 : 255)};
      std::copy_n(pixel, samples, plane + y * stride + x * samples);
    }
  }
  const std::unique_ptr<heif_context, decltype(&heif_context_free)> context(heif_context_alloc(),
                                                                            heif_context_free);
  heif_encoder* encoder = nullptr;
  std::string out;
  if (heif_context_get_encoder_for_format(context.get(), heif_compression_HEVC, &encoder).code ==
      heif_error_Ok) {
    heif_encoder_set_lossy_quality(encoder, 95);
    heif_context_encode_image(context.get(), image, encoder, nullptr, nullptr);
    heif_encoder_release(encoder);
    heif_writer writer{1, [](heif_context*, const void* data, size_t bytes, void* to) {
                         static_cast<std::string*>(to)->append(static_cast<const char*>(data),
                                                               bytes);
                         return heif_error{heif_error_Ok, heif_suberror_Unspecified, ""};
                       }};
    heif_context_write(context.get(), &writer, &out);
  }
  heif_image_release(image);
  return out;
}

TEST(Heic, IsReadWithItsTransparency) {
  for (const bool transparent : {false, true}) {
    const std::string bytes = heic(transparent);
    ASSERT_FALSE(bytes.empty()) << "this machine's libheif writes no HEVC";
    const SharedBitmap bitmap = decoded(bytes);
    ASSERT_TRUE(bitmap);
    ASSERT_EQ(bitmap->width(), 64);
    const std::uint8_t* left = bitmap->row(32) + 4 * 12;
    const std::uint8_t* right = bitmap->row(32) + 4 * 52;
    EXPECT_NEAR(left[0], transparent ? 110 : 220, 12);
    EXPECT_NEAR(left[3], transparent ? 128 : 255, 3);
    EXPECT_NEAR(right[2], 220, 12);
    EXPECT_EQ(right[3], 255);
  }
}

}  // namespace
}  // namespace marbelot
