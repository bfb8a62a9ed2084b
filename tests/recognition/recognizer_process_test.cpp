// The recogniser's process, with real pictures.
#include "platform/linux/recognizer_process.h"

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <csignal>
#include <cstdlib>
#include <fstream>

namespace marbelot {
namespace {

using Outcome = Recognition::Outcome;

Bitmap picture(const QStringList& lines, QColor ground, QColor color) {
  static int argc = 1;
  static char name[] = "test";
  static char* argv[] = {name, nullptr};
  qputenv("QT_QPA_PLATFORM", "offscreen");
  static const QGuiApplication application(argc, argv);
  QImage image(420, 20 + 24 * static_cast<int>(lines.size()), QImage::Format_RGBA8888);
  image.fill(ground);
  QPainter painter(&image);
  QFont font("DejaVu Sans");
  font.setPixelSize(13);
  painter.setFont(font);
  painter.setPen(color);
  for (int i = 0; i < lines.size(); ++i) painter.drawText(12, 24 + 24 * i, lines[i]);
  painter.end();
  Bitmap bitmap = *Bitmap::make(image.width(), image.height());
  for (int y = 0; y < image.height(); ++y)
    std::copy_n(image.constScanLine(y), bitmap.bytesPerRow(), bitmap.row(y));
  return bitmap;
}

const QStringList words{"The ferry leaves at noon.", "Nobody knows why."};
const std::vector<std::string> read{"The ferry leaves at noon.", "Nobody knows why."};

TEST(RecognizerProcess, ReadsOnePictureAfterTheOther) {
  RecognizerProcess process;
  EXPECT_EQ(process.read(picture(words, Qt::white, Qt::black), -1).lines, read);
  EXPECT_EQ(process.read(picture(words, QColor("#1e1e1e"), QColor("#d4d4d4")), -1).lines, read);
  const Recognition nothing = process.read(picture({}, Qt::white, Qt::black), -1);
  EXPECT_EQ(nothing.outcome, Outcome::read);
  EXPECT_TRUE(nothing.lines.empty());
}

TEST(RecognizerProcess, BreaksOffWhenCancelledAndReadsAgainAfterwards) {
  RecognizerProcess process;
  const Descriptor cancel(eventfd(1, EFD_CLOEXEC));
  const Bitmap bitmap = picture(words, Qt::white, Qt::black);
  EXPECT_EQ(process.read(bitmap, cancel.get()).outcome, Outcome::failed);
  EXPECT_EQ(process.read(bitmap, -1).lines, read);
}

TEST(RecognizerProcess, StartsAnotherHelperWhenTheOneThatWaitedHasEnded) {
  RecognizerProcess process;
  const Bitmap bitmap = picture(words, Qt::white, Qt::black);
  process.read(bitmap, -1);
  // The only child of this program.
  std::ifstream children("/proc/self/task/" + std::to_string(gettid()) + "/children");
  pid_t helper = 0;
  ASSERT_TRUE(children >> helper);
  kill(helper, SIGKILL);
  siginfo_t ended;
  waitid(P_PID, static_cast<id_t>(helper), &ended, WEXITED | WNOWAIT);
  EXPECT_EQ(process.read(bitmap, -1).lines, read);
}

TEST(RecognizerProcess, SaysWhatToInstallWhereNoLanguageIs) {
  setenv("TESSDATA_PREFIX", "/nowhere", 1);
  RecognizerProcess process;
  const Bitmap bitmap = picture(words, Qt::white, Qt::black);
  const Recognition result = process.read(bitmap, -1);
  unsetenv("TESSDATA_PREFIX");
  EXPECT_EQ(result.outcome, Outcome::missingLanguage);
  EXPECT_NE(result.advice.find("tesseract-ocr-eng"), std::string::npos) << result.advice;
  EXPECT_EQ(process.read(bitmap, -1).lines, read) << "installed meanwhile";
}

TEST(RecognizerProcess, TakesEnglishForALanguageThatIsNotInstalled) {
  setenv("LC_ALL", "tlh_QO.UTF-8", 1);
  RecognizerProcess process;
  EXPECT_EQ(process.read(picture(words, Qt::white, Qt::black), -1).lines, read);
  unsetenv("LC_ALL");
}

}  // namespace
}  // namespace marbelot
