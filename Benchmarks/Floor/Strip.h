// One line of the floor program: a strip of the screen in memory shared with the server,
// and the window that shows it inverted. Device pixels of the X screen, y down.
#pragma once

#include <xcb/shm.h>

#include <cstdint>
#include <span>

#include "Platform/X11/Connection.h"

namespace Benchmarks {

struct Place {
    std::int16_t x = 0;
    std::int16_t y = 0;
};

struct Extent {
    std::uint16_t width = 0;
    std::uint16_t height = 0;
};

class Strip {
public:
    // The window is mapped at once, with the next flush.
    Strip(Platform::X11::Connection&, Place, Extent);
    Strip(const Strip&) = delete;
    Strip& operator=(const Strip&) = delete;

    // Asks for the screen's pixels without waiting; receive() waits and inverts them.
    void request(Place);
    bool receive();
    void moveTo(Place);
    void put();

private:
    struct Format {
        std::uint8_t depth;
        xcb_visualid_t visual;
        xcb_colormap_t colormap;
    };

    Format makeFormat();
    void createWindow(Place);
    void markForCompositors();
    void shareMemory();

    Platform::X11::Connection& m_connection;
    const Extent m_extent;
    const Format m_format;
    xcb_window_t m_window;
    xcb_gcontext_t m_graphics;
    xcb_shm_seg_t m_segment;
    xcb_shm_get_image_cookie_t m_request{};
    std::span<std::uint32_t> m_pixels;
};

}  // namespace Benchmarks
