#include "Platform/X11/X11Pointer.h"

#include <xcb/xfixes.h>

namespace Platform::X11 {

std::optional<Point> X11Pointer::location()
{
    const auto pointer = adopt(xcb_query_pointer_reply(m_connection, xcb_query_pointer(m_connection, m_connection.root()), nullptr));
    if (!pointer)
        return std::nullopt;
    return m_layout.get()->desktopPoint({pointer->root_x, pointer->root_y});
}

X11Cursor::X11Cursor(Connection& connection) : m_connection(connection), m_hasXfixes(connection.has(xcb_xfixes_id))
{
    if (!m_hasXfixes)
        return;
    // The server takes no other XFIXES request before it was told a version; hiding came with 4.
    const auto version = adopt(xcb_xfixes_query_version_reply(connection, xcb_xfixes_query_version(connection, 4, 0), nullptr));
    m_hasXfixes = version && version->major_version >= 4;
}

void X11Cursor::hide()
{
    if (m_hasXfixes)
        xcb_xfixes_hide_cursor(m_connection, m_connection.root());
    m_connection.flush();
}

void X11Cursor::show()
{
    if (m_hasXfixes)
        xcb_xfixes_show_cursor(m_connection, m_connection.root());
    m_connection.flush();
}

}  // namespace Platform::X11
