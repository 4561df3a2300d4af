#include "Support/Desktop/ForeignMenu.h"

#include <algorithm>
#include <stdexcept>

#include "Support/Desktop/TestPattern.h"
#include "Support/WaitUntil.h"

namespace TestSupport {

using namespace Platform::X11;

ForeignMenu::ForeignMenu(const std::string& displayName, const DeviceRect& frame, std::uint32_t seed)
    : m_frame(frame), m_contents(testPattern(frame.width, frame.height, seed)), m_connection(Connection::open(displayName))
{
    if (!m_connection)
        throw std::runtime_error("no X server at " + displayName);
    auto& connection = *m_connection;
    m_window = connection.newId();
    const std::uint32_t values[] = {makePixmap(connection, m_contents), 1, XCB_EVENT_MASK_KEY_PRESS};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_window, connection.root(), static_cast<std::int16_t>(frame.x),
        static_cast<std::int16_t>(frame.y), static_cast<std::uint16_t>(frame.width), static_cast<std::uint16_t>(frame.height), 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    xcb_map_window(connection, m_window);
    if (!waitUntil([this] { return takesKeyboardAndPointer(); }))
        throw std::runtime_error("the menu gets neither keyboard nor pointer");
}

Platform::Image ForeignMenu::paintedOn(const Platform::Image& screen) const
{
    auto image = screen;
    const auto width = static_cast<std::size_t>(m_frame.width);
    for (int row = 0; row < m_frame.height; ++row) {
        const auto from = m_contents.pixels().subspan(static_cast<std::size_t>(row) * width, width);
        const auto start = static_cast<std::size_t>(m_frame.y + row) * static_cast<std::size_t>(image.width()) + static_cast<std::size_t>(m_frame.x);
        std::ranges::copy(from, image.pixels().subspan(start, width).begin());
    }
    return image;
}

int ForeignMenu::takePresses(std::uint16_t evdevCode)
{
    constexpr int keycodeOffset = 8;  // X keycode = evdev code + 8
    adopt(xcb_get_input_focus_reply(*m_connection, xcb_get_input_focus(*m_connection), nullptr));
    int presses = 0;
    while (const auto event = adopt(xcb_poll_for_event(*m_connection))) {
        const bool isPress = eventType(*event) == XCB_KEY_PRESS;
        presses += isPress && reinterpret_cast<const xcb_key_press_event_t&>(*event).detail == evdevCode + keycodeOffset ? 1 : 0;
    }
    return presses;
}

bool ForeignMenu::takesKeyboardAndPointer() const
{
    auto& connection = *m_connection;
    constexpr std::uint16_t clicks = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE;
    const auto pointer = adopt(xcb_grab_pointer_reply(connection,
        xcb_grab_pointer(connection, 1, m_window, clicks, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME), nullptr));
    const auto keyboard = adopt(xcb_grab_keyboard_reply(
        connection, xcb_grab_keyboard(connection, 1, m_window, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC), nullptr));
    return pointer && pointer->status == XCB_GRAB_STATUS_SUCCESS && keyboard && keyboard->status == XCB_GRAB_STATUS_SUCCESS;
}

}  // namespace TestSupport
