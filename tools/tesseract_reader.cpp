#include "tools/tesseract_reader.h"

#include <tesseract/baseapi.h>

#include <algorithm>
#include <cstring>

#include "recognition/prepared_page.h"

namespace marbelot {
namespace {

constexpr const char* english = "eng";
constexpr int resolution = 300;  // dots an inch, as scanned pages have
// Per cent. What is made of a photo's textures is less certain, what stands on a screen more.
constexpr float leastCertainty = 50;
constexpr float leastCertaintyOfFew = 65;
constexpr int few = 2;  // characters
// One such word makes up for others of its line that are in no dictionary, as in code.
constexpr float certainWord = 85;
constexpr std::size_t certainLetters = 3;
constexpr int tablePad = 8;  // pixels above and below a table

using Results = tesseract::ResultIterator;

bool hasCertainWord(const Results& line) {
  Results word(line);
  do {
    const std::unique_ptr<char[]> read(word.GetUTF8Text(tesseract::RIL_WORD));
    if (read && std::strlen(read.get()) >= certainLetters &&
        word.Confidence(tesseract::RIL_WORD) >= certainWord)
      return true;
  } while (!word.IsAtFinalElement(tesseract::RIL_TEXTLINE, tesseract::RIL_WORD) &&
           word.Next(tesseract::RIL_WORD));
  return false;
}

std::string missingLanguageAdvice() {
  return "Tesseract has no language file; install one, such as the package tesseract-ocr-eng";
}

}  // namespace

TesseractReader::TesseractReader(std::vector<std::string> languages)
    : languages_(std::move(languages)), engine_(std::make_unique<tesseract::TessBaseAPI>()) {}

TesseractReader::~TesseractReader() = default;

bool TesseractReader::loadLanguages() {
  engine_->SetVariable("debug_file", "/dev/null");
  std::string wanted;
  std::vector<std::string> installed;
  // A first try to load nothing tells where the files are looked for.
  engine_->Init(nullptr, nullptr, tesseract::OEM_LSTM_ONLY);
  engine_->GetAvailableLanguagesAsVector(&installed);
  for (const std::string& language : languages_) {
    if (std::find(installed.begin(), installed.end(), language) != installed.end())
      wanted += (wanted.empty() ? "" : "+") + language;
  }
  if (wanted.empty()) wanted = english;
  if (engine_->Init(nullptr, wanted.c_str(), tesseract::OEM_LSTM_ONLY) != 0 &&
      engine_->Init(nullptr, english, tesseract::OEM_LSTM_ONLY) != 0)
    return false;
  // The page is dark on light already; trying lines the other way round as well takes time.
  engine_->SetVariable("tessedit_do_invert", "0");
  return loaded_ = true;
}

bool TesseractReader::recognize(const Page& page, Band band, bool asOneBlock,
                                std::vector<ReadLine>& lines) {
  const std::uint8_t* const start =
      page.gray.data() + static_cast<std::ptrdiff_t>(band.top) * page.width;
  engine_->SetImage(start, page.width, band.bottom - band.top, 1, page.width);
  engine_->SetSourceResolution(resolution);
  engine_->SetPageSegMode(asOneBlock ? tesseract::PSM_SINGLE_BLOCK : tesseract::PSM_AUTO);
  if (engine_->Recognize(nullptr) != 0) return false;
  const std::unique_ptr<Results> at(engine_->GetIterator());
  if (!at) return true;
  do {
    const std::unique_ptr<char[]> read(at->GetUTF8Text(tesseract::RIL_TEXTLINE));
    if (!read) continue;
    ReadLine line;
    line.text = read.get();
    const std::size_t end = line.text.find_last_not_of(" \n");
    line.text.resize(end == std::string::npos ? 0 : end + 1);
    const auto characters = std::count_if(line.text.begin(), line.text.end(),
                                          [](char byte) { return (byte & 0xC0) != 0x80; });
    const float least = characters <= few ? leastCertaintyOfFew : leastCertainty;
    const bool isCertain = at->Confidence(tesseract::RIL_TEXTLINE) >= least || hasCertainWord(*at);
    if (line.text.empty() || !isCertain) continue;
    FoundLine& place = line.place;
    at->BoundingBox(tesseract::RIL_TEXTLINE, &place.left, &place.top, &place.right, &place.bottom);
    place.words = 1 + static_cast<int>(std::count(line.text.begin(), line.text.end(), ' '));
    lines.push_back(std::move(line));
  } while (at->Next(tesseract::RIL_TEXTLINE));
  return true;
}

Recognition TesseractReader::read(const Bitmap& picture) {
  Recognition result{Recognition::Outcome::read, {}, {}};
  const Pages pages(picture);
  if (pages.count() > 0 && !loaded_ && !loadLanguages())
    return {Recognition::Outcome::missingLanguage, {}, missingLanguageAdvice()};
  for (std::size_t i = 0; i < pages.count(); ++i)
    if (!readPage(pages.at(i), result.lines)) return {};
  if (loaded_) engine_->Clear();
  return result;
}

bool TesseractReader::readPage(const Page& page, std::vector<std::string>& text) {
  std::vector<ReadLine> lines;
  if (!recognize(page, {0, page.height}, false, lines)) return false;

  std::vector<FoundLine> places;
  for (const ReadLine& line : lines) places.push_back(line.place);
  std::vector<std::vector<ReadLine>> tables;
  const std::vector<Band> bands = tablesAmong(places);
  for (const Band& band : bands) {
    const int top = std::max(band.top - tablePad, 0);
    const int bottom = std::min(band.bottom + tablePad, page.height);
    if (!recognize(page, {top, bottom}, true, tables.emplace_back())) return false;
  }
  // A table takes the place of the first of its cells.
  for (ReadLine& line : lines) {
    const auto band = std::find_if(bands.begin(), bands.end(),
                                   [&](const Band& one) { return one.holds(line.place); });
    if (band == bands.end()) {
      text.push_back(std::move(line.text));
      continue;
    }
    auto& table = tables[static_cast<std::size_t>(band - bands.begin())];
    for (ReadLine& row : table) text.push_back(std::move(row.text));
    table.clear();
  }
  return true;
}

}  // namespace marbelot
