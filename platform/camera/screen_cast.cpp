#include "platform/camera/screen_cast.h"

#include <gio/gio.h>
#include <gio/gunixfdlist.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "platform/camera/long_wait.h"

namespace handset {
namespace {

using std::chrono::milliseconds;

constexpr char portal_name[] = "org.freedesktop.portal.Desktop";
constexpr char portal_path[] = "/org/freedesktop/portal/desktop";
constexpr char cast_interface[] = "org.freedesktop.portal.ScreenCast";
constexpr char request_interface[] = "org.freedesktop.portal.Request";
constexpr char session_interface[] = "org.freedesktop.portal.Session";

// Bits of the portal's properties and options.
constexpr std::uint32_t source_monitor = 1;
constexpr std::uint32_t cursor_embedded = 2;

constexpr milliseconds portal_limit{10'000};  ///< for steps without the user
constexpr milliseconds user_limit{120'000};   ///< time to read, choose and click

struct VariantDeleter {
  void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using VariantPtr = std::unique_ptr<GVariant, VariantDeleter>;

struct ObjectDeleter {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using GObjectPtr = std::unique_ptr<T, ObjectDeleter>;

constexpr char portal_has_ended[] = "the desktop's portal has ended";

/// An error's message on one line. Frees the error.
std::string reason_of(GError* error) {
  g_dbus_error_strip_remote_error(error);
  std::string reason = error->message;
  if (g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
      g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) ||
      g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_METHOD)) {
    reason = "the desktop has no portal for sharing it";
  } else if (g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY)) {
    reason = portal_has_ended;  // the bus says so when a called program goes; a timeout is another error
  }
  g_error_free(error);
  std::replace(reason.begin(), reason.end(), '\n', ' ');
  return reason;
}

/// The options of a portal request, including its handle.
GVariantBuilder options_with_token(const char* token) {
  GVariantBuilder options;
  g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(token));
  return options;
}

/// The portal's answer to a request.
struct Response {
  bool come = false;
  std::uint32_t code = 0;  ///< 0 granted, 1 refused by the user, 2 failed
  VariantPtr results;
};

void take_response(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* arguments,
                   gpointer data) {
  auto* response = static_cast<Response*>(data);
  if (!g_variant_is_of_type(arguments, G_VARIANT_TYPE("(ua{sv})"))) return;
  GVariant* results = nullptr;
  g_variant_get(arguments, "(u@a{sv})", &response->code, &results);
  response->results.reset(results);
  response->come = true;
}

}  // namespace

/// One conversation with the portal, and the resulting session. Each step returns empty, or why it failed.
class ScreenCast::Session {
 public:
  Session() : thread_([this] { run(); }) {}

  ~Session() {
    stop_ = true;
    g_cancellable_cancel(cancellable_.get());
    g_main_context_wakeup(context_);
    thread_.join();
    if (remote_ >= 0) close(remote_);
    g_main_context_unref(context_);
  }

  /// Whether the portal has answered or never will. Any thread; once true, the rest may be read.
  bool settled() const { return settled_; }
  bool ended() const { return ended_; }
  const std::string& error() const { return error_; }
  int remote() const { return remote_; }
  std::uint32_t node() const { return node_; }

 private:
  void run() {
    g_main_context_push_thread_default(context_);
    error_ = converse();
    const bool granted = error_.empty();
    settled_ = true;
    while (granted && !stop_) g_main_context_iteration(context_, TRUE);
    end_session();
    connection_.reset();
    g_main_context_pop_thread_default(context_);
  }

  std::string converse() {
    std::string why = connect();
    if (why.empty()) why = create();
    if (why.empty()) why = select();
    if (why.empty()) why = start();
    if (why.empty()) why = open_remote();
    return why;
  }

  /// The shared bus connection would end the program if the bus goes away.
  std::string connect() {
    GError* error = nullptr;
    const std::unique_ptr<char, decltype(&g_free)> address(
        g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, cancellable_.get(), &error), g_free);
    if (address) {
      const auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                           G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
      connection_.reset(
          g_dbus_connection_new_for_address_sync(address.get(), flags, nullptr, cancellable_.get(), &error));
    }
    if (!connection_) return "no session bus: " + reason_of(error);
    watch_portal();
    return {};
  }

