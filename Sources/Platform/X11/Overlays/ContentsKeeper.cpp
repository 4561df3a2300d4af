#include "Platform/X11/Overlays/ContentsKeeper.h"

#include <utility>

#include "Platform/X11/WireRect.h"

namespace Platform::X11 {

ContentsKeeper::ContentsKeeper(Connection& connection, CaptureActivation& capture) : m_connection(connection), m_capture(capture) { }

void ContentsKeeper::start()
{
    m_keepsLater = !m_connection.hasCompositor();
    if (m_keepsLater)
        m_capture.activateBeforeContents();
    else
        m_capture.activate();
}

// The capture has a connection of its own, which must not overtake this one: what windows of
// ours cover while others begin or cease to keep their contents is lost to those.
void ContentsKeeper::stop()
{
    m_keepsLater = false;
    m_connection.waitForServer();
    m_capture.deactivate();
}

void ContentsKeeper::willMap(xcb_window_t window, const DeviceRect& place)
{
    if (!m_keepsLater || place.isEmpty())
        return;
    if (m_covered.empty())
        xcb_grab_server(m_connection);
    const CoveredPart part{window, place, m_connection.newId()};
    const auto root = m_connection.root();
    const auto [x, y, width, height] = toWire(place);
    xcb_create_pixmap(m_connection, m_connection.screen().root_depth, part.pixmap, root, width, height);
    const auto graphics = m_connection.newScreenGraphics();
    xcb_copy_area(m_connection, root, part.pixmap, graphics, x, y, 0, 0, width, height);
    xcb_free_gc(m_connection, graphics);
    m_covered.push_back(part);
}

void ContentsKeeper::haveMapped()
{
    if (m_covered.empty())
        return;
    m_keepsLater = false;
    xcb_ungrab_server(m_connection);
    m_connection.waitForServer();
    m_capture.keepContents(std::exchange(m_covered, {}));
}

}  // namespace Platform::X11
