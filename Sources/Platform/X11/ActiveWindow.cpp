#include "Platform/X11/ActiveWindow.h"

namespace Platform::X11 {

xcb_window_t activeWindow(Connection& connection)
{
    const auto cookie = xcb_get_property(connection, 0, connection.root(), connection.atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW, 0, 1);
    const auto reply = adopt(xcb_get_property_reply(connection, cookie, nullptr));
    if (!reply || xcb_get_property_value_length(reply.get()) < static_cast<int>(sizeof(xcb_window_t)))
        return XCB_WINDOW_NONE;
    return *static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get()));
}

}  // namespace Platform::X11
