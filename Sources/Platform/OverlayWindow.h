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

// Writes the pixels of a picture itself, straight into the memory that they are shown from,
// where an image would first be drawn and then copied.
class PixelSource {
public:
    virtual ~PixelSource() = default;

    // In pixels, above 0.
    virtual int width() const = 0;
    virtual int height() const = 0;

    // Writes every pixel, as of an Image of that size.
    virtual void draw(std::span<std::uint32_t> pixels) = 0;

    // Of what was drawn last. Unless it is 0: of the same number, what one window shows has
    // the same size and the same alpha everywhere, which need not be looked at again.
    virtual std::uint64_t alphaNumber() const = 0;
};

// What an overlay may show: pictures at rectangles. A picture is stretched to its
// rectangle without smoothing. Colours of one overlay are one layer: where several
// overlap, they cover once, as the last of them.
struct Picture {
    Rect rectangle;                 // view space; edges are rounded to device pixels, halves up in y-down device space
    const Image* image = nullptr;   // not owned, read during present() only
    PixelSource* source = nullptr;  // the same, in place of the image
    std::uint32_t colour = 0;       // 0xAARRGGBB, premultiplied, where there is neither. A window
                                    // system that cannot blend draws it opaque.
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
    // The first that is shown has the keyboard when its picture is seen, a moment later at
    // the latest.
    virtual void makeKeyAndOrderFront() = 0;
    virtual void orderOut() = 0;
};

class OverlayWindows {
public:
    virtual ~OverlayWindows() = default;

    virtual std::unique_ptr<OverlayWindow> makeOverlayWindow(const OverlayStyle&, OverlayWindowDelegate&) = 0;
};

}  // namespace Platform