  std::string create() {
    const char token[] = "morvane_create";
    GVariantBuilder options = options_with_token(token);
    g_variant_builder_add(&options, "{sv}", "session_handle_token", g_variant_new_string("morvane"));
    VariantPtr results;
    std::string why = ask("CreateSession", token, g_variant_new("(a{sv})", &options), portal_limit, &results);
    if (!why.empty()) return why;
    const gchar* handle = nullptr;
    // A string by an oversight in the portal's interface, which is now frozen.
    if (!g_variant_lookup(results.get(), "session_handle", "&s", &handle) || !g_variant_is_object_path(handle))
      return "the portal names no session";
    session_ = handle;
    const auto close_session = [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant*,
                                  gpointer self) { static_cast<Session*>(self)->ended_ = true; };
    closed_ = g_dbus_connection_signal_subscribe(connection_.get(), portal_name, session_interface, "Closed",
                                                 session_.c_str(), nullptr, G_DBUS_SIGNAL_FLAGS_NONE, close_session,
                                                 this, nullptr);
    return {};
  }

  std::string select() {
    const std::uint32_t sources = offered("AvailableSourceTypes");
    if (sources == 0) return "the desktop has no portal for sharing it";
    const char token[] = "morvane_select";
    GVariantBuilder options = options_with_token(token);
    g_variant_builder_add(&options, "{sv}", "types",
                          g_variant_new_uint32((sources & source_monitor) != 0 ? source_monitor : sources));
    g_variant_builder_add(&options, "{sv}", "multiple", g_variant_new_boolean(FALSE));
    // A screen recording without the pointer is hard to follow.
    if ((offered("AvailableCursorModes") & cursor_embedded) != 0)
      g_variant_builder_add(&options, "{sv}", "cursor_mode", g_variant_new_uint32(cursor_embedded));
    VariantPtr results;
    return ask("SelectSources", token, g_variant_new("(oa{sv})", session_.c_str(), &options), portal_limit, &results);
  }

  std::string start() {
    const char token[] = "morvane_start";
    GVariantBuilder options = options_with_token(token);
    VariantPtr results;
    std::string why =
        ask("Start", token, g_variant_new("(osa{sv})", session_.c_str(), "", &options), user_limit, &results);
    if (!why.empty()) return why;
    GVariantIter* streams = nullptr;
    bool found = false;
    if (g_variant_lookup(results.get(), "streams", "a(ua{sv})", &streams)) {
      found = g_variant_iter_next(streams, "(ua{sv})", &node_, nullptr) != FALSE;
      g_variant_iter_free(streams);
    }
    return found ? "" : "the portal gives no stream";
  }

  std::string open_remote() {
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    VariantPtr reply;
    GUnixFDList* list = nullptr;
    std::string why = call(cast_interface, "OpenPipeWireRemote", g_variant_new("(oa{sv})", session_.c_str(), &options),
                           "(h)", &reply, &list);
    const GObjectPtr<GUnixFDList> descriptors(list);
    if (!why.empty()) return why;
    gint32 index = -1;
    g_variant_get(reply.get(), "(h)", &index);
    if (list != nullptr && index >= 0 && index < g_unix_fd_list_get_length(list))
      remote_ = g_unix_fd_list_get(list, index, nullptr);
    return remote_ >= 0 ? "" : "the portal opens no way to PipeWire";
  }

