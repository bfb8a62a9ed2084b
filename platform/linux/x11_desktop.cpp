#include "platform/linux/x11_desktop.h"

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <QGuiApplication>
#include <QWindow>
#include <cmath>
#include <string_view>
#include <vector>

#include "platform/linux/x11_connection.h"

namespace marbelot {
namespace {

xcb_window_t rootWindow() {
  return xcb_setup_roots_iterator(xcb_get_setup(toolkitConnection())).data->root;
}

xcb_atom_t atom(std::string_view name) {
  const X11Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
      toolkitConnection(),
      xcb_intern_atom(toolkitConnection(), 0, static_cast<std::uint16_t>(name.size()), name.data()),
      nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void setProperty(const QWidget& window, std::string_view name, xcb_atom_t type,
                 const std::vector<std::uint32_t>& values) {
  xcb_change_property(toolkitConnection(), XCB_PROP_MODE_REPLACE,
                      static_cast<xcb_window_t>(window.winId()), atom(name), type, 32,
                      static_cast<std::uint32_t>(values.size()), values.data());
}

std::vector<std::uint32_t> property(xcb_window_t window, xcb_atom_t name, xcb_atom_t type) {
  constexpr std::uint32_t most = 4096;  // values
  const X11Reply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
      toolkitConnection(), xcb_get_property(toolkitConnection(), 0, window, name, type, 0, most),
      nullptr));
  if (!reply || reply->format != 32) return {};
  const auto* const first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
  return {first, first + reply->value_len};
}

// The edges of the desktop that windows keep free, in pixels of all screens together.
struct Strut {
  std::uint32_t left, right, top, bottom, leftFrom, leftTo, rightFrom, rightTo, topFrom, topTo,
      bottomFrom, bottomTo;
};

std::vector<Strut> struts() {
  std::vector<Strut> found;
  const xcb_atom_t partial = atom("_NET_WM_STRUT_PARTIAL");
  for (const xcb_window_t window :
       property(rootWindow(), atom("_NET_CLIENT_LIST"), XCB_ATOM_WINDOW)) {
    const auto values = property(window, partial, XCB_ATOM_CARDINAL);
    if (values.size() < 12) continue;
    found.push_back({values[0], values[1], values[2], values[3], values[4], values[5], values[6],
                     values[7], values[8], values[9], values[10], values[11]});
  }
  return found;
}

// What the strut leaves of a screen, both in pixels.
QRect without(const Strut& strut, QRect screen, QSize desktop) {
  const auto overlaps = [](std::uint32_t from, std::uint32_t to, int low, int high) {
    return static_cast<int>(from) <= high && static_cast<int>(to) >= low;
  };
  const auto edge = [](std::uint32_t value) { return static_cast<int>(value); };
  if (strut.top > 0 && overlaps(strut.topFrom, strut.topTo, screen.left(), screen.right()) &&
      edge(strut.top) <= screen.bottom())
    screen.setTop(std::max(screen.top(), edge(strut.top)));
  if (strut.left > 0 && overlaps(strut.leftFrom, strut.leftTo, screen.top(), screen.bottom()) &&
      edge(strut.left) <= screen.right())
    screen.setLeft(std::max(screen.left(), edge(strut.left)));
  if (const int last = desktop.height() - edge(strut.bottom) - 1;
      strut.bottom > 0 && last >= screen.top() &&
      overlaps(strut.bottomFrom, strut.bottomTo, screen.left(), screen.right()))
    screen.setBottom(std::min(screen.bottom(), last));
  if (const int last = desktop.width() - edge(strut.right) - 1;
      strut.right > 0 && last >= screen.left() &&
      overlaps(strut.rightFrom, strut.rightTo, screen.top(), screen.bottom()))
    screen.setRight(std::min(screen.right(), last));
  return screen;
}

}  // namespace

bool isWayland() { return qEnvironmentVariableIsSet("WAYLAND_DISPLAY"); }

