// Where windows of other programs have come, gone or changed their place or look a moment
// ago. A compositor paints late: what the screen shows there may still be what it was.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <vector>

#include "Platform/X11/Capture/Region.h"
#include "Platform/X11/Capture/StackModel.h"
#include "Platform/X11/OverlayStack.h"

namespace Platform::X11 {

class StackHistory {
public:
    using Time = std::chrono::steady_clock::time_point;

    // The windows of our overlays move all the time and are known elsewhere. What is there
    // at the first call has been there for long.
    void update(const StackModel&, std::span<const OverlayEntry>, Time now);

    // Adds the parts of `area` in which something has changed, shadows included.
    void addRecent(const DeviceRect& area, Region&) const;

private:
    struct Seen {
        xcb_window_t window;
        DeviceRect frame;
        std::uint64_t look;

        friend bool operator==(const Seen&, const Seen&) = default;
    };
    struct Change {
        DeviceRect area;
        Time time;
    };

    void see(const StackModel&, std::span<const OverlayEntry>);
    void compare(Time now);

    std::vector<Seen> m_before;  // from the lowest up
    std::vector<Seen> m_now;
    bool m_hasSeen = false;
    std::vector<Change> m_changes;
};

}  // namespace Platform::X11