  void end_session() {
    if (!connection_) return;
    g_dbus_connection_signal_unsubscribe(connection_.get(), watch_);
    if (closed_ != 0) g_dbus_connection_signal_unsubscribe(connection_.get(), closed_);
    if (session_.empty() || ended_) return;
    g_dbus_connection_call(connection_.get(), portal_name, session_.c_str(), session_interface, "Close", nullptr,
                           nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
    g_dbus_connection_flush_sync(connection_.get(), nullptr, nullptr);
  }

  /// Calls a method that answers through a request object, and waits for its response.
  std::string ask(const char* method, const char* token, GVariant* arguments, milliseconds limit, VariantPtr* results) {
    // The request's path is known in advance, so no response can be missed.
    std::string sender = g_dbus_connection_get_unique_name(connection_.get()) + 1;
    std::replace(sender.begin(), sender.end(), '.', '_');
    const std::string path = std::string(portal_path) + "/request/" + sender + "/" + token;
    Response response;
    const guint subscription =
        g_dbus_connection_signal_subscribe(connection_.get(), portal_name, request_interface, "Response", path.c_str(),
                                           nullptr, G_DBUS_SIGNAL_FLAGS_NONE, take_response, &response, nullptr);
    VariantPtr handle;
    std::string why = call(cast_interface, method, arguments, "(o)", &handle, nullptr);
    if (why.empty()) {
      wait_for(response, limit);
      if (!response.come) {
        why = stop_          ? "the program ends"
              : ended_       ? "the desktop has ended the session"
              : !is_asking() ? portal_has_ended
                             : "nobody has answered";
      } else if (response.code != 0) {
        why = response.code == 1 ? "sharing it was refused" : "the desktop cannot share it";
      }
      *results = std::move(response.results);
    }
    g_dbus_connection_signal_unsubscribe(connection_.get(), subscription);
    return why;
  }

  /// A portal that exits during a request never answers.
  void watch_portal() {
    const auto notice = [](GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*,
                           GVariant* arguments, gpointer self) {
      const gchar* owner = nullptr;
      g_variant_get(arguments, "(&s&s&s)", nullptr, nullptr, &owner);
      if (*owner == '\0') static_cast<Session*>(self)->portal_gone_ = true;
    };
    watch_ = g_dbus_connection_signal_subscribe(connection_.get(), "org.freedesktop.DBus", "org.freedesktop.DBus",
                                                "NameOwnerChanged", "/org/freedesktop/DBus", portal_name,
                                                G_DBUS_SIGNAL_FLAGS_NONE, notice, this, nullptr);
  }

  bool is_asking() const {
    return !stop_ && !ended_ && !portal_gone_ && !g_dbus_connection_is_closed(connection_.get());
  }

  void wait_for(const Response& response, milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    GSource* alarm = g_timeout_source_new(static_cast<guint>(limit.count()));
    g_source_set_callback(
        alarm, [](gpointer) -> gboolean { return G_SOURCE_REMOVE; }, nullptr, nullptr);
    g_source_attach(alarm, context_);
    while (!response.come && is_asking() && std::chrono::steady_clock::now() < end)
      g_main_context_iteration(context_, TRUE);
    g_source_destroy(alarm);
    g_source_unref(alarm);
  }

  std::string call(const char* interface, const char* method, GVariant* arguments, const char* reply_type,
                   VariantPtr* reply, GUnixFDList** descriptors) {
    GError* error = nullptr;
    reply->reset(g_dbus_connection_call_with_unix_fd_list_sync(
        connection_.get(), portal_name, portal_path, interface, method, arguments, G_VARIANT_TYPE(reply_type),
        G_DBUS_CALL_FLAGS_NONE, static_cast<gint>(portal_limit.count()), nullptr, descriptors, cancellable_.get(),
        &error));
    return *reply ? "" : reason_of(error);
  }

  /// A bit-set property of the portal; 0 if it is missing.
  std::uint32_t offered(const char* property) {
    VariantPtr reply;
    if (!call("org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", cast_interface, property), "(v)", &reply,
              nullptr)
             .empty())
      return 0;
    GVariant* value = nullptr;
    g_variant_get(reply.get(), "(v)", &value);
    const VariantPtr owned(value);
    return g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32) ? g_variant_get_uint32(value) : 0;
  }

  GMainContext* const context_ = g_main_context_new();
  const GObjectPtr<GCancellable> cancellable_{g_cancellable_new()};
  GObjectPtr<GDBusConnection> connection_;
  guint watch_ = 0;
  guint closed_ = 0;
  bool portal_gone_ = false;
  std::string session_;  ///< object path; empty if none
  std::string error_;
  int remote_ = -1;
  std::uint32_t node_ = 0;

  std::atomic<bool> settled_{false};
  std::atomic<bool> ended_{false};
  std::atomic<bool> stop_{false};
  std::thread thread_;  // last: it uses the rest
};

ScreenCast::ScreenCast(std::unique_ptr<Session> session) : session_(std::move(session)) {}

ScreenCast::~ScreenCast() = default;

std::shared_ptr<ScreenCast> ScreenCast::open(std::string* error) {
  auto session = std::make_unique<Session>();
  wait_long([&] { return session->settled(); });
  *error = session->settled() ? session->error() : "the program ends";
  if (!error->empty()) return nullptr;
  return std::shared_ptr<ScreenCast>(new ScreenCast(std::move(session)));
}

int ScreenCast::remote() const {
  return session_->remote();
}

std::uint32_t ScreenCast::node() const {
  return session_->node();
}

bool ScreenCast::ended() const {
  return session_->ended();
}

}  // namespace handset
