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

    // True when the picture is area() itself, pixel by pixel, all of it on monitors.
    bool isWholeArea(const MonitorLayout&) const;

    // `pixels` are those of area(), 0xXXRRGGBB. What lies on no monitor becomes 0, all
    // others opaque.
    void fill(const MonitorLayout&, std::span<const std::uint32_t> pixels, Image&) const;

private:
    // The columns or the rows that are sampled, in ascending order. They are reckoned anew
    // only where their number, step or bound changes, not where the rectangle moves.
    class Axis {
    public:
        void lay(int start, int length, int count, double step);
        std::size_t count() const { return m_offsets.size(); }
        int front() const { return m_start + m_offsets.front(); }
        int back() const { return m_start + m_offsets.back(); }
        int at(std::size_t index) const { return m_start + m_offsets[index]; }
        // No device pixel is left out or comes twice.
        bool isUnbroken() const { return m_step == 1 && static_cast<int>(count()) <= m_length; }

        // Indices of the samples that lie in [from, to).
        struct Range {
            std::size_t from;
            std::size_t to;
        };
        Range within(int from, int to) const;

    private:
        int m_start = 0;
        int m_length = 0;
        double m_step = 0;
        std::vector<int> m_offsets;
    };

    bool isOnMonitors(const MonitorLayout&) const;
    void fillPart(const DeviceRect& visible, std::span<const std::uint32_t> pixels, Image&) const;

    Axis m_columns;
    Axis m_rows;
    DeviceRect m_area;
};

}  // namespace Platform::X11
