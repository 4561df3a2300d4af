// Rectangles as requests carry them.
#pragma once

#include <xcb/xproto.h>

#include <cstdint>

#include "Platform/X11/MonitorLayout.h"

namespace Platform::X11 {

// Coordinates of requests are 16 bits wide; rectangles of the screen fit them.
inline xcb_rectangle_t toWire(const DeviceRect& rect)
{
    return {static_cast<std::int16_t>(rect.x), static_cast<std::int16_t>(rect.y), static_cast<std::uint16_t>(rect.width),
        static_cast<std::uint16_t>(rect.height)};
}

}  // namespace Platform::X11
