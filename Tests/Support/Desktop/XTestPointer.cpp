#include "Support/Desktop/XTestPointer.h"

#include <xcb/xtest.h>

#include <stdexcept>

namespace TestSupport {

using namespace Platform::X11;

XTestPointer::XTestPointer(const std::string& displayName) : m_connection(Connection::open(displayName))
{
    if (!m_connection)
        throw std::runtime_error("no X server at " + displayName);
}

void XTestPointer::moveTo(int x, int y) { fake(XCB_MOTION_NOTIFY, 0, x, y); }

void XTestPointer::press(std::uint8_t button) { fake(XCB_BUTTON_PRESS, button, 0, 0); }

void XTestPointer::release(std::uint8_t button) { fake(XCB_BUTTON_RELEASE, button, 0, 0); }

void XTestPointer::click(std::uint8_t button)
{
    press(button);
    release(button);
}

DevicePoint XTestPointer::position() const
{
    const auto reply = adopt(xcb_query_pointer_reply(*m_connection, xcb_query_pointer(*m_connection, m_connection->root()), nullptr));
    if (!reply)
        throw std::runtime_error("the X server is gone");
    return {reply->root_x, reply->root_y};
}

void XTestPointer::fake(std::uint8_t type, std::uint8_t detail, int x, int y)
{
    xcb_test_fake_input(
        *m_connection, type, detail, XCB_CURRENT_TIME, m_connection->root(), static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
    adopt(xcb_get_input_focus_reply(*m_connection, xcb_get_input_focus(*m_connection), nullptr));
}

}  // namespace TestSupport
