#include "Support/Desktop/Wallpaper.h"

#include <stdexcept>

#include "Support/Desktop/TestPattern.h"
#include "Support/Desktop/VisibleCursor.h"

namespace TestSupport {

using Platform::X11::Connection;

Wallpaper::Wallpaper(const std::string& displayName, const Platform::Image& image) : m_connection(Connection::open(displayName))
{
    if (!m_connection)
        throw std::runtime_error("no X server at " + displayName);
    auto& connection = *m_connection;
    const auto pixmap = makePixmap(connection, image);
    const std::uint32_t values[] = {pixmap, makeVisibleCursor(connection)};
    xcb_change_window_attributes(connection, connection.root(), XCB_CW_BACK_PIXMAP | XCB_CW_CURSOR, values);
    for (const auto* name : {"_XROOTPMAP_ID", "ESETROOT_PMAP_ID"})
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, connection.root(), connection.atom(name), XCB_ATOM_PIXMAP, 32, 1, &pixmap);
    xcb_clear_area(connection, 0, connection.root(), 0, 0, 0, 0);
    Platform::X11::adopt(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

}  // namespace TestSupport