xcb_connection_t* toolkitConnection() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 ? x11->connection() : nullptr;
}

bool isOwned(std::string_view selection) {
  if (!toolkitConnection()) return false;
  const X11Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
      toolkitConnection(), xcb_get_selection_owner(toolkitConnection(), atom(selection)), nullptr));
  return owner && owner->owner != XCB_WINDOW_NONE;
}

bool isComposited() { return toolkitConnection() ? isOwned("_NET_WM_CM_S0") : isWayland(); }

// The work area that window managers tell is one rectangle for all screens together, so that Qt
// knows none for each of several. The panels themselves tell where they are.
QRect usableArea(const QScreen& screen) {
  if (!toolkitConnection() || QGuiApplication::screens().size() < 2)
    return screen.availableGeometry();
  const X11Reply<xcb_get_geometry_reply_t> root(xcb_get_geometry_reply(
      toolkitConnection(), xcb_get_geometry(toolkitConnection(), rootWindow()), nullptr));
  if (!root) return screen.availableGeometry();
  // Qt scales the size of a screen, but not where it begins.
  const double scale = screen.devicePixelRatio();
  const QRect points = screen.geometry();
  const QRect pixels(points.topLeft(), (QSizeF(points.size()) * scale).toSize());
  QRect left = pixels;
  for (const Strut& strut : struts()) left = without(strut, left, QSize(root->width, root->height));
  const QPointF inset = QPointF(left.topLeft() - pixels.topLeft()) / scale;
  return {points.topLeft() + inset.toPoint(), (QSizeF(left.size()) / scale).toSize()};
}

void putOnEveryDesktop(QWidget& window) {
  if (!toolkitConnection()) return;
  constexpr std::uint32_t everyDesktop = 0xFFFFFFFF;
  setProperty(window, "_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, {everyDesktop});
  // Qt adds its own ones when the window is shown.
  setProperty(window, "_NET_WM_STATE", XCB_ATOM_ATOM,
              {atom("_NET_WM_STATE_STICKY"), atom("_NET_WM_STATE_SKIP_TASKBAR"),
               atom("_NET_WM_STATE_SKIP_PAGER")});
}

void takeMouseOnlyIn(QWidget& window, const QRegion* region) {
  if (!toolkitConnection()) return;
  const auto id = static_cast<xcb_window_t>(window.winId());
  if (!region) {
    xcb_xfixes_set_window_shape_region(toolkitConnection(), id, /*XCB_SHAPE_SK_INPUT*/ 2, 0, 0,
                                       XCB_NONE);
    return;
  }
  const double scale = window.devicePixelRatioF();
  std::vector<xcb_rectangle_t> rectangles;
  for (const QRect& rect : *region) {
    const QRect pixels =
        QRectF(QPointF(rect.topLeft()) * scale, QSizeF(rect.size()) * scale).toAlignedRect();
    rectangles.push_back(
        {static_cast<std::int16_t>(pixels.x()), static_cast<std::int16_t>(pixels.y()),
         static_cast<std::uint16_t>(pixels.width()), static_cast<std::uint16_t>(pixels.height())});
  }
  const xcb_xfixes_region_t made = xcb_generate_id(toolkitConnection());
  xcb_xfixes_create_region(toolkitConnection(), made, static_cast<std::uint32_t>(rectangles.size()),
                           rectangles.data());
  xcb_xfixes_set_window_shape_region(toolkitConnection(), id, 2, 0, 0, made);
  xcb_xfixes_destroy_region(toolkitConnection(), made);
}

void setShadowMargin(QWidget& window, int margin) {
  if (!toolkitConnection()) return;
  // By this GTK's windows tell it, and every compositor listens.
  const auto pixels = static_cast<std::uint32_t>(std::lround(margin * window.devicePixelRatioF()));
  setProperty(window, "_GTK_FRAME_EXTENTS", XCB_ATOM_CARDINAL, {pixels, pixels, pixels, pixels});
}

}  // namespace marbelot
