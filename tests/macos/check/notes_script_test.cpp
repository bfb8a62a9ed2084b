#include "platform/macos/notes_script.h"

#include <gtest/gtest.h>

namespace marbelot {
namespace {

TEST(NotesScript, HoldsAnyTextInItsQuotes) {
  EXPECT_EQ(notesScript("a \"b\\\"\r\nc\rd\n"),
            "tell application \"Notes\"\n    activate\n    make new note with properties "
            "{body:\"a \\\"b\\\\\\\"<br>c<br>d<br>\"}\nend tell");
}

}  // namespace
}  // namespace marbelot
