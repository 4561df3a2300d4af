// The root window's background as pixmaps. No request reads it: what the server paints
// into a window without a background of its own, which lies below everything for an
// instant, is it. Kept in bands along what is captured, not for the whole screen: one
// for 8K would take 132 MB of the server's memory.
#pragma once

#include <array>
#include <cstdint>

#include "Platform/X11/Capture/CaptureServer.h"

namespace Platform::X11 {

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

    // A pixmap that shows at least `area`, which lies in `root`. `generation` says which
    // background: another one and the pixmaps are made anew.
    const Source& sourceFor(const DeviceRect& area, const DeviceRect& root, std::uint64_t generation);
    void release();

private:
    struct Band {
        Source source;
        std::uint64_t lastUse = 0;
    };

    void make(Source&, const DeviceRect& area);
    void release(Source&);

    CaptureServer& m_server;
    std::array<Band, 4> m_bands;
    std::uint64_t m_generation = 0;
    std::uint64_t m_uses = 0;
};

}  // namespace Platform::X11
