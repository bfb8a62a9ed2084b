// marbelot-imaging ENCODING: reads an encoded image from the file that is standard input and writes
// it in one of the `encodings` to the file that is standard output. marbelot-imaging pixels: writes
// its pixels. Exit status 0 done, 1 damaged or too large, 2 usage.
//
// PNG to pixels is the most frequent and done here; all else needs libraries whose loading alone
// takes fifteen milliseconds, and is the other program's.
#include <unistd.h>

#include <string>

#include "platform/linux/helper_program.h"
#include "platform/linux/imaging.h"
#include "platform/linux/png_reader.h"
#include "tools/imaging_process.h"

int main(int argc, char** argv) {
  marbelot::limitResources();
  const std::string_view bytes = marbelot::standardInput();
  if (argc == 2 && argv[1] == marbelot::pixelsTask && marbelot::isOurPng(bytes))
    return marbelot::decodePng(bytes, marbelot::outputBitmap) ? 0 : 1;
  const std::string formats = marbelot::helperPath("marbelot-formats");
  ::execvp(formats.c_str(), argv);
  return 1;
}
