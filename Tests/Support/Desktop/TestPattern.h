// Pictures to lie beneath the crosshair: like a photograph, large soft areas with
// grain, so that a pixel taken from the wrong place is nearly always of another colour.
#pragma once

#include <cstdint>

#include "Platform/Image.h"
#include "Platform/X11/Connection.h"

namespace TestSupport {

// The same picture for the same arguments; another `seed` gives another one.
Platform::Image testPattern(int width, int height, std::uint32_t seed);

// A pixmap of the screen's depth with that picture. The caller frees it.
xcb_pixmap_t makePixmap(const Platform::X11::Connection&, const Platform::Image&);

}  // namespace TestSupport
