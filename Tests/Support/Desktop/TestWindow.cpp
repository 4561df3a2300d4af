#include "Support/Desktop/TestWindow.h"

#include <array>
#include <optional>
#include <stdexcept>
#include <utility>

#include "Support/Desktop/TestPattern.h"
#include "Support/Desktop/VisibleCursor.h"
#include "Support/WaitUntil.h"

namespace TestSupport {

using namespace Platform::X11;

namespace {

constexpr std::uint32_t recordedEvents =
    XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE | XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_FOCUS_CHANGE;
constexpr int keycodeOffset = 8;  // X keycode = evdev code + 8

std::optional<std::string> focusChange(const xcb_generic_event_t& event, const char* name)
{
    const auto mode = reinterpret_cast<const xcb_focus_in_event_t&>(event).mode;
    if (mode == XCB_NOTIFY_MODE_GRAB || mode == XCB_NOTIFY_MODE_UNGRAB)
        return std::nullopt;
    return name;
}

std::optional<std::string> descriptionOf(const xcb_generic_event_t& event)
{
    const auto detail = reinterpret_cast<const xcb_key_press_event_t&>(event).detail;
    switch (eventType(event)) {
    case XCB_KEY_PRESS:
        return "KeyPress " + std::to_string(detail - keycodeOffset);
    case XCB_KEY_RELEASE:
        return "KeyRelease " + std::to_string(detail - keycodeOffset);
    case XCB_BUTTON_PRESS:
        return "ButtonPress " + std::to_string(detail);
    case XCB_BUTTON_RELEASE:
        return "ButtonRelease " + std::to_string(detail);
    case XCB_FOCUS_IN:
        return focusChange(event, "FocusIn");
    case XCB_FOCUS_OUT:
        return focusChange(event, "FocusOut");
    default:
        return std::nullopt;
    }
}

// WM_NORMAL_HINTS. A window whose size cannot change is left in its place by window
// managers that otherwise tile.
std::array<std::uint32_t, 18> fixedPlaceAndSize(std::uint32_t width, std::uint32_t height)
{
    constexpr std::uint32_t positionOfUser = 1;
    constexpr std::uint32_t sizeOfUser = 1U << 1;
    constexpr std::uint32_t leastSize = 1U << 4;
    constexpr std::uint32_t greatestSize = 1U << 5;
    constexpr std::uint32_t gravity = 1U << 9;
    std::array<std::uint32_t, 18> hints{};
    hints[0] = positionOfUser | sizeOfUser | leastSize | greatestSize | gravity;
    hints[5] = hints[7] = width;
    hints[6] = hints[8] = height;
    hints[17] = XCB_GRAVITY_STATIC;  // the position is the contents', not the frame's
    return hints;
}

}  // namespace

TestWindow::TestWindow(const std::string& displayName, const std::string& title, const DeviceRect& frame, std::uint32_t seed, Kind kind)
    : TestWindow(displayName, title, DevicePoint{frame.x, frame.y}, testPattern(frame.width, frame.height, seed), kind)
{
}

TestWindow::TestWindow(const std::string& displayName, const std::string& title, DevicePoint position, Platform::Image contents, Kind kind)
    : m_contents(std::move(contents)), m_connection(Connection::open(displayName))
{
    if (!m_connection)
        throw std::runtime_error("no X server at " + displayName);
    createWindow(position);
    setProperties(title, kind);
    xcb_map_window(*m_connection, m_window);
    if (!waitUntil([this] { return isViewable(); }))
        throw std::runtime_error("the window '" + title + "' does not appear");
    moveIntoPlace(position);
}

void TestWindow::createWindow(DevicePoint position)
{
    auto& connection = *m_connection;
    m_window = connection.newId();
    // As background the picture is painted by the server itself whenever it is uncovered.
    const std::uint32_t values[] = {makePixmap(connection, m_contents), XCB_GRAVITY_STATIC, recordedEvents, makeVisibleCursor(connection)};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_window, connection.root(), static_cast<std::int16_t>(position.x),
        static_cast<std::int16_t>(position.y), static_cast<std::uint16_t>(m_contents.width()), static_cast<std::uint16_t>(m_contents.height()), 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXMAP | XCB_CW_WIN_GRAVITY | XCB_CW_EVENT_MASK | XCB_CW_CURSOR, values);
}

