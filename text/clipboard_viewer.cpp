#include "text/clipboard_viewer.h"

#include "platform/text.h"
#include "text/flatten_trim.h"
#include "text/large_text.h"

namespace marbelot {
namespace {

std::string titleFor(std::string_view text) {
  return viewerTitle(text::characterCount(text), lineCount(text));
}

std::string noText(const std::vector<std::string>& types) {
  std::string result = "(no text on clipboard)\n\nTypes: ";
  if (types.empty()) return result + "empty";
  for (std::size_t i = 0; i < types.size(); ++i) result += (i == 0 ? "" : ", ") + types[i];
  return result;
}

}  // namespace

ClipboardViewer::ClipboardViewer(Platform& platform, ActionTable& actions) : platform_(platform) {
  actions.add("showClipboardViewer", [this](const MenuItem&) { showClipboardViewer(); });
}

void ClipboardViewer::makeWindow() {
  WindowDescription window;
  window.id = "viewer";
  window.title = "Clipboard";
  window.contentSize = {520, 360};
  window.resizable = true;
  View text;
  text.id = viewerTextView;
  text.frame = {0, 0, 520, 360};
  text.resizing = {.width = true, .height = true};
  text.content = TextArea{.font = {.size = 12, .monospaced = true}, .inset = {8, 8}};
  window.views = {std::move(text)};
  // A password that was looked at is not kept for the life of the program.
  window.closed = [this] {
    counting_.cancel();
    viewerWindow->setText(viewerTextView, share({}));
  };
  viewerWindow = platform_.windows.create(std::move(window));
}

void ClipboardViewer::present(const SharedText& text, bool concealed) {
  if (!viewerWindow) makeWindow();
  counting_.cancel();
  viewerWindow->setText(viewerTextView, text, concealed);
  viewerWindow->center();
  viewerWindow->show();
}

void ClipboardViewer::showClipboardViewer() {
  const PasteboardContents contents = platform_.pasteboard.contents();
  present(contents.text ? contents.text : share(noText(contents.types)), contents.concealed);
  if (contents.text) {
    showCounts(contents.text);
  } else {
    viewerWindow->setTitle("Clipboard — no text");
  }
}

void ClipboardViewer::showText(const SharedText& text, const std::string& title) {
  present(text, false);
  viewerWindow->setTitle(title);
}

void ClipboardViewer::showCounts(const SharedText& text) {
  if (text->size() <= largeTextBytes) {
    viewerWindow->setTitle(titleFor(*text));
    return;
  }
  viewerWindow->setTitle("Clipboard");
  counting_ = platform_.queue.inBackground(
      [text] { return titleFor(*text); },
      [this](const std::string& title) { viewerWindow->setTitle(title); });
}

}  // namespace marbelot
