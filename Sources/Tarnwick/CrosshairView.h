// What the crosshair's overlay shows: a horizontal and a vertical line through the
// pointer, each the inverted picture of the one-point strip of screen beneath it.
// Main thread only; the strips are captured and inverted on the capture queue.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "Platform/MainLoop.h"
#include "Platform/OverlayWindow.h"
#include "Platform/ScreenCapture.h"
#include "Platform/Screens.h"
#include "Tarnwick/CaptureQueue.h"

namespace Tarnwick {

// Horizontal first, then vertical.
using Strips = std::array<Platform::Captured, 2>;

// At most two pictures, from the lowest up, in view space. The images belong to the
// view and stay as they are until its next task.
struct CrosshairDrawing {
    std::array<Platform::Picture, 2> storage;
    std::size_t count = 0;

    void add(const Platform::Picture& picture) { storage[count++] = picture; }
    std::span<const Platform::Picture> pictures() const { return {storage.data(), count}; }
};

// Owned by a shared pointer: capture jobs refer to it weakly and never keep it alive.
class CrosshairView final : public std::enable_shared_from_this<CrosshairView> {
public:
    CrosshairView(Platform::MainLoop&, Platform::Screens&, Platform::ScreenCapture&, CaptureQueue&);

    // The window that shows the view; it gives the bounds. Without one nothing is drawn.
    void setWindow(Platform::OverlayWindow* window) { m_window = window; }

    // The pointer in view space.
    Platform::Point mouse() const { return m_mouse; }
    void setMouse(Platform::Point mouse) { m_mouse = mouse; }

    // Presents the drawing in a later turn of the main loop, once for all calls until then.
    void setNeedsDisplay();

    // Asks for the strips beneath the pointer as they are without the window of that
    // number. Dropped while an earlier request is under way. A number that is no unsigned
    // 32-bit value is a fatal error.
    void scheduleStripRefresh(std::int64_t excludingWindowNumber);

    CrosshairDrawing draw() const;

    // The strips of the last finished capture that had something new; null where there was none.
    const Platform::Image* hStrip() const { return imageOf(m_strips[0]); }
    const Platform::Image* vStrip() const { return imageOf(m_strips[1]); }
    bool captureInFlight() const { return m_captureInFlight; }

private:
    friend struct StripCaptureJob;

    // All that a drawing depends on besides the strips' pixels.
    struct Shown {
        Platform::Point mouse;
        Platform::Rect frame;

        friend bool operator==(const Shown&, const Shown&) = default;
    };

    static const Platform::Image* imageOf(const Platform::Captured&);

    Platform::Size bounds() const;
    std::array<Platform::Rect, 2> stripRectangles() const;
    void store(Strips strips);
    Shown shownNow() const;
    void displayUnlessStoreStepWill();

    Platform::MainLoop& m_mainLoop;
    Platform::Screens& m_screens;
    Platform::ScreenCapture& m_screenCapture;
    CaptureQueue& m_captureQueue;
    Platform::OverlayWindow* m_window = nullptr;

    Platform::Point m_mouse;
    Strips m_strips;
    bool m_captureInFlight = false;

    Strips m_spareStrips;  // with the job while a capture is in flight
    bool m_requestDropped = false;
    bool m_hasUndrawnStrips = false;
    std::optional<Shown> m_shown;
    bool m_displayPosted = false;
};

}  // namespace Tarnwick
