// A Wayland desktop with nothing but a clipboard, for tests of what no packaged desktop offers yet.
//
//   fake_wayland_desktop ext|wlr|none SOCKET
//
// Makes SOCKET, a path, says so on standard output and serves until SIGTERM. It behaves as desktops
// do that have the protocol, down to cancelling the source that is replaced and to telling
// newcomers what there is. Whoever copies the type "test/new-seat" replaces the seat.
#include <signal.h>
#include <unistd.h>
#include <wayland-server.h>

#include <algorithm>
#include <cstdio>
#include <list>
#include <string>
#include <vector>

#include "wlr-data-control-unstable-v1.server.h"

namespace {

struct Source {
  std::vector<std::string> types;
};

// The protocol's functions are C's, and there is one desktop.
// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables)
wl_resource* selection = nullptr;   // the source that owns the clipboard
std::vector<wl_resource*> devices;  // of the seat
wl_display* display = nullptr;
wl_global* seat = nullptr;
std::list<char> seats;  // one for each so far
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

void destroy(wl_client*, wl_resource* resource) { wl_resource_destroy(resource); }

const struct zwlr_data_control_offer_v1_interface offerRequests = {
    .receive =
        [](wl_client*, wl_resource* offer, const char* type, int pipe) {
          auto* source = static_cast<wl_resource*>(wl_resource_get_user_data(offer));
          if (source && source == selection)
            zwlr_data_control_source_v1_send_send(source, type, pipe);
          ::close(pipe);
        },
    .destroy = destroy};

void announce(wl_resource* device) {
  if (!selection) return zwlr_data_control_device_v1_send_selection(device, nullptr);
  wl_resource* offer = wl_resource_create(wl_resource_get_client(device),
                                          &zwlr_data_control_offer_v1_interface, 1, 0);
  wl_resource_set_implementation(offer, &offerRequests, selection, nullptr);
  zwlr_data_control_device_v1_send_data_offer(device, offer);
  for (const std::string& type : static_cast<Source*>(wl_resource_get_user_data(selection))->types)
    zwlr_data_control_offer_v1_send_offer(offer, type.c_str());
  zwlr_data_control_device_v1_send_selection(device, offer);
}

void select(wl_resource* source) {
  if (selection && selection != source) zwlr_data_control_source_v1_send_cancelled(selection);
  selection = source;
  for (wl_resource* device : devices) announce(device);
}

void makeSeat() {
  const auto bind = [](wl_client* client, void* mark, uint32_t version, uint32_t id) {
    wl_resource* made = wl_resource_create(client, &wl_seat_interface, version, id);
    wl_resource_set_user_data(made, mark);
    wl_seat_send_capabilities(made, 0);
  };
  seat = wl_global_create(display, &wl_seat_interface, 1, &seats.emplace_back(), bind);
}

void replaceSeat() {
  select(nullptr);
  for (wl_resource* device : devices) zwlr_data_control_device_v1_send_finished(device);
  devices.clear();
  wl_global_remove(seat);
  makeSeat();
}

const struct zwlr_data_control_source_v1_interface sourceRequests = {
    .offer =
        [](wl_client*, wl_resource* source, const char* type) {
          static_cast<Source*>(wl_resource_get_user_data(source))->types.emplace_back(type);
        },
    .destroy = destroy};

const struct zwlr_data_control_device_v1_interface deviceRequests = {
    .set_selection =
        [](wl_client*, wl_resource* device, wl_resource* source) {
          if (std::find(devices.begin(), devices.end(), device) == devices.end()) return;
          select(source);
          const auto& types = static_cast<Source*>(wl_resource_get_user_data(source))->types;
          if (types.front() == "test/new-seat") replaceSeat();
        },
    .destroy = destroy,
    .set_primary_selection = [](wl_client*, wl_resource*, wl_resource*) {}};

const struct zwlr_data_control_manager_v1_interface managerRequests = {
    .create_data_source =
        [](wl_client* client, wl_resource*, uint32_t id) {
          wl_resource* source =
              wl_resource_create(client, &zwlr_data_control_source_v1_interface, 1, id);
          wl_resource_set_implementation(
              source, &sourceRequests, new Source, [](wl_resource* gone) {
                if (gone == selection) {
                  selection = nullptr;
                  select(nullptr);
                }
                delete static_cast<Source*>(wl_resource_get_user_data(gone));
              });
        },
    .get_data_device =
        [](wl_client* client, wl_resource* manager, uint32_t id, wl_resource* of) {
          wl_resource* device = wl_resource_create(client, &zwlr_data_control_device_v1_interface,
                                                   wl_resource_get_version(manager), id);
          wl_resource_set_implementation(device, &deviceRequests, nullptr,
                                         [](wl_resource* gone) { std::erase(devices, gone); });
          if (wl_resource_get_user_data(of) != &seats.back()) return;
          devices.push_back(device);
          announce(device);
        },
    .destroy = destroy};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  wl_interface type = zwlr_data_control_manager_v1_interface;
  if (std::string(argv[1]) == "ext") {
    type.name = "ext_data_control_manager_v1";
    type.version = 1;
  }
  if (std::string(argv[1]) == "none") type.name = "none";
  display = wl_display_create();
  if (wl_display_add_socket(display, argv[2]) != 0) return 1;
  makeSeat();
  wl_global_create(display, &type, type.version, &type,
                   [](wl_client* client, void* kind, uint32_t version, uint32_t id) {
                     wl_resource* manager =
                         wl_resource_create(client, static_cast<wl_interface*>(kind), version, id);
                     wl_resource_set_implementation(manager, &managerRequests, nullptr, nullptr);
                   });
  wl_event_loop_add_signal(
      wl_display_get_event_loop(display), SIGTERM,
      [](int, void* running) {
        wl_display_terminate(static_cast<wl_display*>(running));
        return 0;
      },
      display);
  std::puts("ready");
  std::fflush(stdout);
  wl_display_run(display);
  wl_display_destroy_clients(display);
  wl_display_destroy(display);
}
