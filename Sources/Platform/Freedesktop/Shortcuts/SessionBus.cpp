#include "Platform/Freedesktop/Shortcuts/SessionBus.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace Platform::Freedesktop {
namespace {

int millisecondsUntil(Deadline deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, std::numeric_limits<int>::max()));
}

struct Connecting {
    GDBusConnection* (*finish)(GAsyncResult*, GError**);
    bool isOver = false;
    GDBusConnection* connection = nullptr;
};

void finishConnecting(GObject*, GAsyncResult* result, gpointer data)
{
    auto& connecting = *static_cast<Connecting*>(data);
    connecting.connection = connecting.finish(result, nullptr);
    connecting.isOver = true;
}

gboolean cancel(gpointer cancellable)
{
    g_cancellable_cancel(static_cast<GCancellable*>(cancellable));
    return G_SOURCE_REMOVE;
}

bool canConnect()
{
    const auto address = SessionBus::address();
    return !address.empty() && !address.starts_with("autolaunch:");
}

// Asynchronously, because the synchronous way waits for ever on a bus that is stuck.
// `start` gets the arguments that end every asynchronous call of GLib.
template <typename Start> ObjectPointer<GDBusConnection> connectBefore(Deadline deadline, decltype(Connecting::finish) finish, Start&& start)
{
    const PrivateMainContext context;
    const ObjectPointer<GCancellable> cancellable(g_cancellable_new());
    Connecting connecting{.finish = finish};
    GSource* timeout = g_timeout_source_new(static_cast<guint>(millisecondsUntil(deadline)));
    g_source_set_callback(timeout, cancel, cancellable.get(), nullptr);
    g_source_attach(timeout, context.get());
    start(cancellable.get(), finishConnecting, &connecting);
    while (!connecting.isOver)
        g_main_context_iteration(context.get(), TRUE);
    g_source_destroy(timeout);
    g_source_unref(timeout);
    return ObjectPointer<GDBusConnection>(connecting.connection);
}

// GLib forgets the shared connection with its last owner, and its parts take theirs later,
// on threads of their own: one that they would find gone they would make anew.
void keepShared(GDBusConnection* connection)
{
    static ObjectPointer<GDBusConnection> kept;
    kept.reset(static_cast<GDBusConnection*>(g_object_ref(connection)));
}

}  // namespace

std::string SessionBus::address()
{
    if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address != nullptr && *address != '\0')
        return address;
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    const auto socket = std::string(folder != nullptr ? folder : "") + "/bus";
    struct stat status = {};
    if (socket.front() != '/' || stat(socket.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode))
        return {};
    const TextPointer escaped(g_dbus_address_escape_value(socket.c_str()));
    return std::string("unix:path=") + escaped.get();
}

std::optional<SessionBus> SessionBus::connect(Deadline deadline)
{
    if (!canConnect())
        return std::nullopt;
    auto connection = connectBefore(deadline, g_dbus_connection_new_for_address_finish, [](GCancellable* cancellable, auto callback, gpointer data) {
        constexpr auto flags =
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
        g_dbus_connection_new_for_address(address().c_str(), flags, nullptr, cancellable, callback, data);
    });
    return connection ? std::optional(SessionBus(std::move(connection))) : std::nullopt;
}

std::optional<SessionBus> SessionBus::share(Deadline deadline)
{
    if (!canConnect())
        return std::nullopt;
    auto connection = connectBefore(deadline, g_bus_get_finish,
        [](GCancellable* cancellable, auto callback, gpointer data) { g_bus_get(G_BUS_TYPE_SESSION, cancellable, callback, data); });
    if (!connection)
        return std::nullopt;
    g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
    keepShared(connection.get());
    return SessionBus(std::move(connection));
}

VariantPointer SessionBus::call(const BusObject& object, const char* method, GVariant* parameters, const char* replyType, Deadline deadline) const
{
    const VariantPointer owned(parameters != nullptr ? g_variant_ref_sink(parameters) : nullptr);
    const int milliseconds = millisecondsUntil(deadline);
    if (milliseconds == 0)
        return nullptr;
    GError* error = nullptr;
    VariantPointer reply(g_dbus_connection_call_sync(m_connection.get(), object.service, object.path.c_str(), object.interface, method, parameters,
        G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NO_AUTO_START, milliseconds, nullptr, &error));
    g_clear_error(&error);
    return reply;
}

}  // namespace Platform::Freedesktop
