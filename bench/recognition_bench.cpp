// recognition_bench [KIND]: how many characters of rendered screens are read wrongly, by kind of
// screen: the edits from what was read to what stands there (blanks of any kind counting as one)
// over the length of the latter. For photos, the number of characters read. With FOLDER in
// MARBELOT_SCREENS the pictures, their texts and what was read are left there.
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <chrono>
#include <cstdio>
#include <map>

#include "bench/rendered_screens.h"
#include "platform/bitmap.h"
#include "platform/linux/recognizer_process.h"

namespace {

using marbelot::Bitmap;

Bitmap bitmapOf(const QImage& image) {
  const QImage rgba = image.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
  Bitmap bitmap = *Bitmap::make(rgba.width(), rgba.height());
  for (int y = 0; y < rgba.height(); ++y)
    std::copy_n(rgba.constScanLine(y), static_cast<std::size_t>(rgba.width()) * 4, bitmap.row(y));
  return bitmap;
}

std::size_t edits(const std::u32string& a, const std::u32string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i - 1] != b[j - 1]);
      diagonal = row[j];
      row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row[b.size()];
}

void leave(const QDir& folder, int number, const marbelot::bench::Screen& screen,
           const QString& read) {
  const QString base = folder.filePath(QString::number(number));
  screen.picture.save(base + ".png");
  for (const auto& [suffix, text] : {std::pair(".expected", screen.text), {".read", read}}) {
    QFile file(base + suffix);
    if (file.open(QIODevice::WriteOnly)) file.write(text.toUtf8());
  }
}

struct Sum {
  std::size_t screens = 0, characters = 0, wrong = 0;
  double seconds = 0;
};

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  const QString wanted = argc > 1 ? argv[1] : "";
  const QString folder = qEnvironmentVariable("MARBELOT_SCREENS");
  if (!folder.isEmpty()) QDir().mkpath(folder);
  marbelot::RecognizerProcess process;
  std::map<std::string, Sum> sums;
  int number = 0;
  for (const auto& screen : marbelot::bench::renderedScreens()) {
    ++number;
    if (!QString::fromStdString(screen.kind).contains(wanted)) continue;
    const auto start = std::chrono::steady_clock::now();
    const marbelot::Recognition result = process.read(bitmapOf(screen.picture), -1);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    if (result.outcome != marbelot::Recognition::Outcome::read) {
      std::fprintf(stderr, "not read: %s\n", result.advice.c_str());
      return 1;
    }
    QString read;
    for (const std::string& line : result.lines) read += QString::fromStdString(line) + "\n";
    if (!folder.isEmpty()) leave(folder, number, screen, read);
    const std::u32string expected = screen.text.simplified().toStdU32String();
    const std::size_t wrong = edits(read.simplified().toStdU32String(), expected);
    Sum& sum = sums[screen.kind];
    ++sum.screens;
    sum.characters += expected.size();
    sum.wrong += wrong;
    sum.seconds += took.count();
    std::printf("%3d %-16s %-22s %5zu of %5zu wrong, %.2f s\n", number, screen.kind.c_str(),
                screen.font.c_str(), wrong, expected.size(), took.count());
    std::fflush(stdout);
  }
  std::printf("\n%-16s %7s %11s %6s %10s\n", "kind", "screens", "characters", "wrong",
              "s a screen");
  for (const auto& [kind, sum] : sums) {
    const double rate = sum.characters ? 100.0 * static_cast<double>(sum.wrong) /
                                             static_cast<double>(sum.characters)
                                       : 0;
    std::printf("%-16s %7zu %11zu %6zu %5.2f %% %6.2f\n", kind.c_str(), sum.screens, sum.characters,
                sum.wrong, rate, sum.seconds / static_cast<double>(sum.screens));
  }
  return 0;
}
