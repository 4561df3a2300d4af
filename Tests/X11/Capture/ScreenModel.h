// What a screen must show, reckoned pixel by pixel from what the tests' windows are made
// of. It shares no code with the capture.
#pragma once

#include <optional>
#include <set>
#include <span>
#include <vector>

#include "X11/Capture/Desktop.h"

namespace CaptureTests {

struct ModelWindow {
    xcb_window_t id = XCB_WINDOW_NONE;
    DeviceRect inner;  // the size is that inside the border, the corner that outside it
    int border = 0;
    std::uint32_t borderColour = 0;
    Image tile{1, 1};  // its contents, repeated; premultiplied
    bool isArgb = false;
    bool isMapped = false;
    std::uint32_t opacity = 0xffffffff;
    std::optional<std::vector<DeviceRect>> shape;  // relative to the inner corner

    DeviceRect outer() const { return {inner.x, inner.y, inner.width + 2 * border, inner.height + 2 * border}; }
    // Nothing where the window has no pixel.
    std::optional<std::uint32_t> pixelAt(DevicePoint) const;
};

class ScreenModel {
public:
    explicit ScreenModel(const DeviceRect& screen) : m_screen(screen) { }

    Image rootTile{1, 1};
    std::vector<ModelWindow> windows;  // from the lowest to the highest
    bool blends = false;               // a compositor shows alpha and opacity

    ModelWindow& find(xcb_window_t);
    std::size_t indexOf(xcb_window_t) const;
    void raise(xcb_window_t);
    void lower(xcb_window_t);
    void placeAbove(xcb_window_t, xcb_window_t sibling);
    void placeBelow(xcb_window_t, xcb_window_t sibling);

    // The picture of `area` made of the windows below that place in the stack without
    // those left out; 0 off the screen.
    Image picture(const DeviceRect& area, std::size_t top, const std::set<xcb_window_t>& leftOut) const;
    Image picture(const DeviceRect& area) const { return picture(area, windows.size(), {}); }
    const DeviceRect& screen() const { return m_screen; }

private:
    ModelWindow take(xcb_window_t);
    void paint(const ModelWindow&, const DeviceRect& area, Image&) const;

    DeviceRect m_screen;
};

}  // namespace CaptureTests
