#include "bench/rendered_screens.h"

#include <QFont>
#include <QFontInfo>
#include <QFontMetrics>
#include <QPainter>
#include <QRandomGenerator>
#include <QTextLayout>
#include <cmath>

namespace marbelot::bench {
namespace {

const char* const prose[] = {
    "The ferry leaves at 7:45 from pier 12, and the next one not before noon. Whoever misses both "
    "can take the bus over the bridge; it costs $3.20 and needs about forty minutes, more when it "
    "rains. Bring the signed form (two copies), your passport and a quiet mind.",
    "Version 4.2 replaces the index by a hash table, which makes opening a project with 60,000 "
    "files 9 times as fast. Settings are kept in ~/.config/garden/settings.json; delete that file "
    "to start afresh. Known issue: undo does not restore the zoom level. Please report others to "
    "help@garden.example or call +1 202 555 0147.",
    "\"You never asked,\" she said, \"so I didn't tell.\" He looked at the clock - a quarter past "
    "six - then at the letter, then out of the window, where Mr. Quigley's dog was chasing a "
    "plastic bag across the wet lawn. Nobody would believe it: 100% of the vote, in a town of "
    "liars & poets!",
};

const char* const cppCode =
    "#include <vector>\n"
    "\n"
    "// Returns the index of the largest value, or -1.\n"
    "int largest(const std::vector<int>& values) {\n"
    "  int best = -1;\n"
    "  for (int i = 0; i < values.size(); ++i) {\n"
    "    if (best < 0 || values[i] > values[best]) best = i;\n"
    "  }\n"
    "  return best;\n"
    "}\n";

const char* const pythonCode =
    "def load(path, limit=1024):\n"
    "    \"\"\"Read at most `limit` lines.\"\"\"\n"
    "    with open(path, encoding=\"utf-8\") as file:\n"
    "        lines = [line.rstrip() for line in file]\n"
    "    print(f\"{len(lines)} lines from {path}\")\n"
    "    return {k: v * 2 for k, v in enumerate(lines[:limit])}\n";

const char* const shellSession =
    "$ git status --short\n"
    " M src/main.c\n"
    "?? notes.txt\n"
    "$ make -j4 && ./run_tests --filter='net.*'\n"
    "[100%] Built target server\n"
    "42 tests passed, 0 failed (1.73 s)\n"
    "$ ssh admin@10.0.0.7 'df -h /var | tail -1'\n"
    "/dev/sda3   118G   64G   49G   57% /var\n";

const char* const table[][4] = {{"Item", "Quantity", "Price", "Supplier"},
                                {"Paper, A4", "250", "12.90", "Northgate Ltd"},
                                {"Ink cartridge", "8", "149.00", "Brightwell"},
                                {"Desk lamp", "14", "32.75", "Ohm & Sons"},
                                {"Cable, 2 m", "60", "4.50", "Brightwell"},
                                {"Total", "332", "1,284.15", "three suppliers"}};

struct Theme {
  const char* name;
  QColor ground, text;
};
const Theme light{"light", QColor("#ffffff"), QColor("#000000")};
const Theme gray{"light gray", QColor("#f6f8fa"), QColor("#24292f")};
const Theme dark{"dark", QColor("#1e1e1e"), QColor("#d4d4d4")};
const Theme black{"dark", QColor("#000000"), QColor("#ffffff")};
const Theme navy{"dark", QColor("#002b36"), QColor("#93a1a1")};

QFont fontOf(const QString& family, int pixels, bool bold = false) {
  QFont font(family);
  font.setPixelSize(pixels);
  font.setBold(bold);
  return font;
}

// Breaks the text as a window of that width would; the lines are told in `shown`.
int drawParagraph(QPainter& painter, const QString& text, QRect box, QString& shown) {
  QTextLayout layout(text, painter.font());
  const int step = QFontMetrics(painter.font()).height() * 5 / 4;
  int y = box.top();
  layout.beginLayout();
  for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(box.width());
    const QString words = text.mid(line.textStart(), line.textLength());
    painter.drawText(box.left(), y + QFontMetrics(painter.font()).ascent(), words.trimmed());
    shown += words.trimmed() + "\n";
    y += step;
  }
  layout.endLayout();
  return y;
}

Screen screen(std::string kind, const QFont& font, QSize size, const QColor& ground) {
  Screen made{std::move(kind),
              (QFontInfo(font).family() + (font.bold() ? " bold" : "")).toStdString(),
              QImage(size, QImage::Format_RGB32),
              {}};
  made.picture.fill(ground);
  return made;
}

Screen paragraphs(const std::string& kind, const QFont& font, const Theme& theme) {
  const int px = font.pixelSize();
  Screen made = screen(kind, font, {px * 48, px * 32}, theme.ground);
  QPainter painter(&made.picture);
  painter.setFont(font);
  painter.setPen(theme.text);
  int y = px;
  for (const char* text : prose)
    y = drawParagraph(painter, text, {px, y, px * 46, 0}, made.text) + px / 2;
  return made;
}

// In one colour a word class, as editors do.
Screen code(const std::string& kind, const char* source, const QFont& font, const Theme& theme) {
  const QString text(source);
  const QStringList lines = text.split('\n');
  const int px = font.pixelSize();
  const int step = QFontMetrics(font).height() * 6 / 5;
  Screen made =
      screen(kind, font, {px * 42, step * static_cast<int>(lines.size()) + 2 * px}, theme.ground);
  QPainter painter(&made.picture);
  painter.setFont(font);
  const bool isDark = theme.ground.lightness() < 128;
  const QColor colors[] = {theme.text, isDark ? QColor("#569cd6") : QColor("#0033b3"),
                           isDark ? QColor("#ce9178") : QColor("#067d17"),
                           isDark ? QColor("#6a9955") : QColor("#8c8c8c")};
  int y = px + QFontMetrics(font).ascent();
  for (const QString& line : lines) {
    double x = px;
    int word = 0;
    for (qsizetype start = 0; start < line.size();) {
      qsizetype end = start + 1;
      while (end < line.size() && line[end].isLetterOrNumber() == line[start].isLetterOrNumber())
        ++end;
      const QString part = line.mid(start, end - start);
      painter.setPen(line.contains("//") ? colors[3]
                                         : colors[part[0].isLetter() ? 1 + word++ % 2 : 0]);
      painter.drawText(QPointF(x, y), part);
      x += QFontMetricsF(font).horizontalAdvance(part);
      start = end;
    }
    y += step;
  }
  made.text = text;
  return made;
}

Screen tableOf(const std::string& kind, const QFont& font, const Theme& theme, bool ruled) {
  const int px = font.pixelSize();
  const int step = px * 2, width = px * 11;
  Screen made = screen(kind, font, {width * 4 + 3 * px, step * 6 + 3 * px}, theme.ground);
  QPainter painter(&made.picture);
  painter.setFont(font);
  const QFontMetrics metrics(font);
  for (int row = 0; row < 6; ++row) {
    for (int column = 0; column < 4; ++column) {
      const QRect cell(px + column * width, px + row * step, width, step);
      if (ruled) {
        painter.setPen(QColor(128, 128, 128));
        painter.drawRect(cell);
      } else if (row % 2 == 1 && column == 0) {
        QColor stripe =
            theme.ground.lightness() < 128 ? theme.ground.lighter(130) : theme.ground.darker(106);
        painter.fillRect(QRect(px, cell.y(), width * 4, step), stripe);
      }
      painter.setPen(theme.text);
      const QString text = table[row][column];
      const bool right = column == 1 || column == 2;
      const int x =
          right ? cell.right() - px / 2 - metrics.horizontalAdvance(text) : cell.x() + px / 2;
      painter.drawText(x, cell.y() + (step + metrics.ascent() - metrics.descent()) / 2, text);
      made.text += text + (column == 3 ? "\n" : "  ");
    }
  }
  return made;
}

Screen twoColumns(const std::string& kind, const QFont& font, const Theme& theme) {
  const int px = font.pixelSize();
  Screen made = screen(kind, font, {px * 62, px * 30}, theme.ground);
  QPainter painter(&made.picture);
  painter.setFont(font);
  painter.setPen(theme.text);
  for (int column = 0; column < 2; ++column) {
    int y = px;
    for (int i = 0; i < 2; ++i) {
      y = drawParagraph(painter, prose[(column + i) % 3], {px + column * px * 31, y, px * 28, 0},
                        made.text) +
          px / 2;
    }
  }
  return made;
}

// A dark panel beside a light page with coloured buttons.
Screen mixedThemes(const QFont& font) {
  const int px = font.pixelSize();
  Screen made = screen("mixed themes", font, {px * 60, px * 26}, QColor("#ffffff"));
  QPainter painter(&made.picture);
  painter.setFont(font);
  painter.fillRect(0, 0, px * 17, px * 26, QColor("#22303c"));
  painter.setPen(QColor("#e7ecf0"));
  const char* const places[] = {"Overview",     "Recent files", "Shared with me",
                                "Archive 2023", "Settings",     "Sign out"};
  for (int i = 0; i < 6; ++i) {
    if (i == 2) painter.fillRect(0, px * (1 + 3 * i), px * 17, px * 5 / 2, QColor("#3578e5"));
    painter.drawText(px * 2, px * (1 + 3 * i) + px * 33 / 20, places[i]);
    made.text += QString(places[i]) + "\n";
  }
  painter.setPen(QColor("#1c1e21"));
  QString body;
  int y = drawParagraph(painter, prose[1], {px * 19, px, px * 38, 0}, body) + px;
  y = drawParagraph(painter, prose[0], {px * 19, y, px * 38, 0}, body) + px;
  made.text += body;
  const std::pair<const char*, const char*> buttons[] = {
      {"Save changes", "#1a7f37"}, {"Discard", "#cf222e"}, {"Help me choose", "#6639ba"}};
  int x = px * 19;
  for (const auto& [title, color] : buttons) {
    const int width = QFontMetrics(font).horizontalAdvance(title) + 2 * px;
    painter.setBrush(QColor(color));
    painter.setPen(Qt::NoPen);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawRoundedRect(x, y, width, px * 2, 5, 5);
    painter.setPen(QColor("#ffffff"));
    painter.drawText(x + px, y + px * 27 / 20, title);
    made.text += QString(title) + " ";
    x += width + px;
  }
  return made;
}

Screen transparent(const QFont& font, const QColor& color) {
  Screen made = paragraphs("transparent", font, {"", QColor(0, 0, 0, 0), color});
  made.picture = QImage(made.picture.size(), QImage::Format_RGBA8888_Premultiplied);
  made.picture.fill(Qt::transparent);
  made.text.clear();
  QPainter painter(&made.picture);
  painter.setFont(font);
  painter.setPen(color);
  const int px = font.pixelSize();
  int y = px;
  for (const char* text : prose)
    y = drawParagraph(painter, text, {px, y, px * 46, 0}, made.text) + px / 2;
  return made;
}

// Each colour's third of a pixel on its own, as on flat panels.
Screen subpixels(const QFont& font, const Theme& theme) {
  Screen made = paragraphs("subpixels 13 px", font, theme);
  QImage wide(made.picture.width() * 3, made.picture.height(), QImage::Format_RGB32);
  wide.fill(theme.ground);
  {
    QPainter painter(&wide);
    painter.scale(3, 1);
    painter.setFont(font);
    painter.setPen(theme.text);
    QString again;
    const int px = font.pixelSize();
    int y = px;
    for (const char* text : prose)
      y = drawParagraph(painter, text, {px, y, px * 46, 0}, again) + px / 2;
  }
  for (int y = 0; y < wide.height(); ++y) {
    for (int x = 0; x < made.picture.width(); ++x) {
      int part[3];
      for (int c = 0; c < 3; ++c) {
        int sum = 0;
        for (int k = -1; k <= 1; ++k) {
          const QColor from = wide.pixelColor(std::clamp(3 * x + c + k, 0, wide.width() - 1), y);
          sum += c == 0 ? from.red() : c == 1 ? from.green() : from.blue();
        }
        part[c] = sum / 3;
      }
      made.picture.setPixelColor(x, y, QColor(part[0], part[1], part[2]));
    }
  }
  return made;
}

// Clouds over hills, with a sensor's noise: nothing to read.
Screen photo(unsigned seed) {
  Screen made{"photo", "", QImage(900, 600, QImage::Format_RGB32), {}};
  QRandomGenerator random(seed);
  double phase[8];
  for (double& p : phase) p = random.bounded(6.28);
  for (int y = 0; y < 600; ++y) {
    for (int x = 0; x < 900; ++x) {
      double v = 0;
      for (int k = 0; k < 8; ++k)
        v += std::sin(x * 0.004 * (k + 1) + y * 0.006 * ((k * 3) % 5 + 1) + phase[k]) / (k + 1);
      const double hill =
          380 + 60 * std::sin(x * 0.01 + phase[0]) + 25 * std::sin(x * 0.037 + phase[1]);
      const int noise = static_cast<int>(random.bounded(17)) - 8;
      const bool ground = y > hill;
      const int base = static_cast<int>(128 + 45 * v) + noise;
      made.picture.setPixelColor(x, y,
                                 QColor(std::clamp(ground ? base / 2 + 20 : base, 0, 255),
                                        std::clamp(ground ? base / 2 + 50 : base + 20, 0, 255),
                                        std::clamp(ground ? base / 3 : base + 60, 0, 255)));
    }
  }
  return made;
}

}  // namespace

