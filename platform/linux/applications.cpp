#include "platform/linux/applications.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <algorithm>
#include <memory>

namespace marbelot {
namespace {

constexpr const char* ownId = "org.marbelot.Marbelot.desktop";

struct Unref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
struct Free {
  void operator()(gpointer memory) const { g_free(memory); }
};
using AppInfo = std::unique_ptr<GAppInfo, Unref>;
using Text = std::unique_ptr<char, Free>;

std::string orEmpty(const char* text) { return text ? text : ""; }

std::string iconOf(GAppInfo* info) {
  GIcon* icon = g_app_info_get_icon(info);
  if (!icon) return {};
  const Text name(g_icon_to_string(icon));
  // A themed icon with several names is told in a form of GIO's own; the first is the best.
  if (G_IS_THEMED_ICON(icon)) {
    const gchar* const* names = g_themed_icon_get_names(G_THEMED_ICON(icon));
    return names && names[0] ? names[0] : "";
  }
  return orEmpty(name.get());
}

bool launch(GAppInfo* info, const std::string& uri, const std::vector<std::string>& withheld) {
  const std::unique_ptr<GAppLaunchContext, Unref> context(g_app_launch_context_new());
  for (const std::string& variable : withheld)
    g_app_launch_context_unsetenv(context.get(), variable.c_str());
  const std::unique_ptr<GList, decltype(&g_list_free)> uris(
      g_list_append(nullptr, const_cast<char*>(uri.c_str())), g_list_free);
  return g_app_info_launch_uris(info, uris.get(), context.get(), nullptr);
}

}  // namespace

std::vector<DesktopApplication> applicationsForScheme(const std::string& scheme) {
  std::vector<DesktopApplication> found;
  const auto add = [&](GAppInfo* info, bool isDefault) {
    DesktopApplication application{orEmpty(g_app_info_get_id(info)),
                                   orEmpty(g_app_info_get_name(info)), iconOf(info), isDefault};
    const bool known = std::any_of(found.begin(), found.end(), [&](const auto& other) {
      return other.id == application.id || other.name == application.name;
    });
    if (known || application.id.empty() || application.id == ownId || application.name.empty() ||
        application.name == "Marbelot")
      return;
    found.push_back(std::move(application));
  };
  if (const AppInfo info{g_app_info_get_default_for_uri_scheme(scheme.c_str())})
    add(info.get(), true);
  GList* const all = g_app_info_get_all_for_type(("x-scheme-handler/" + scheme).c_str());
  for (GList* at = all; at; at = at->next)
    if (g_app_info_should_show(G_APP_INFO(at->data))) add(G_APP_INFO(at->data), false);
  g_list_free_full(all, g_object_unref);
  return found;
}

bool launchWithUrl(const std::string& url, const std::string& id,
                   const std::vector<std::string>& withheld) {
  const std::string scheme = url.substr(0, url.find(':'));
  const AppInfo info(id.empty() ? g_app_info_get_default_for_uri_scheme(scheme.c_str())
                                : G_APP_INFO(g_desktop_app_info_new(id.c_str())));
  return info && launch(info.get(), url, withheld);
}

bool launchWithFile(const std::string& path, const std::vector<std::string>& withheld) {
  const std::unique_ptr<GFile, Unref> file(g_file_new_for_path(path.c_str()));
  const AppInfo info(g_file_query_default_handler(file.get(), nullptr, nullptr));
  const Text uri(g_file_get_uri(file.get()));
  return info && launch(info.get(), uri.get(), withheld);
}

}  // namespace marbelot
