// Borderless windows above everything, on every workspace, that take clicks on
// their frame and the keyboard while they are shown, without moving the focus.
// Main thread only.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "Platform/Geometry.h"
#include "Platform/Image.h"
#include "Platform/KeyCodes.h"

namespace Platform {

// What an overlay may show: pictures at rectangles. A picture is stretched to its
// rectangle without smoothing.
struct Picture {
    Rect rectangle;                // view space; edges are rounded to device pixels, halves up in y-down device space
    const Image* image = nullptr;  // not owned, read during present() only; absent: a plain colour
    std::uint32_t colour = 0;      // 0xAARRGGBB, premultiplied, where there is no image. A window
                                   // system that cannot blend draws it opaque.
    // Unless it is 0: images that one window presents with the same number are of the same
    // size and have the same alpha everywhere. What was learned from that need not be again.
    std::uint64_t alphaNumber = 0;
};

struct OverlayStyle {
    Rect frame;  // desktop space
    bool hasShadow = false;
};

// Called on the main thread. The delegate must outlive its window.
class OverlayWindowDelegate {
public:
    virtual ~OverlayWindowDelegate() = default;

    // A key went down (also auto-repeats) while this overlay was the key one: the last
    // one ordered front among those shown.
    virtual void keyDown(const KeyEvent&) = 0;

    // The overlay can no longer be above everything (a screen locker came up) or the
    // window system closed it. The owner should order it out.
    virtual void dismissRequested() = 0;
};

class OverlayWindow {
public:
    // Orders out.
    virtual ~OverlayWindow() = default;

    // Positive, fits 32 bits, never used again.
    virtual std::int64_t windowNumber() const = 0;

    virtual Rect frame() const = 0;
    virtual void setFrame(const Rect&) = 0;

    // Everything the overlay shows from now on, in one atomic step; later pictures lie
    // above earlier ones. Kept while ordered out. Two pictures at most today.
    virtual void present(std::span<const Picture>) = 0;

    // Shows the overlay above everything, other overlays included, and makes it the key one.
    virtual void makeKeyAndOrderFront() = 0;
    virtual void orderOut() = 0;
};

class OverlayWindows {
public:
    virtual ~OverlayWindows() = default;

    virtual std::unique_ptr<OverlayWindow> makeOverlayWindow(const OverlayStyle&, OverlayWindowDelegate&) = 0;
};

}  // namespace Platform
