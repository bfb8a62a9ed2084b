// The editor's view with 20 MB, beside Qt's own view, which takes a text in one go. What counts is
// the longest turn of the event loop: a frame is 16 ms.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>

#include "platform/linux/text_view.h"

namespace marbelot {
namespace {

const SharedText& corpus(std::int64_t kind) {
  constexpr std::size_t size = 20u << 20;
  static const SharedText corpora[] = {[] {
                                         std::string text;
                                         while (text.size() < size)
                                           text += "a line of ordinary length, as in a log\n";
                                         return share(std::move(text));
                                       }(),
                                       share(std::string(size, 'x'))};
  return corpora[kind];
}

enum { lines, oneLine };

struct Editor {
  Editor() : view(TextArea{.editable = true}) {
    view.resize(560, 400);
    view.show();
  }
  // Milliseconds of the longest turn.
  double bringIn(const SharedText& text) {
    QElapsedTimer spent;
    spent.start();
    view.setContents(text);
    double longest = 0;
    while (true) {
      longest = std::max(longest, static_cast<double>(spent.nsecsElapsed()) / 1e6);
      if (!view.isReadOnly()) return longest;
      spent.restart();
      QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
  }
  void press(int key, Qt::KeyboardModifiers modifiers = {}, const QString& text = {}) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers, text);
    QApplication::sendEvent(&view, &event);
    QApplication::processEvents();
  }
  TextView view;
};

void SetPlainText(benchmark::State& state) {
  const QString text = QString::fromStdString(*corpus(state.range(0)));
  for (auto _ : state) {
    QPlainTextEdit view;
    view.resize(560, 400);
    view.show();
    view.setPlainText(text);
    QApplication::processEvents();
  }
}

void BringIn(benchmark::State& state) {
  Editor editor;
  double longest = 0;
  for (auto _ : state) longest = std::max(longest, editor.bringIn(corpus(state.range(0))));
  state.counters["longest turn, ms"] = longest;
}

void SelectAllAndCopy(benchmark::State& state) {
  Editor editor;
  editor.bringIn(corpus(state.range(0)));
  for (auto _ : state) {
    editor.press(Qt::Key_A, Qt::ControlModifier);
    editor.press(Qt::Key_C, Qt::ControlModifier);
  }
}

void Type(benchmark::State& state) {
  Editor editor;
  editor.bringIn(corpus(state.range(0)));
  for (auto _ : state) editor.press(Qt::Key_Y, {}, "y");
}

void SaveWhatWasTyped(benchmark::State& state) {
  Editor editor;
  editor.bringIn(corpus(state.range(0)));
  for (auto _ : state) {
    editor.press(Qt::Key_Y, {}, "y");
    benchmark::DoNotOptimize(editor.view.contents());
  }
}

#define EVERY_CORPUS ->Arg(lines)->Arg(oneLine)->Unit(benchmark::kMillisecond)
// The long line keeps it busy for more than ten minutes.
BENCHMARK(SetPlainText)->Arg(lines)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BringIn) EVERY_CORPUS->Iterations(3);
BENCHMARK(SelectAllAndCopy) EVERY_CORPUS;
BENCHMARK(Type) EVERY_CORPUS;
BENCHMARK(SaveWhatWasTyped) EVERY_CORPUS;

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
