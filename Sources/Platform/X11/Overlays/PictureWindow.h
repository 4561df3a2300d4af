// One override-redirect window that shows one picture of an overlay.
#pragma once

#include <vector>

#include "Platform/OverlayWindow.h"
#include "Platform/X11/Connection.h"
#include "Platform/X11/MonitorLayout.h"

namespace Platform::X11 {

// What all windows of one overlay share. Under a compositor windows are ARGB with alpha
// 255 (some compositors give those of depth 24 a shadow); without one such windows
// would be black, so they have the root's own visual.
struct PictureFormat {
    bool isBlended = false;
    std::uint8_t depth = 24;
    xcb_visualid_t visual = 0;
    xcb_colormap_t colormap = XCB_COLORMAP_NONE;
    bool hasShadow = false;
};

class PictureWindow {
public:
    PictureWindow(Connection&, const PictureFormat&);
    ~PictureWindow();
    PictureWindow(const PictureWindow&) = delete;
    PictureWindow& operator=(const PictureWindow&) = delete;

    xcb_window_t id() const { return m_window; }
    // Empty while there is nothing to show.
    const DeviceRect& frame() const { return m_frame; }

    // Moves, maps where `isShown`, and paints, without flushing. `whole` is the picture's
    // rectangle, of which the part in `visible` is shown.
    void show(const Picture&, const DeviceRect& whole, const DeviceRect& visible, bool isShown);
    void setShown(bool isShown);

private:
    void setProperties(bool hasShadow);
    void place(const DeviceRect& frame);
    void paint(const Picture&, const DeviceRect& whole);
    void putRows(int firstRow, int rows, int width);

    Connection& m_connection;
    const PictureFormat m_format;
    const xcb_window_t m_window;
    const xcb_gcontext_t m_graphics;
    DeviceRect m_frame;
    bool m_isMapped = false;
    std::vector<std::uint32_t> m_row;
};

}  // namespace Platform::X11
