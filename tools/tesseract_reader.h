// Tesseract as this program uses it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/text_recognizer.h"
#include "recognition/prepared_page.h"
#include "recognition/table_rows.h"

namespace tesseract {
class TessBaseAPI;
}

namespace marbelot {

class TesseractReader {
 public:
  // `languages` as Tesseract calls them, the most wanted first; those that are installed are used,
  // or else English.
  explicit TesseractReader(std::vector<std::string> languages);
  ~TesseractReader();
  TesseractReader(const TesseractReader&) = delete;
  TesseractReader& operator=(const TesseractReader&) = delete;

  // Loads the languages with the first picture that may hold text.
  Recognition read(const Bitmap& picture);

 private:
  struct ReadLine {
    FoundLine place;
    std::string text;
  };

  bool loadLanguages();
  bool readPage(const Page& page, std::vector<std::string>& text);
  // Reads the band of the page; in columns, or row by row.
  bool recognize(const Page& page, Band band, bool asOneBlock, std::vector<ReadLine>& lines);

  const std::vector<std::string> languages_;
  std::unique_ptr<tesseract::TessBaseAPI> engine_;
  bool loaded_ = false;
};

}  // namespace marbelot
