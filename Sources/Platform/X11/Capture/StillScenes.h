// Tells when a capture would bring the same as the one before, so that nobody needs to make
// it: the overlay rests, and so does all that lies beneath it. A scene at rest then costs
// next to nothing, however often it is asked for.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Platform/ScreenCapture.h"
#include "Platform/X11/Capture/ChangeWatch.h"
#include "Platform/X11/Capture/PaintPlan.h"
#include "Platform/X11/OverlayStack.h"

namespace Platform::X11 {

// What is asked for, and what an answer depends on besides the windows beneath.
struct Scene {
    std::uint32_t windowNumber = 0;
    CaptureResolution resolution = CaptureResolution::nominal;
    std::vector<Rect> rectangles;
    std::vector<OverlayEntry> overlays;
    std::shared_ptr<const MonitorLayout> layout;
    std::uint64_t compositorChanges = 0;

    friend bool operator==(const Scene&, const Scene&) = default;
};

class StillScenes {
public:
    using Time = std::chrono::steady_clock::time_point;

    // A pointer that pauses for less is still on its way, and watching windows costs requests.
    static constexpr std::chrono::milliseconds shortestRest{100};
    // Then it is captured again all the same: nobody tells of drawing on the root itself, nor
    // of what a compositor draws that does not say that it is one.
    static constexpr std::chrono::milliseconds longestStillness{1000};

    explicit StillScenes(CaptureServer& server) : m_server(server) { }

    // As ChangeWatch::handle.
    bool handle(const xcb_generic_event_t&);

    // True when the last capture below this overlay was of the same scene, is not long ago,
    // and the windows beneath have not changed in these areas of the screen since. To be asked before every
    // capture; then what is read is newer than all changes told before. Asks the server
    // nothing.
    bool isStill(const Scene&, const StackModel&, const BelowOverlay&, std::span<const DeviceRect> areas, Time now);

    // How the capture went that was asked for last below this overlay.
    void captured(std::uint32_t windowNumber, bool isComplete, Time now);

private:
    struct Rest {
        Scene scene;
        Time begin;
        std::unique_ptr<ChangeWatch> watch;  // once it lasts
        std::optional<Time> captured;
    };

    void forgetOthers(const Scene&);
    Rest& restOf(std::uint32_t windowNumber);

    CaptureServer& m_server;
    std::vector<Rest> m_rests;  // one for each overlay
};

}  // namespace Platform::X11
