// Windows, panels and dialogs as data. Lengths are points, the origin is the bottom left corner, y
// grows up.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/keyboard.h"
#include "platform/menu.h"
#include "platform/value.h"
#include "platform/view.h"

namespace marbelot {

enum class WindowLevel {
  normal,
  floating,  // above other programs' windows
  raised,    // above full-screen windows and the desktop's own panels, too, but below menus
  overlay,   // above everything, menus included
};

// A window of the program, or a panel that shows something while the user works elsewhere.
struct WindowDescription {
  std::string id;  // its kind, as `marbelotctl windows` calls it; several may have the same
  std::string title;
  Size contentSize;
  std::vector<View> views;

  // Frame and title bar. Without them the window is its content, which is clear where no view draws
  // and has smooth edges, as far as the desktop can mix windows. Where it cannot, the corners are
  // cut out and what is translucent is opaque.
  bool titled = true;
  bool closable = true;
  bool miniaturizable = false;
  bool resizable = false;
  bool escapeCloses = true;  // only of a titled one

  WindowLevel level = WindowLevel::normal;
  // A click on it, or showing it without activating, leaves the application that is active alone.
  // It takes keys only after a click that asks for them: on a text, or, on a system that shows
  // other programs' keys to nobody unless it is trusted, on a canvas where `keyDown` wants them; or
  // when it is made the key window.
  bool panel = false;
  bool everySpace = false;       // on every desktop, not among those cycled
  bool besideFullScreen = true;  // where `everySpace` is set: on those of full-screen windows, too
  bool shadow = true;
  bool ignoresMouse = false;         // clicks go to what is below
  bool movableByBackground = false;  // dragged wherever no view takes the mouse
  double alpha = 1;                  // of the whole window

  // A button was pressed. A multi-line text keeps Return for itself; Command (Control) and Return
  // press the default button from there, which its tool tip tells. A click on a button leaves the
  // focus where it is. Command-W closes the window, and Escape where it is told to.
  std::function<void(const std::string& viewId)> pressed;
  // The window was closed by the user; it may be shown again.
  std::function<void()> closed;
  // The user moved it, or `setFrame` did.
  std::function<void()> moved;
  // A key pressed while it is the key window and no text takes it. True: it goes no further.
  std::function<bool(const KeyEvent&)> keyDown;
};

// A live window. Made hidden, kept when closed, destroyed with its handle.
class Window {
 public:
  virtual ~Window() = default;
  // Activates the application and brings the window to the front as the key window.
  virtual void show() = 0;
  // Brings it to the front; whoever has the keys keeps them.
  virtual void showWithoutActivating() = 0;
  virtual void hide() = 0;
  // Makes it vanish within a quarter of a second, then hides it. Showing it, or moving it, makes it
  // stay.
  virtual void fadeOut() = 0;
  // In the middle of the screen with the pointer. Leaves a window alone that fills its screen.
  virtual void center() = 0;
  virtual bool isVisible() const = 0;
  // Whether keys go to it.
  virtual bool isKey() const = 0;
  // In screen coordinates, title bar included. Also while it is hidden.
  virtual Rect frame() const = 0;
  // `animated`: gets there within a quarter of a second; frame() tells the new one at once.
  virtual void setOrigin(Point origin, bool animated = false) = 0;
  virtual void setFrame(const Rect& frame) = 0;
  // Makes every key of every keyboard come to this window, those that other programs have claimed
  // as shortcuts included, until it is hidden or the program ends, in whatever way. False when the
  // system refuses, if only for a moment, because another program's shortcut has the keyboard.
  // Where it must leave some keys to others, it says so, in one line, else nothing. The window is
  // closed when they all go to another one.
  virtual bool grabKeyboard(std::string& leftOut) = 0;
  // The user drags the window with the mouse button that is down.
  virtual void performDrag() = 0;

  virtual void setTitle(const std::string& title) = 0;
  // Replaces all views, and the size of the content, keeping its lower left corner.
  virtual void setContent(Size contentSize, std::vector<View> views) = 0;
  // Draws a canvas again.
  virtual void redraw(const std::string& viewId) = 0;
  // What the user copies from a `concealed` text is marked so for other programs, too.
  virtual void setText(const std::string& viewId, const SharedText& text, bool concealed) = 0;
  void setText(const std::string& viewId, const SharedText& text) { setText(viewId, text, false); }
  // The very text that was set as long as the user has not changed it; of a changed one, only what
  // was changed is read from the view. Undoing never takes back at once what was typed before and
  // after this. Never null.
  virtual SharedText text(const std::string& viewId) const = 0;
  virtual void focus(const std::string& viewId) = 0;
  // Presses a button as a click does. False when there is no such button, or it is disabled.
  virtual bool press(const std::string& viewId) = 0;
  // Opens a menu right below the view. `chosen` gets the item, unless the menu is dismissed.
  virtual void popUpMenu(const std::string& viewId, std::shared_ptr<Menu> menu,
                         std::function<void(const MenuItem&)> chosen) = 0;
  // The view at a point in screen coordinates, which may be covered by another window: its id,
  // empty when there is none that has one.
  virtual std::string viewAt(Point point) const = 0;
};

struct ButtonInfo {
  std::string id;
  std::string title;  // its symbol's name where it has none
  bool enabled = true;
};

struct WindowInfo {
  std::string id;
  std::string title;
  Rect frame;  // in screen coordinates
  bool focused = false;
  std::vector<ButtonInfo> buttons;
  Window* window = nullptr;  // null for dialogs and menus
};

class Windows {
 public:
  virtual ~Windows() = default;
  virtual std::unique_ptr<Window> create(WindowDescription description) = 0;
  // The visible windows and dialogs of the program.
  virtual std::vector<WindowInfo> visible() const = 0;
  // The width of `text` on one line, in points, as labels, buttons and painters draw it.
  virtual double textWidth(const std::string& text, const Font& font) const = 0;
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

// Asks for a file to write.
struct FilePanel {
  std::string id;         // while one with the same id is open, that one comes to the front instead
  std::string folder;     // where it starts
  std::string name;       // as proposed
  std::string extension;  // the only one allowed, e.g. "txt"; added where it is left out
  std::string kind;       // what such files are called
};

class Dialogs {
 public:
  virtual ~Dialogs() = default;
  // Activates the application, shows the panel modally, and tells the chosen folder's path; nothing
  // when it is cancelled.
  virtual void chooseFolder(FolderPanel panel,
                            std::function<void(const std::string& folder)> chosen) = 0;
  // The same for a file's path, which may be that of a file that the user agreed to replace.
  virtual void saveFile(FilePanel panel, std::function<void(const std::string& path)> chosen) = 0;
  // Activates the application, shows the alert modally, of a fixed size, and answers once. While
  // one with the same id is open, that one comes to the front instead, and only its own `answered`
  // is called.
  virtual void present(Alert alert, std::function<void(AlertAnswer)> answered) = 0;
};

}  // namespace marbelot
