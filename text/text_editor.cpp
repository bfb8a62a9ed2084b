#include "text/text_editor.h"

namespace marbelot {
namespace {

constexpr const char* clipboardTitle = "Edit clipboard text";
constexpr double barHeight = 44;  // points, under the text

}  // namespace

TextEditor::TextEditor(Platform& platform, Shell& shell, ActionTable& actions,
                       HistoryText historyText)
    : platform_(platform), shell_(shell), historyText_(std::move(historyText)) {
  actions.add("editClipboardText", [this](const MenuItem&) { editClipboardText(); });
  actions.add("editClipHistoryText:", [this](const MenuItem& sender) {
    if (const SharedText text = historyText_(sender)) openEditor(text, clipboardTitle);
  });
  actions.add("saveEditorToClipboard:", [this](const MenuItem&) { saveEditorToClipboard(); });
}

void TextEditor::makeWindow() {
  WindowDescription window;
  window.id = "editor";
  window.contentSize = {560, 420};
  window.miniaturizable = true;
  window.resizable = true;
  // What was typed is not lost to a key that is pressed in passing.
  window.escapeCloses = false;

  View text;
  text.id = editTextView;
  text.frame = {0, barHeight, 560, 420 - barHeight};
  text.resizing = {.width = true, .height = true};
  text.content = TextArea{.font = {.size = 13, .monospaced = true}, .editable = true};

  View hint;
  hint.id = "hint";
  hint.frame = {12, 14, 560 - 200, 16};
  hint.resizing = {.width = true};
  hint.content = Label{.text = "Edit, then Save to update the clipboard.",
                       .font = {.size = 11},
                       .color = Color::of(Color::Role::secondaryLabel)};

  View save;
  save.id = "save";
  save.frame = {560 - 12 - 168, 8, 168, 28};
  save.resizing = {.leftMargin = true};
  save.content = Button{.title = "Save to clipboard", .defaultKey = true};

  window.views = {std::move(text), std::move(hint), std::move(save)};
  window.pressed = [this](const std::string&) { saveEditorToClipboard(); };
  // Opening the window replaces its text, so nobody would see this one again.
  window.closed = [this] { editTextWindow->setText(editTextView, share({})); };
  editTextWindow = platform_.windows.create(std::move(window));
}

void TextEditor::openEditor(const SharedText& text, const std::string& title, bool concealed) {
  concealed_ = concealed;
  if (!editTextWindow) makeWindow();
  editTextWindow->setText(editTextView, text, concealed_);
  editTextWindow->setTitle(title);
  if (!editTextWindow->isVisible()) editTextWindow->center();
  editTextWindow->show();
  editTextWindow->focus(editTextView);
}

void TextEditor::editClipboardText() {
  const PasteboardContents contents = platform_.pasteboard.contents();
  openEditor(contents.text ? contents.text : share({}), clipboardTitle, contents.concealed);
}

// Put back rather than copied anew: it is not recorded.
void TextEditor::saveEditorToClipboard() {
  if (!editTextWindow || !editTextWindow->isVisible()) return;
  const SharedText text = editTextWindow->text(editTextView);
  shell_.confirmCopy(shell_.copyWithoutRecording(text, concealed_),
                     "Saved edited text to clipboard");
}

}  // namespace marbelot
