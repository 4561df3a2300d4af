// A client of the tests that makes windows with known contents on a private server.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "Platform/Image.h"

#include "Platform/X11/Connection.h"
#include "Platform/X11/MonitorLayout.h"

namespace CaptureTests {

using Platform::Image;
using Platform::X11::DevicePoint;
using Platform::X11::DeviceRect;

class Desktop {
public:
    // Throws when there is no such server.
    explicit Desktop(const std::string& displayName);

    Platform::X11::Connection& connection() { return *m_connection; }
    DeviceRect screen() const;

    struct Style {
        DeviceRect inner;  // without the border
        int border = 0;
        std::uint32_t borderColour = 0;
        std::uint32_t colour = 0;  // premultiplied
        bool isArgb = false;
        bool isOverrideRedirect = true;
    };
    // Unmapped; its background is the colour.
    xcb_window_t makeWindow(const Style&);
    xcb_window_t makeMappedWindow(const Style&);
    xcb_window_t makeInputOnlyWindow(const DeviceRect&);
    void setPatternBackground(xcb_window_t, const Image& tile, bool isArgb);
    // `area` in the window's coordinates.
    void fill(xcb_window_t, const DeviceRect& area, std::uint32_t colour);
    void setRootTile(const Image& tile);
    void setOpacity(xcb_window_t, std::uint32_t opacity);
    void setShape(xcb_window_t, std::span<const DeviceRect> inner);
    void clearShape(xcb_window_t);
    void map(xcb_window_t window) { xcb_map_window(*m_connection, window); }
    void unmap(xcb_window_t window) { xcb_unmap_window(*m_connection, window); }
    void destroy(xcb_window_t window) { xcb_destroy_window(*m_connection, window); }
    void move(xcb_window_t, int x, int y);
    void resize(xcb_window_t, int width, int height);
    void setBorder(xcb_window_t, int width);
    void reparentToRoot(xcb_window_t, int x, int y);
    void restack(xcb_window_t, std::uint32_t mode, xcb_window_t sibling = XCB_WINDOW_NONE);

    // Waits until the server has done all of it.
    void sync();
    // What the screen shows, 0xffRRGGBB.
    Image screenPicture(const DeviceRect&);
    Image screenPicture() { return screenPicture(screen()); }

private:
    xcb_pixmap_t makePixmap(const Image&, std::uint8_t depth);

    std::unique_ptr<Platform::X11::Connection> m_connection;
    xcb_colormap_t m_argbColours = XCB_NONE;
};

}  // namespace CaptureTests
