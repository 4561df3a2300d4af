// A pixmap of ours that is painted.
#pragma once

#include <xcb/render.h>

#include "Platform/X11/Capture/CaptureServer.h"

namespace Platform::X11 {

// At least as large as what is painted. Its picture is made when something is blended.
struct Canvas {
    xcb_pixmap_t pixmap = XCB_NONE;
    xcb_render_picture_t picture = XCB_NONE;
    int width = 0;
    int height = 0;

    void release(xcb_connection_t* c)
    {
        if (picture != XCB_NONE)
            xcb_render_free_picture(c, picture);
        if (pixmap != XCB_NONE)
            xcb_free_pixmap(c, pixmap);
        *this = {};
    }
};

}  // namespace Platform::X11
