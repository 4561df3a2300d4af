// The capture's own connection with what is known of the server for good: versions,
// picture formats, atoms. It counts the round trips of the capture.
#pragma once

#include <xcb/render.h>

#include <memory>
#include <utility>
#include <vector>

#include "Platform/X11/Capture/CanvasMemory.h"
#include "Platform/X11/Connection.h"
#include "Platform/X11/WireRect.h"

namespace Platform::X11 {

class CaptureServer {
public:
    // Nothing when no server answers.
    static std::unique_ptr<CaptureServer> open(const std::string& displayName, CanvasMemory = CanvasMemory::shared);

    Connection& connection() { return *m_connection; }

    // Without COMPOSITE and RENDER what lies below a window exists nowhere as pixels, and
    // an untrusted client has neither: then no capture is possible.
    bool canCapture() const { return m_canCapture; }
    bool hasShape() const { return m_hasShape; }
    bool hasSharedMemory() const { return m_hasSharedMemory; }
    // Pixmaps in memory that we share with it.
    bool hasSharedPixmaps() const { return m_hasSharedPixmaps; }
    bool hasFixes() const { return m_hasFixes; }
    bool hasDamage() const { return m_hasDamage; }

    // The picture format of a visual, 0 when there is none.
    xcb_render_pictformat_t formatOf(xcb_visualid_t) const;

    // Every wait for the server is counted here.
    void countRoundTrip() { ++m_roundTrips; }
    std::uint64_t roundTrips() const { return m_roundTrips; }

private:
    CaptureServer(std::unique_ptr<Connection>, CanvasMemory);
    void negotiate();
    void readFormats(xcb_render_query_pict_formats_cookie_t);

    std::unique_ptr<Connection> m_connection;
    const CanvasMemory m_canvasMemory;
    bool m_canCapture = false;
    bool m_hasShape = false;
    bool m_hasSharedMemory = false;
    bool m_hasSharedPixmaps = false;
    bool m_hasFixes = false;
    bool m_hasDamage = false;
    std::vector<std::pair<xcb_visualid_t, xcb_render_pictformat_t>> m_formats;
    std::uint64_t m_roundTrips = 0;
};

}  // namespace Platform::X11
