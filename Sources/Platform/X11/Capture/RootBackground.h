// The root window's background without a compositor, as pixmaps, kept in bands along what is captured, not
// for the whole screen: one for 8K would take 132 MB of the server's memory.
#pragma once

#include <array>
#include <cstdint>

#include "Platform/X11/Capture/CaptureServer.h"

namespace Platform::X11 {

struct RootLook {
    DeviceRect area;
    std::uint64_t generation = 0;  // another one and the background may be another one
    bool hasCompositor = false;
    xcb_pixmap_t wallpaper = XCB_NONE;  // the tile that compositors show in its place
};

class RootBackground {
public:
    struct Source {
        xcb_pixmap_t pixmap = XCB_NONE;
        DeviceRect area;  // of the screen that it shows
    };

    explicit RootBackground(CaptureServer& server) : m_server(server) { }
    ~RootBackground() { release(); }
    RootBackground(const RootBackground&) = delete;
    RootBackground& operator=(const RootBackground&) = delete;

    // A pixmap that shows at least `area`, which lies in the root window.
    const Source& sourceFor(const DeviceRect& area, const RootLook&);
    void release();

private:
    struct Band {
        Source source;
        std::uint64_t lastUse = 0;
    };

    void takeFromServer(const Source&);
    void release(Source&);

    CaptureServer& m_server;
    std::array<Band, 4> m_bands;
    std::uint64_t m_generation = 0;
    std::uint64_t m_uses = 0;
};

}  // namespace Platform::X11
