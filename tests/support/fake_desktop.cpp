// What a desktop offers on the session bus, without a desktop: a ScreenCast portal, which shares a given PipeWire node,
// refuses, or never answers, and a screen saver.
// Usage: fake_desktop share NODE [SECONDS [DELAY]] | refuse | ignore
// Says on its standard output what it is asked for. Its user takes DELAY milliseconds to answer, and ends the sharing
// after SECONDS, 0 for never.

#include <gio/gio.h>
#include <gio/gunixfdlist.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

constexpr char portal_path[] = "/org/freedesktop/portal/desktop";

constexpr char interfaces[] = R"(<node>
  <interface name="org.freedesktop.portal.ScreenCast">
    <method name="CreateSession"><arg type="a{sv}" direction="in"/><arg type="o" direction="out"/></method>
    <method name="SelectSources"><arg type="o" direction="in"/><arg type="a{sv}" direction="in"/>
      <arg type="o" direction="out"/></method>
    <method name="Start"><arg type="o" direction="in"/><arg type="s" direction="in"/>
      <arg type="a{sv}" direction="in"/><arg type="o" direction="out"/></method>
    <method name="OpenPipeWireRemote"><arg type="o" direction="in"/><arg type="a{sv}" direction="in"/>
      <arg type="h" direction="out"/></method>
    <property name="AvailableSourceTypes" type="u" access="read"/>
    <property name="AvailableCursorModes" type="u" access="read"/>
  </interface>
  <interface name="org.freedesktop.portal.Session"><method name="Close"/><signal name="Closed"/></interface>
  <interface name="org.freedesktop.ScreenSaver">
    <method name="Inhibit"><arg type="s" direction="in"/><arg type="s" direction="in"/>
      <arg type="u" direction="out"/></method>
    <method name="UnInhibit"><arg type="u" direction="in"/></method>
  </interface>
</node>)";

struct Portal {
  std::string answer;
  std::uint32_t node = 0;
  guint seconds = 0;
  guint delay = 0;
  GDBusConnection* bus = nullptr;
  GDBusNodeInfo* info = nullptr;
  GDBusInterfaceVTable table{};
  std::string session;
} portal;

void say(const std::string& line) {
  std::printf("%s\n", line.c_str());
  std::fflush(stdout);
}

/// A request's or session's path as the caller knows it beforehand.
std::string path_of(const char* kind, const gchar* sender, GVariant* options, const char* key) {
  const gchar* token = "";
  g_variant_lookup(options, key, "&s", &token);
  std::string name = sender + 1;
  std::replace(name.begin(), name.end(), '.', '_');
  return std::string(portal_path) + "/" + kind + "/" + name + "/" + token;
}

struct Response {
  std::string request;
  GVariant* arguments;
};

gboolean send(gpointer data) {
  const std::unique_ptr<Response> response(static_cast<Response*>(data));
  g_dbus_connection_emit_signal(portal.bus, nullptr, response->request.c_str(), "org.freedesktop.portal.Request",
                                "Response", response->arguments, nullptr);
  return G_SOURCE_REMOVE;
}

void respond(const std::string& request, guint delay, std::uint32_t code, GVariantBuilder* results) {
  auto* const response = new Response{request, g_variant_new("(ua{sv})", code, results)};
  if (delay == 0) {
    send(response);
  } else {
    g_timeout_add(delay, send, response);
  }
}

gboolean end_session(gpointer) {
  say("the user ends the sharing");
  g_dbus_connection_emit_signal(portal.bus, nullptr, portal.session.c_str(), "org.freedesktop.portal.Session", "Closed",
                                nullptr, nullptr);
  return G_SOURCE_REMOVE;
}

/// As the real one: a connection of the client's own to PipeWire.
int pipewire_socket() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = std::string(std::getenv("XDG_RUNTIME_DIR")) + "/pipewire-0";
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) std::perror("pipewire-0");
  return fd;
}

std::string option_text(GVariant* options, const char* key) {
  std::uint32_t value = 0;
  return g_variant_lookup(options, key, "u", &value) ? std::to_string(value) : "none";
}

