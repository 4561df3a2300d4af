// Which parts of which windows make up a piece of the screen below an overlay: pure
// reckoning on the stack model.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Platform/X11/Capture/Region.h"
#include "Platform/X11/Capture/StackModel.h"
#include "Platform/X11/OverlayStack.h"

namespace Platform::X11 {

struct PaintStep {
    xcb_window_t window = XCB_WINDOW_NONE;  // none: the root background
    std::uint64_t contents = 0;             // of the window, or of the root background
    xcb_visualid_t visual = 0;
    std::uint8_t depth = 0;
    std::uint8_t alpha = 0xff;  // the whole window's
    bool isBlended = false;     // drawn over what lies beneath, else in its place
    bool isOnScreen = false;    // of the root: with all that lies on it, as the screen shows it
    DeviceRect area;            // of the screen
    DevicePoint source;         // where the area's corner lies in the window's pixmap

    friend bool operator==(const PaintStep&, const PaintStep&) = default;
};

// What is left out of a capture.
struct BelowOverlay {
    // The windows from here on upward do not count: an index into the model's windows.
    std::size_t top = 0;
    // Nor do these, wherever they lie.
    std::vector<xcb_window_t> leftOut;

    bool leavesOut(xcb_window_t) const;
};

// Everything below the lowest shown window of the overlay with that number, without
// the windows of this overlay and of those above it. `entries` from the lowest up.
void lookBelow(std::uint32_t windowNumber, std::span<const OverlayEntry> entries, const StackModel&, BelowOverlay&);

class PaintPlanner {
public:
    // Appends to `steps` what is to be painted, the highest first. With `blends` windows
    // show what lies beneath as far as their alpha and opacity say, as compositors do;
    // without, every window is opaque and the screen shows what no window that is left out
    // hides.
    void plan(const StackModel&, const BelowOverlay&, bool blends, const DeviceRect& area, std::vector<PaintStep>& steps);

private:
    void findVisibleParts(const ToplevelWindow&);
    void takeWhatTheScreenShows(const StackModel&, const BelowOverlay&, std::vector<PaintStep>& steps);

    Region m_uncovered;
    std::vector<DeviceRect> m_parts;
};

}  // namespace Platform::X11
