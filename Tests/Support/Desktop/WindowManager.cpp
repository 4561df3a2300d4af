#include "Support/Desktop/WindowManager.h"

#include <fstream>
#include <stdexcept>

#include "Platform/X11/Connection.h"
#include "Support/WaitUntil.h"

namespace TestSupport {

using namespace Platform::X11;

namespace {

std::optional<std::uint32_t> supportingWindow(Connection& connection, xcb_window_t of)
{
    const auto cookie = xcb_get_property(connection, 0, of, connection.atom("_NET_SUPPORTING_WM_CHECK"), XCB_ATOM_WINDOW, 0, 1);
    const auto reply = adopt(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply || xcb_get_property_value_length(reply.get()) != 4)
        return std::nullopt;
    return *static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
}

// A manager that died leaves the root's property; only a living one has the window too.
bool isManaged(Connection& connection)
{
    const auto window = supportingWindow(connection, connection.root());
    return window && supportingWindow(connection, *window) == window;
}

bool hasProperty(Connection& connection, xcb_window_t window, xcb_atom_t property)
{
    const auto cookie = xcb_get_property(connection, 0, window, property, XCB_ATOM_ANY, 0, 0);
    const auto reply = adopt(xcb_get_property_reply(connection, cookie, nullptr));
    return reply && reply->type != XCB_ATOM_NONE;
}

// openbox announces itself some milliseconds before it answers to windows that want to be
// shown; one that comes too early is never shown.
bool showsAWindow(Connection& connection)
{
    const auto window = connection.newId();
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, connection.root(), 0, 0, 10, 10, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
        XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_map_window(connection, window);
    const bool isShown = waitUntil([&] { return hasProperty(connection, window, connection.atom("WM_STATE")); }, std::chrono::milliseconds(200));
    xcb_destroy_window(connection, window);
    connection.flush();
    return isShown;
}

std::unique_ptr<Connection> connectTo(const PrivateServer& server)
{
    auto connection = Connection::open(server.displayName());
    if (!connection)
        throw std::runtime_error("no X server at " + server.displayName());
    return connection;
}

}  // namespace

std::string nameOf(WindowManagerKind kind)
{
    switch (kind) {
    case WindowManagerKind::none:
        return "none";
    case WindowManagerKind::openbox:
        return "openbox";
    case WindowManagerKind::openboxWithFocusUnderThePointer:
        return "openboxWithFocusUnderThePointer";
    case WindowManagerKind::openboxWithPicom:
        return "openboxWithPicom";
    case WindowManagerKind::xfwm4:
        return "xfwm4";
    case WindowManagerKind::xfwm4WithCompositor:
        return "xfwm4WithCompositor";
    case WindowManagerKind::i3:
        return "i3";
    case WindowManagerKind::kwin:
        return "kwin";
    }
    return {};
}

WindowManager::WindowManager(const PrivateServer& server, WindowManagerKind kind, const std::filesystem::path& home) : m_server(server), m_home(home)
{
    for (const auto* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"})
        m_options.environment.emplace_back(name, home.string());
    m_options.standardError = home / "window-manager.log";
    switch (kind) {
    case WindowManagerKind::none:
        return;
    case WindowManagerKind::openbox:
        start({"openbox"});
        break;
    case WindowManagerKind::openboxWithFocusUnderThePointer:
        startOpenboxWithFocusUnderThePointer();
        break;
    case WindowManagerKind::openboxWithPicom:
        start({"openbox"});
        waitUntilManaging();
        start({"picom", "--backend", "xrender", "--config", "/dev/null"});
        break;
    case WindowManagerKind::xfwm4:
        startXfwm4("off");
        break;
    case WindowManagerKind::xfwm4WithCompositor:
        startXfwm4("on");
        break;
    case WindowManagerKind::i3:
        startI3();
        break;
    case WindowManagerKind::kwin:
        startKwin();
        break;
    }
    waitUntilManaging();
    if (kind == WindowManagerKind::openboxWithPicom || kind == WindowManagerKind::xfwm4WithCompositor || kind == WindowManagerKind::kwin)
        waitUntilCompositing();
}

void WindowManager::start(const std::vector<std::string>& command) { m_processes.push_back(m_server.start(command, m_options)); }

void WindowManager::startOpenboxWithFocusUnderThePointer()
{
    const auto settings = m_home / "openbox.xml";
    std::ofstream(settings) << "<openbox_config xmlns='http://openbox.org/3.4/rc'><focus><followMouse>yes</followMouse></focus></openbox_config>\n";
    start({"openbox", "--config-file", settings.string()});
}

// Its settings come over the session bus.
void WindowManager::startXfwm4(const std::string& compositor)
{
    m_bus.emplace(m_home, m_options);
    m_options.environment.emplace_back("DBUS_SESSION_BUS_ADDRESS", m_bus->address());
    start({"xfwm4", "--compositor=" + compositor});
}

void WindowManager::startI3()
{
    const auto settings = m_home / "i3.conf";
    std::ofstream(settings) << "# i3 config file (v4)\nfont pango:DejaVu Sans Mono 8\n";
    start({"i3", "-c", settings.string()});
}

void WindowManager::startKwin()
{
    m_bus.emplace(m_home, m_options);
    m_options.environment.emplace_back("DBUS_SESSION_BUS_ADDRESS", m_bus->address());
    m_options.environment.emplace_back("KWIN_COMPOSE", "O2");
    start({"kwin_x11"});
}

void WindowManager::waitUntilManaging() const
{
    const auto connection = connectTo(m_server);
    if (!waitUntil([&] { return isManaged(*connection) && showsAWindow(*connection); }, std::chrono::seconds(20)))
        throw std::runtime_error("the window manager does not come up; see " + m_options.standardError);
}

void WindowManager::waitUntilCompositing() const
{
    const auto connection = connectTo(m_server);
    if (!waitUntil([&] { return connection->hasCompositor(); }, std::chrono::seconds(20)))
        throw std::runtime_error("the compositor does not come up; see " + m_options.standardError);
}

}  // namespace TestSupport