void on_call(GDBusConnection*, const gchar* sender, const gchar*, const gchar*, const gchar* method,
             GVariant* arguments, GDBusMethodInvocation* invocation, gpointer) {
  if (std::strcmp(method, "Close") == 0) {
    say("session closed");
    g_dbus_method_invocation_return_value(invocation, nullptr);
    return;
  }
  GVariant* options = g_variant_get_child_value(arguments, g_variant_n_children(arguments) - 1);
  GVariantBuilder results;
  g_variant_builder_init(&results, G_VARIANT_TYPE_VARDICT);
  if (std::strcmp(method, "OpenPipeWireRemote") == 0) {
    const int fd = pipewire_socket();
    GUnixFDList* list = g_unix_fd_list_new_from_array(&fd, 1);
    g_dbus_method_invocation_return_value_with_unix_fd_list(invocation, g_variant_new("(h)", 0), list);
    g_object_unref(list);
    if (portal.seconds != 0) g_timeout_add_seconds(portal.seconds, end_session, nullptr);
  } else {
    const std::string request = path_of("request", sender, options, "handle_token");
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(o)", request.c_str()));
    std::uint32_t code = 0;
    if (std::strcmp(method, "CreateSession") == 0) {
      portal.session = path_of("session", sender, options, "session_handle_token");
      g_dbus_connection_register_object(portal.bus, portal.session.c_str(), portal.info->interfaces[1], &portal.table,
                                        nullptr, nullptr, nullptr);
      g_variant_builder_add(&results, "{sv}", "session_handle", g_variant_new_string(portal.session.c_str()));
    } else if (std::strcmp(method, "SelectSources") == 0) {
      say("types " + option_text(options, "types") + ", cursor " + option_text(options, "cursor_mode"));
    } else if (portal.answer == "share") {
      GVariantBuilder streams;
      g_variant_builder_init(&streams, G_VARIANT_TYPE("a(ua{sv})"));
      g_variant_builder_add(&streams, "(ua{sv})", portal.node, nullptr);
      g_variant_builder_add(&results, "{sv}", "streams", g_variant_builder_end(&streams));
    } else {
      code = 1;
    }
    if (code != 0 && portal.answer == "ignore") {
      g_variant_builder_clear(&results);
    } else {
      respond(request, std::strcmp(method, "Start") == 0 ? portal.delay : 0, code, &results);
    }
  }
  g_variant_unref(options);
}

void on_saver_call(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* method, GVariant* arguments,
                   GDBusMethodInvocation* invocation, gpointer) {
  constexpr std::uint32_t cookie = 7;
  if (std::strcmp(method, "Inhibit") == 0) {
    const gchar *who = "", *why = "";
    g_variant_get(arguments, "(&s&s)", &who, &why);
    say(std::string("kept awake by ") + who + ": " + why);
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(u)", cookie));
  } else {
    std::uint32_t given = 0;
    g_variant_get(arguments, "(u)", &given);
    say(given == cookie ? "may sleep" : "a cookie that nobody has");
    g_dbus_method_invocation_return_value(invocation, nullptr);
  }
}

GVariant* on_get(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GError**, gpointer) {
  // Sources: monitors, windows. Cursors: hidden, drawn.
  return g_variant_new_uint32(3);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  portal.answer = argv[1];
  if (argc > 2) portal.node = static_cast<std::uint32_t>(std::atoi(argv[2]));
  if (argc > 3) portal.seconds = static_cast<guint>(std::atoi(argv[3]));
  if (argc > 4) portal.delay = static_cast<guint>(std::atoi(argv[4]));
  portal.table.method_call = on_call;
  portal.table.get_property = on_get;
  portal.info = g_dbus_node_info_new_for_xml(interfaces, nullptr);
  portal.bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  if (portal.info == nullptr || portal.bus == nullptr) return 1;
  g_dbus_connection_register_object(portal.bus, portal_path, portal.info->interfaces[0], &portal.table, nullptr,
                                    nullptr, nullptr);
  GDBusInterfaceVTable saver{};
  saver.method_call = on_saver_call;
  g_dbus_connection_register_object(portal.bus, "/org/freedesktop/ScreenSaver", portal.info->interfaces[2], &saver,
                                    nullptr, nullptr, nullptr);
  g_bus_own_name_on_connection(portal.bus, "org.freedesktop.ScreenSaver", G_BUS_NAME_OWNER_FLAGS_REPLACE, nullptr,
                               nullptr, nullptr, nullptr);
  g_bus_own_name_on_connection(
      portal.bus, "org.freedesktop.portal.Desktop", G_BUS_NAME_OWNER_FLAGS_REPLACE,
      [](GDBusConnection*, const gchar*, gpointer) { say("ready"); }, nullptr, nullptr, nullptr);
  g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
