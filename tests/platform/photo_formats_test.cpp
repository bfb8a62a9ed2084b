// What cameras, printers and others write: HEIC, JPEGs of four inks, with a profile or without,
// some of them stored the other way round, and what tells of colours and turns.
#include <gtest/gtest.h>

#include "platform/image_codec.h"
#include "tests/support/rows.h"
#include "tests/support/temporary_home.h"

namespace marbelot {
namespace {

std::string file(const std::string& name) {
  return readFile(MARBELOT_TEST_DATA "/pictures/" + name);
}

SharedBitmap decoded(const std::string& bytes) {
  const auto image = Image::fromBytes(share(bytes));
  return image ? decode(*image) : nullptr;
}

TEST(PhotoFormats, LookAsPrintedAndPhotographed) {
  for (const Row& row : rowsOf("pictures/pictures.tsv")) {
    const SharedBitmap bitmap = decoded(file(row[0]));
    ASSERT_TRUE(bitmap && bitmap->height() > std::stoi(row[2])) << row;
    const std::uint8_t* pixel = bitmap->row(std::stoi(row[2])) + 4 * std::stoi(row[1]);
    for (std::size_t part = 0; part < 4; ++part)
      EXPECT_NEAR(pixel[part], std::stoi(row[3 + part]), std::stoi(row[7])) << row << ' ' << part;
  }
}

TEST(PhotoFormats, MayBeDamaged) {
  const std::string whole = file("cyan-inverted.jpg");
  for (const std::size_t bytes : {whole.size() / 4, whole.size() / 2, whole.size() - 40})
    decoded(whole.substr(0, bytes));  // what is there, or nothing, and the program lives on
  std::string broken = file("gray-cyan.jpg");
  broken.replace(broken.find("acsp"), 4, "none");
  const SharedBitmap plain = decoded(broken);
  ASSERT_TRUE(plain);
  EXPECT_NEAR(plain->row(16)[4 * 16], 0, 3) << "as without a profile";
  EXPECT_NEAR(plain->row(16)[4 * 16 + 1], 255, 3);
}

}  // namespace
}  // namespace marbelot