std::vector<Screen> renderedScreens() {
  const char* const families[] = {"DejaVu Sans",  "Liberation Sans",  "Noto Sans",      "Roboto",
                                  "DejaVu Serif", "Liberation Serif", "Liberation Mono"};
  std::vector<Screen> screens;
  for (const int px : {11, 12, 13, 14, 16}) {
    for (const char* family : families) {
      screens.push_back(
          paragraphs("light " + std::to_string(px) + " px", fontOf(family, px), light));
    }
  }
  for (const int px : {11, 13, 16}) {
    for (const char* family : families)
      screens.push_back(paragraphs("dark " + std::to_string(px) + " px", fontOf(family, px), dark));
  }
  for (const char* family : {"DejaVu Sans", "Roboto", "Noto Sans"}) {
    screens.push_back(paragraphs("dark 13 px", fontOf(family, 13), black));
    screens.push_back(paragraphs("dark 13 px", fontOf(family, 13), navy));
    screens.push_back(paragraphs("light 13 px", fontOf(family, 13), gray));
    screens.push_back(paragraphs("light bold", fontOf(family, 13, true), light));
    screens.push_back(paragraphs("light 26 px", fontOf(family, 26), light));
    screens.push_back(
        paragraphs("low contrast", fontOf(family, 13), {"", QColor("#ffffff"), QColor("#a0a0a0")}));
    screens.push_back(
        paragraphs("low contrast", fontOf(family, 13), {"", QColor("#1e1e1e"), QColor("#5a5a5a")}));
    screens.push_back(
        paragraphs("low contrast", fontOf(family, 13), {"", QColor("#5a8f5a"), QColor("#d08060")}));
    screens.push_back(tableOf("table", fontOf(family, 13), light, false));
    screens.push_back(tableOf("table", fontOf(family, 13), dark, false));
    screens.push_back(tableOf("ruled table", fontOf(family, 13), light, true));
    screens.push_back(tableOf("ruled table", fontOf(family, 13), dark, true));
    screens.push_back(twoColumns("two columns", fontOf(family, 13), light));
    screens.push_back(twoColumns("two columns", fontOf(family, 13), dark));
    screens.push_back(mixedThemes(fontOf(family, 13)));
    screens.push_back(transparent(fontOf(family, 13), Qt::black));
    screens.push_back(transparent(fontOf(family, 13), Qt::white));
    screens.push_back(subpixels(fontOf(family, 13), light));
    screens.push_back(subpixels(fontOf(family, 13), dark));
  }
  for (const char* family : {"DejaVu Sans Mono", "Liberation Mono", "Noto Mono"}) {
    for (const char* source : {cppCode, pythonCode, shellSession}) {
      screens.push_back(code("code light", source, fontOf(family, 13), light));
      screens.push_back(code("code dark", source, fontOf(family, 13), dark));
    }
  }
  for (unsigned seed = 1; seed <= 3; ++seed) screens.push_back(photo(seed));
  return screens;
}

}  // namespace marbelot::bench
