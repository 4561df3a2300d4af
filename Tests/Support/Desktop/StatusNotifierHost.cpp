#include "Support/Desktop/StatusNotifierHost.h"

#include <algorithm>
#include <stdexcept>

#include "Support/WaitUntil.h"

namespace TestSupport {

using namespace Platform::Freedesktop;

namespace {

constexpr auto watcherName = "org.kde.StatusNotifierWatcher";
constexpr auto watcherPath = "/StatusNotifierWatcher";
constexpr auto defaultItemPath = "/StatusNotifierItem";
constexpr guint32 nameIsOurs = 1;
constexpr guint32 doNotQueue = 4;
const BusConnection::Object bus{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};

// Programs ask what the registry can do before they use it.
constexpr auto description = R"(<node><interface name="org.kde.StatusNotifierWatcher">
    <method name="RegisterStatusNotifierItem"><arg name="service" type="s" direction="in"/></method>
    <method name="RegisterStatusNotifierHost"><arg name="service" type="s" direction="in"/></method>
    <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
    <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
    <property name="ProtocolVersion" type="i" access="read"/>
    <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
    <signal name="StatusNotifierHostRegistered"/>
</interface></node>)";

}  // namespace

StatusNotifierHost::StatusNotifierHost(const std::string& busAddress) : m_bus(std::make_shared<BusConnection>(busAddress))
{
    m_bus->run([this] { publish(); });
    const auto reply = m_bus->call(bus, "RequestName", g_variant_new("(su)", watcherName, doNotQueue));
    guint32 outcome = 0;
    g_variant_get(reply.get(), "(u)", &outcome);
    if (outcome != nameIsOurs)
        throw std::runtime_error("another registry of tray icons is there");
    g_dbus_connection_emit_signal(m_bus->get(), nullptr, watcherPath, watcherName, "StatusNotifierHostRegistered", nullptr, nullptr);
}

StatusNotifierHost::~StatusNotifierHost() { m_bus->end(); }

std::vector<StatusNotifierItem> StatusNotifierHost::items() const
{
    const std::lock_guard lock(m_mutex);
    std::vector<StatusNotifierItem> items;
    for (const auto& registration : m_registrations)
        items.emplace_back(m_bus, registration.sender, registration.path);
    return items;
}

StatusNotifierItem StatusNotifierHost::waitForItem() const
{
    if (!waitUntil([this] { return !items().empty(); }))
        throw std::runtime_error("no tray icon comes");
    return items().front();
}

int StatusNotifierHost::menuChanges() const
{
    const std::lock_guard lock(m_mutex);
    return m_menuChanges;
}

void StatusNotifierHost::publish()
{
    GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(description, nullptr);
    static const GDBusInterfaceVTable functions{.method_call = &takeCall, .get_property = &readProperty, .set_property = nullptr, .padding = {}};
    g_dbus_connection_register_object(m_bus->get(), watcherPath, node->interfaces[0], &functions, this, nullptr, nullptr);
    g_dbus_node_info_unref(node);
    const auto subscribe = [this](const char* interface, const char* member) {
        g_dbus_connection_signal_subscribe(
            m_bus->get(), nullptr, interface, member, nullptr, nullptr, G_DBUS_SIGNAL_FLAGS_NONE, &takeSignal, this, nullptr);
    };
    subscribe("org.freedesktop.DBus", "NameOwnerChanged");
    subscribe("com.canonical.dbusmenu", "LayoutUpdated");
    subscribe("com.canonical.dbusmenu", "ItemsPropertiesUpdated");
}

void StatusNotifierHost::takeCall(GDBusConnection* /*connection*/, const gchar* sender, const gchar* /*path*/, const gchar* /*interface*/,
    const gchar* method, GVariant* parameters, GDBusMethodInvocation* invocation, gpointer self)
{
    if (std::string(method) == "RegisterStatusNotifierItem") {
        const char* serviceOrPath = nullptr;
        g_variant_get(parameters, "(&s)", &serviceOrPath);
        static_cast<StatusNotifierHost*>(self)->registerItem(sender, serviceOrPath);
    }
    g_dbus_method_invocation_return_value(invocation, nullptr);
}

GVariant* StatusNotifierHost::readProperty(GDBusConnection* /*connection*/, const gchar* /*sender*/, const gchar* /*path*/,
    const gchar* /*interface*/, const gchar* name, GError** /*error*/, gpointer self)
{
    if (std::string(name) == "IsStatusNotifierHostRegistered")
        return g_variant_new_boolean(1);
    if (std::string(name) == "ProtocolVersion")
        return g_variant_new_int32(0);
    GVariantBuilder names;
    g_variant_builder_init(&names, G_VARIANT_TYPE_STRING_ARRAY);
    auto& host = *static_cast<StatusNotifierHost*>(self);
    const std::lock_guard lock(host.m_mutex);
    for (const auto& registration : host.m_registrations)
        g_variant_builder_add(&names, "s", (registration.sender + registration.path).c_str());
    return g_variant_builder_end(&names);
}

void StatusNotifierHost::takeSignal(GDBusConnection* /*connection*/, const gchar* /*sender*/, const gchar* /*path*/, const gchar* /*interface*/,
    const gchar* name, GVariant* parameters, gpointer self)
{
    auto& host = *static_cast<StatusNotifierHost*>(self);
    if (std::string(name) != "NameOwnerChanged") {
        const std::lock_guard lock(host.m_mutex);
        ++host.m_menuChanges;
        return;
    }
    const char* program = nullptr;
    const char* newOwner = nullptr;
    g_variant_get(parameters, "(&s&s&s)", &program, nullptr, &newOwner);
    if (*newOwner == '\0')
        host.forget(program);
}

// A program gives the name of its connection or the path of the icon.
void StatusNotifierHost::registerItem(const std::string& sender, const std::string& serviceOrPath)
{
    {
        const std::lock_guard lock(m_mutex);
        m_registrations.push_back({.sender = sender, .path = serviceOrPath.starts_with('/') ? serviceOrPath : defaultItemPath});
    }
    g_dbus_connection_emit_signal(
        m_bus->get(), nullptr, watcherPath, watcherName, "StatusNotifierItemRegistered", g_variant_new("(s)", serviceOrPath.c_str()), nullptr);
}

void StatusNotifierHost::forget(const std::string& sender)
{
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_registrations, [&](const Registration& registration) { return registration.sender == sender; });
}

}  // namespace TestSupport
