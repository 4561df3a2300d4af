// What the screen must look like with the crosshair on it.
#pragma once

#include <optional>
#include <string>

#include "Platform/Image.h"
#include "Platform/X11/MonitorLayout.h"

namespace TestSupport {

// The picture with the colours of one row and one column inverted, inside `area` (device
// pixels). Where the two cross the vertical line lies above; both show the same inverse.
Platform::Image withCrosshair(const Platform::Image&, int x, int y, const Platform::X11::DeviceRect& area);
Platform::Image withCrosshair(const Platform::Image&, int x, int y);

// The picture with black lines from the column and the row on, so many device pixels wide.
Platform::Image withPlainCrosshair(const Platform::Image&, int x, int y, int width = 1);

inline constexpr std::uint32_t inverse(std::uint32_t pixel) { return pixel ^ 0x00ffffff; }

// Nothing when the pictures are the same, else how many pixels differ and the first of them.
std::optional<std::string> difference(const Platform::Image& expected, const Platform::Image& actual);

}  // namespace TestSupport
