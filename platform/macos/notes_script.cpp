#include "platform/macos/notes_script.h"

namespace marbelot {

std::string notesScript(std::string_view text) {
  std::string script =
      "tell application \"Notes\"\n    activate\n    make new note with properties {body:\"";
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '\r' || c == '\n') {
      script += "<br>";
      if (c == '\r' && at + 1 < text.size() && text[at + 1] == '\n') ++at;
    } else {
      if (c == '\\' || c == '"') script += '\\';
      script += c;
    }
  }
  return script + "\"}\nend tell";
}

}  // namespace marbelot
