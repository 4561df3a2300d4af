// Paints plans in the server: names the pixmaps of windows when they are first needed
// and copies or blends their parts onto canvases.
#pragma once

#include <xcb/render.h>

#include <cstdint>
#include <span>
#include <unordered_map>

#include "Platform/X11/Capture/Canvas.h"
#include "Platform/X11/Capture/CaptureServer.h"
#include "Platform/X11/Capture/PaintPlan.h"
#include "Platform/X11/Capture/RootBackground.h"
#include "Platform/X11/Capture/WallpaperBrush.h"

namespace Platform::X11 {

class Painter {
public:
    explicit Painter(CaptureServer&);
    ~Painter();
    Painter(const Painter&) = delete;
    Painter& operator=(const Painter&) = delete;

    // Paints the steps, of which the first is the highest. The canvas's corner is the corner
    // of `area`. No round trip.
    void paint(std::span<const PaintStep>, const DeviceRect& area, const RootLook& root, Canvas&);
    // Where the pixels of a step's window are, its border included. No round trip.
    xcb_pixmap_t pixmapOf(const PaintStep& step) { return named(step).pixmap; }

    // An error of the connection came in. A window whose pixmap could not be named is
    // named anew next time.
    void failed(const xcb_generic_error_t&);
    // True when one of the steps could not be painted for that reason.
    bool hasFailed(std::span<const PaintStep>) const;

    // Gives back the pixmaps of windows that are gone, unmapped or of another size.
    void releaseStale(const StackModel&);

private:
    struct Named {
        std::uint64_t contents = 0;
        xcb_pixmap_t pixmap = XCB_NONE;
        xcb_render_picture_t picture = XCB_NONE;
        xcb_render_picture_t mask = XCB_NONE;
        std::uint8_t maskAlpha = 0xff;
        unsigned request = 0;  // that named it
        bool hasFailed = false;
    };
    Named& named(const PaintStep&);
    void release(Named&);
    void paintWindow(const PaintStep&, Canvas&, const DeviceRect& area);
    void paintRoot(std::span<const PaintStep>, const DeviceRect& area, const RootLook&, const Canvas&);
    void copy(xcb_drawable_t, DevicePoint source, const PaintStep&, const Canvas&, const DeviceRect& area);
    void blend(Named&, const PaintStep&, Canvas&, const DeviceRect& area);

    CaptureServer& m_server;
    xcb_connection_t* m_c;
    xcb_gcontext_t m_gc;
    RootBackground m_rootBackground;
    WallpaperBrush m_wallpaper;
    std::unordered_map<xcb_window_t, Named> m_named;
};

}  // namespace Platform::X11