// i3 puts a new floating window into the middle.
void TestWindow::moveIntoPlace(DevicePoint position)
{
    const auto isInPlace = [&] { return contents().x == position.x && contents().y == position.y; };
    if (waitUntil(isInPlace, std::chrono::milliseconds(50)))
        return;
    const std::int32_t values[] = {position.x, position.y};
    xcb_configure_window(*m_connection, m_window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
    if (!waitUntil(isInPlace))
        throw std::runtime_error("the window manager does not let the window where it wants to be");
}

void TestWindow::setProperties(const std::string& title, Kind kind)
{
    auto& connection = *m_connection;
    xcb_change_property(
        connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, static_cast<std::uint32_t>(title.size()), title.data());
    constexpr std::string_view windowClass("tarnwick-test\0Tarnwick-test\0", 28);
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, windowClass.size(), windowClass.data());
    const auto sizeHints = fixedPlaceAndSize(static_cast<std::uint32_t>(m_contents.width()), static_cast<std::uint32_t>(m_contents.height()));
    xcb_change_property(
        connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, sizeHints.size(), sizeHints.data());
    constexpr std::array<std::uint32_t, 9> takesFocus = {1, 1, 0, 0, 0, 0, 0, 0, 0};
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS, 32, takesFocus.size(), takesFocus.data());
    if (kind == Kind::dock)
        becomeDock();
    if (kind != Kind::fullScreen)
        return;
    const auto fullScreen = connection.atom("_NET_WM_STATE_FULLSCREEN");
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, m_window, connection.atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32, 1, &fullScreen);
}

void TestWindow::becomeDock()
{
    auto& connection = *m_connection;
    const auto dock = connection.atom("_NET_WM_WINDOW_TYPE_DOCK");
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, m_window, connection.atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1, &dock);
    const std::array<std::uint32_t, 12> strut = {
        0, 0, static_cast<std::uint32_t>(m_contents.height()), 0, 0, 0, 0, 0, 0, static_cast<std::uint32_t>(m_contents.width() - 1), 0, 0};
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, m_window, connection.atom("_NET_WM_STRUT"), XCB_ATOM_CARDINAL, 32, 4, strut.data());
    xcb_change_property(
        connection, XCB_PROP_MODE_REPLACE, m_window, connection.atom("_NET_WM_STRUT_PARTIAL"), XCB_ATOM_CARDINAL, 32, strut.size(), strut.data());
}

void TestWindow::activate()
{
    if (!waitUntil([this] {
            if (!hasFocus())
                requestActivation();
            return hasFocus();
        }))
        throw std::runtime_error("the window does not get the focus");
}

void TestWindow::requestActivation()
{
    auto& connection = *m_connection;
    const auto manager = adopt(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, connection.root(), connection.atom("_NET_SUPPORTING_WM_CHECK"), XCB_ATOM_ANY, 0, 1), nullptr));
    if (!manager || manager->type == XCB_ATOM_NONE) {
        xcb_set_input_focus(connection, XCB_INPUT_FOCUS_POINTER_ROOT, m_window, XCB_CURRENT_TIME);
        return;
    }
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = m_window;
    message.type = connection.atom("_NET_ACTIVE_WINDOW");
    message.data.data32[0] = 2;  // a task bar asks
    xcb_send_event(connection, 0, connection.root(), XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
        reinterpret_cast<const char*>(&message));
}

bool TestWindow::hasFocus() const
{
    const auto reply = adopt(xcb_get_input_focus_reply(*m_connection, xcb_get_input_focus(*m_connection), nullptr));
    return reply && reply->focus == m_window;
}

bool TestWindow::isViewable() const
{
    const auto reply = adopt(xcb_get_window_attributes_reply(*m_connection, xcb_get_window_attributes(*m_connection, m_window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

std::vector<std::string> TestWindow::takeEvents()
{
    adopt(xcb_get_input_focus_reply(*m_connection, xcb_get_input_focus(*m_connection), nullptr));
    std::vector<std::string> descriptions;
    while (const auto event = adopt(xcb_poll_for_event(*m_connection))) {
        if (auto description = descriptionOf(*event))
            descriptions.push_back(std::move(*description));
    }
    return descriptions;
}

bool TestWindow::isPaintedOn(const Platform::Image& screen) const
{
    const auto frame = contents();
    const DeviceRect whole{0, 0, screen.width(), screen.height()};
    if (intersection(frame, whole) != frame)
        return false;
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            if (screen.pixel(frame.x + x, frame.y + y) != m_contents.pixel(x % m_contents.width(), y % m_contents.height()))
                return false;
        }
    }
    return true;
}

DeviceRect TestWindow::contents() const
{
    auto& connection = *m_connection;
    const auto position = xcb_translate_coordinates(connection, m_window, connection.root(), 0, 0);
    const auto geometry = adopt(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, m_window), nullptr));
    const auto origin = adopt(xcb_translate_coordinates_reply(connection, position, nullptr));
    if (!origin || !geometry)
        throw std::runtime_error("the window is gone");
    return {origin->dst_x, origin->dst_y, geometry->width, geometry->height};
}

}  // namespace TestSupport
