// Windows and dialogs as data. Lengths are points, the origin is the bottom left corner, y grows
// up.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/value.h"

namespace marbelot {

struct Size {
  double width = 0;
  double height = 0;
};

struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

enum class ViewKind {
  label,   // one line, not editable
  button,  // a push button
  text,    // plain text that scrolls vertically
};

// What follows the window's growth; the sides that are not flexible keep their distance.
struct Resizing {
  bool width = false;
  bool height = false;
  bool leftMargin = false;
};

struct Font {
  double size = 13;
  bool monospaced = false;
};

struct View {
  std::string id;  // unique in its window
  ViewKind kind = ViewKind::label;
  Rect frame;
  Resizing resizing;
  Font font;
  std::string text;        // a button's or label's title, a text's first contents
  bool secondary = false;  // label in the secondary colour
  bool editable = false;   // text; undone by words and pauses. One only to be read has no caret
  bool bordered = false;   // text: a bezel around it
  Size inset;              // text: blank space around it
  bool defaultKey =
      false;  // button: pressed by Return while no text takes it; see WindowDescription
};

struct WindowDescription {
  std::string id;  // what `marbelotctl windows` calls it
  std::string title;
  Size contentSize;
  bool closable = true;
  bool miniaturizable = false;
  bool resizable = false;
  bool escapeCloses = true;
  std::vector<View> views;
  // A button was pressed. A multi-line text keeps Return for itself; Command (Control) and Return
  // press the default button from there, which its tool tip tells. A click on a button leaves the
  // focus where it is. Command-W closes the window, and Escape where it is told to.
  std::function<void(const std::string& viewId)> pressed;
  // The window was closed; it may be shown again.
  std::function<void()> closed;
};

// A live window. Made hidden, kept when closed, destroyed with its handle.
class Window {
 public:
  virtual ~Window() = default;
  // Activates the application and brings the window to the front as the key window.
  virtual void show() = 0;
  // Leaves a window alone that fills its screen.
  virtual void center() = 0;
  virtual bool isVisible() const = 0;
  virtual void setTitle(const std::string& title) = 0;
  // What the user copies from a `concealed` text is marked so for other programs, too.
  virtual void setText(const std::string& viewId, const SharedText& text, bool concealed) = 0;
  void setText(const std::string& viewId, const SharedText& text) { setText(viewId, text, false); }
  // The very text that was set as long as the user has not changed it; of a changed one, only what
  // was changed is read from the view. Undoing never takes back at once what was typed before and
  // after this. Never null.
  virtual SharedText text(const std::string& viewId) const = 0;
  virtual void focus(const std::string& viewId) = 0;
};

struct WindowInfo {
  std::string id;
  std::string title;
  Rect frame;  // points; y down from the top of the first screen
};

class Windows {
 public:
  virtual ~Windows() = default;
  virtual std::unique_ptr<Window> create(WindowDescription description) = 0;
  // The visible windows and dialogs of the program.
  virtual std::vector<WindowInfo> visible() const = 0;
};

struct Alert {
  std::string id;  // what is asked; empty for one that may be open several times
  std::string message;
  std::string informative;
  std::vector<std::string> buttons;  // the first is the affirmative one
  std::string toolTip;               // of that one
  std::vector<View> accessory;       // at most one; an editable text gets the focus
};

struct AlertAnswer {
  std::size_t button = 0;  // closing or Escape answers with the last one
  std::string text;        // the accessory's text
};

// Asks for a folder, which may be made on the spot.
struct FolderPanel {
  std::string id;      // while one with the same id is open, that one comes to the front instead
  std::string prompt;  // the affirmative button's title
  std::string message;
};

class Dialogs {
 public:
  virtual ~Dialogs() = default;
  // Activates the application, shows the panel modally, and tells the chosen folder's path; nothing
  // when it is cancelled.
  virtual void chooseFolder(FolderPanel panel,
                            std::function<void(const std::string& folder)> chosen) = 0;
  // Activates the application, shows the alert modally, of a fixed size, and answers once. While
  // one with the same id is open, that one comes to the front instead, and only its own `answered`
  // is called.
  virtual void present(Alert alert, std::function<void(AlertAnswer)> answered) = 0;
};

}  // namespace marbelot
