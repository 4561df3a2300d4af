// Which device pixels a picture is made of: pure reckoning. At nominal resolution the
// top-left device pixel of each point's block.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Platform/Image.h"
#include "Platform/ScreenCapture.h"
#include "Platform/X11/MonitorLayout.h"

namespace Platform::X11 {

class SampleGrid {
public:
    // False when the rectangle has no pixels or more than a picture may have.
    bool lay(const MonitorLayout&, const DeviceRect& root, const Rect& captureRect, CaptureResolution);

    // The device pixels that fill() wants; empty when all of them lie off the screen.
    const DeviceRect& area() const { return m_area; }

    // `pixels` are those of area(), 0xXXRRGGBB. What lies on no monitor becomes 0, all
    // others opaque.
    void fill(const MonitorLayout&, std::span<const std::uint32_t> pixels, Image&) const;

private:
    void fillPart(const DeviceRect& visible, std::span<const std::uint32_t> pixels, Image&) const;

    std::vector<int> m_columns;
    std::vector<int> m_rows;
    DeviceRect m_area;
};

}  // namespace Platform::X11
