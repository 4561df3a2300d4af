#include "Support/Desktop/BusConnection.h"

#include <future>
#include <stdexcept>

namespace TestSupport {

using namespace Platform::Freedesktop;

namespace {

constexpr int deadlineMilliseconds = 20000;

[[noreturn]] void fail(const std::string& what, GError* error)
{
    const std::string words = what + ": " + error->message;
    g_error_free(error);
    throw std::runtime_error(words);
}

ObjectPointer<GDBusConnection> connectTo(const std::string& address)
{
    constexpr auto flags = GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    GError* error = nullptr;
    ObjectPointer<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, &error));
    if (!connection)
        fail("no bus at " + address, error);
    return connection;
}

}  // namespace

BusConnection::BusConnection(const std::string& address)
    : m_context(g_main_context_new()), m_loop(g_main_loop_new(m_context, 0)), m_connection(connectTo(address)), m_thread([this] {
          g_main_context_push_thread_default(m_context);
          g_main_loop_run(m_loop);
          g_main_context_pop_thread_default(m_context);
      })
{
}

BusConnection::~BusConnection()
{
    end();
    m_connection.reset();
    g_main_loop_unref(m_loop);
    g_main_context_unref(m_context);
}

void BusConnection::run(const std::function<void()>& work) const
{
    struct Job {
        const std::function<void()>& work;
        std::promise<void> isDone;
    } job{.work = work, .isDone = {}};
    const auto runJob = [](gpointer data) -> gboolean {
        auto& self = *static_cast<Job*>(data);
        self.work();
        self.isDone.set_value();
        return G_SOURCE_REMOVE;
    };
    GSource* const source = g_idle_source_new();
    g_source_set_callback(source, runJob, &job, nullptr);
    g_source_attach(source, m_context);
    job.isDone.get_future().wait();
    g_source_unref(source);
}

void BusConnection::end()
{
    if (!m_thread.joinable())
        return;
    run([this] { g_main_loop_quit(m_loop); });
    m_thread.join();
    g_dbus_connection_close_sync(m_connection.get(), nullptr, nullptr);
}

VariantPointer BusConnection::call(const Object& object, const std::string& method, GVariant* parameters) const
{
    GError* error = nullptr;
    VariantPointer reply(g_dbus_connection_call_sync(m_connection.get(), object.service.c_str(), object.path.c_str(), object.interface.c_str(),
        method.c_str(), parameters, nullptr, G_DBUS_CALL_FLAGS_NONE, deadlineMilliseconds, nullptr, &error));
    if (!reply)
        fail(object.interface + "." + method, error);
    return reply;
}

VariantPointer BusConnection::property(const Object& object, const std::string& name) const
{
    const auto reply =
        call({object.service, object.path, "org.freedesktop.DBus.Properties"}, "Get", g_variant_new("(ss)", object.interface.c_str(), name.c_str()));
    GVariant* value = nullptr;
    g_variant_get(reply.get(), "(v)", &value);
    return VariantPointer(value);
}

}  // namespace TestSupport
