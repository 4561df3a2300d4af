// Where our windows lie on the screen and lay a moment ago. A compositor paints late:
// what it shows of a place that a window of ours has left may still be that window.
#pragma once

#include <chrono>
#include <span>
#include <vector>

#include "Platform/X11/Capture/PaintPlan.h"
#include "Platform/X11/Capture/Region.h"

namespace Platform::X11 {

// The place of an outlined overlay together with the shadow that a compositor may paint
// around it. Those of picom and xfwm4 reach 15 pixels out unless they are told otherwise.
DeviceRect withShadow(const DeviceRect&);

class CoverHistory {
public:
    using Time = std::chrono::steady_clock::time_point;

    // Longer than any compositor was seen to lag behind.
    static constexpr std::chrono::milliseconds memory{300};

    void update(std::span<const OverlayEntry>, Time now);

    // The parts of `area` whose pixels on the screen are not those of the windows in the
    // capture: windows that it leaves out lie there or did lately, or others of ours have
    // just left.
    void findCovered(const DeviceRect& area, const StackModel&, const BelowOverlay&, Region& covered) const;

private:
    struct Place {
        xcb_window_t window;
        DeviceRect frame;
        Time lastSeen;
        bool isCurrent;
    };

    void cover(xcb_window_t, const DeviceRect& frame, Time now);

    std::vector<Place> m_places;
};

}  // namespace Platform::X11
