// Paints what a compositor shows of the root window: the wallpaper that somebody set, or
// where there is none, grey. Under a compositor the server paints no background of the root
// into windows (they start with what the screen shows), so it cannot be had from there.
#pragma once

#include "Platform/X11/Capture/Canvas.h"
#include "Platform/X11/Capture/CaptureServer.h"
#include "Platform/X11/Capture/RootBackground.h"

namespace Platform::X11 {

class WallpaperBrush {
public:
    explicit WallpaperBrush(CaptureServer& server) : m_server(server) { }
    ~WallpaperBrush() { release(); }
    WallpaperBrush(const WallpaperBrush&) = delete;
    WallpaperBrush& operator=(const WallpaperBrush&) = delete;

    // Paints the part of the root onto the canvas, whose corner is that pixel of the root.
    // No round trip.
    void paint(const DeviceRect& part, const Canvas&, DevicePoint corner, const RootLook&);

private:
    void take(const RootLook&);
    void moveTo(DevicePoint corner);
    void release();

    CaptureServer& m_server;
    xcb_gcontext_t m_graphics = XCB_NONE;
    std::uint64_t m_generation = 0;
    DevicePoint m_corner;
};

}  // namespace Platform::X11
