#include "Platform/X11/X11Screens.h"

#include <xcb/randr.h>

#include <algorithm>

#include "Platform/X11/ActiveWindow.h"

namespace Platform::X11 {
namespace {

std::string nameOfAtom(Connection& connection, xcb_atom_t atom)
{
    const auto reply = adopt(xcb_get_atom_name_reply(connection, xcb_get_atom_name(connection, atom), nullptr));
    if (!reply)
        return {};
    return {xcb_get_atom_name_name(reply.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

// The primary first: the flagged one (RRGetOutputPrimary is 0 on many servers), else the first.
std::vector<Monitor> readMonitors(Connection& connection)
{
    std::vector<Monitor> monitors;
    if (connection.has(xcb_randr_id)) {
        constexpr std::uint8_t activeOnly = 1;
        const auto cookie = xcb_randr_get_monitors(connection, connection.root(), activeOnly);
        if (const auto reply = adopt(xcb_randr_get_monitors_reply(connection, cookie, nullptr))) {
            for (auto info = xcb_randr_get_monitors_monitors_iterator(reply.get()); info.rem > 0; xcb_randr_monitor_info_next(&info)) {
                const Monitor monitor{nameOfAtom(connection, info.data->name), {info.data->x, info.data->y, info.data->width, info.data->height}, 1};
                monitors.insert(info.data->primary != 0 ? monitors.begin() : monitors.end(), monitor);
            }
        }
    }
    if (monitors.empty()) {
        const auto root = adopt(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, connection.root()), nullptr));
        if (root)
            monitors.push_back({"screen", {0, 0, root->width, root->height}, 1});
    }
    return monitors;
}

xcb_window_t focusWindow(Connection& connection)
{
    const auto reply = adopt(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
    const bool isWindow = reply && reply->focus != XCB_INPUT_FOCUS_POINTER_ROOT && reply->focus != connection.root();
    return isWindow ? reply->focus : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
}

// The child of the root that the window lies in, its frame under a reparenting window manager.
xcb_window_t toplevelOf(Connection& connection, xcb_window_t window)
{
    while (window != XCB_WINDOW_NONE) {
        const auto tree = adopt(xcb_query_tree_reply(connection, xcb_query_tree(connection, window), nullptr));
        if (!tree || tree->parent == XCB_WINDOW_NONE)
            return XCB_WINDOW_NONE;
        if (tree->parent == tree->root)
            return window;
        window = tree->parent;
    }
    return XCB_WINDOW_NONE;
}

DeviceRect frameOf(Connection& connection, xcb_window_t window)
{
    const auto toplevel = toplevelOf(connection, window);
    if (toplevel == XCB_WINDOW_NONE)
        return {};
    const auto geometry = adopt(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, toplevel), nullptr));
    if (!geometry)
        return {};
    const int borders = 2 * geometry->border_width;
    return {geometry->x, geometry->y, geometry->width + borders, geometry->height + borders};
}

const Monitor* mostOverlapping(const std::vector<Monitor>& monitors, const DeviceRect& frame)
{
    const Monitor* most = nullptr;
    long mostPixels = 0;
    for (const auto& monitor : monitors) {
        const auto shared = intersection(monitor.frame, frame);
        const long pixels = static_cast<long>(shared.width) * shared.height;
        if (pixels > mostPixels) {
            mostPixels = pixels;
            most = &monitor;
        }
    }
    return most;
}

}  // namespace

X11Screens::X11Screens(Connection& requests, Connection& changes, FileDescriptorWatcher& watcher, MainLoop& mainLoop, SharedMonitorLayout& layout,
    ScaleOfMonitor scaleOfMonitor)
    : m_requests(requests), m_changes(changes), m_mainLoop(mainLoop), m_layout(layout), m_scaleOfMonitor(std::move(scaleOfMonitor)),
      m_observers(std::make_shared<std::map<int, std::function<void()>>>()), m_self(std::make_shared<X11Screens*>(this)),
      m_pump(changes, watcher, mainLoop, [this](const xcb_generic_event_t&) { readAgainSoon(); })
{
    listen();
    readAgain();
}

X11Screens::~X11Screens() { *m_self = nullptr; }

// RandR's own events leave out monitors made with --setmonitor; the root's ConfigureNotify tells of those.
void X11Screens::listen()
{
    const std::uint32_t structure = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_changes, m_changes.root(), XCB_CW_EVENT_MASK, &structure);
    if (m_changes.has(xcb_randr_id)) {
        xcb_randr_select_input(m_changes, m_changes.root(),
            XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE | XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    }
    m_changes.flush();
}

void X11Screens::readAgainSoon()
{
    if (m_willReadAgain)
        return;
    m_willReadAgain = true;
    m_mainLoop.post([self = m_self] {
        if (*self != nullptr)
            (*self)->readAgain();
    });
}

void X11Screens::readAgain()
{
    m_willReadAgain = false;
    auto monitors = readMonitors(m_requests);
    for (auto& monitor : monitors)
        monitor.scale = m_scaleOfMonitor(monitor.name);
    MonitorLayout layout(std::move(monitors));
    if (layout == *m_layout.get())
        return;
    m_screens = layout.screens();
    m_layout.set(std::move(layout));
    const auto observers = *m_observers;
    for (const auto& [id, changed] : observers) {
        if (m_observers->count(id) != 0)
            changed();
    }
}

std::optional<Screen> X11Screens::mainScreen()
{
    const auto* main = mainMonitor();
    for (const auto& screen : m_screens) {
        if (main != nullptr && screen.name == main->name)
            return screen;
    }
    return std::nullopt;
}

const Monitor* X11Screens::mainMonitor() const
{
    // Held by m_layout until the next readAgain(), which is on this thread too.
    const auto& monitors = m_layout.get()->monitors();
    if (const auto window = activeWindow(m_requests)) {
        if (const auto* monitor = mostOverlapping(monitors, frameOf(m_requests, window)))
            return monitor;
    }
    if (const auto window = focusWindow(m_requests)) {
        if (const auto* monitor = mostOverlapping(monitors, frameOf(m_requests, window)))
            return monitor;
    }
    const auto pointer = adopt(xcb_query_pointer_reply(m_requests, xcb_query_pointer(m_requests, m_requests.root()), nullptr));
    if (pointer)
        return m_layout.get()->monitorAt({pointer->root_x, pointer->root_y});
    return monitors.empty() ? nullptr : &monitors.front();
}

Token X11Screens::observe(std::function<void()> changed)
{
    const int id = ++m_lastObserver;
    m_observers->emplace(id, std::move(changed));
    return Token([observers = std::weak_ptr(m_observers), id] {
        if (const auto map = observers.lock())
            map->erase(id);
    });
}

}  // namespace Platform::X11
