// Switching the capture's knowledge of the screen on and off, for those who show
// overlays. Any thread.
#pragma once

#include <xcb/xproto.h>

#include <span>

#include "Platform/X11/MonitorLayout.h"

namespace Platform::X11 {

// What the screen showed of a place before a window of ours covered it.
struct CoveredPart {
    xcb_window_t window = XCB_WINDOW_NONE;  // ours
    DeviceRect place;
    xcb_pixmap_t pixmap = XCB_NONE;  // as large as the place, of the root's depth
};

class CaptureActivation {
public:
    virtual ~CaptureActivation() = default;

    // To be called before the first window of an overlay is mapped: from then on every
    // window of the screen keeps its whole contents, covered or not. Twice does no harm.
    virtual void activate() = 0;

    // The same, but windows do not keep their contents until keepContents() is called: for
    // the server that means copying them all, which takes longer than the first picture of
    // an overlay may. Until then captures are right only while no overlay covers anything;
    // one of what is covered has the truth `none`.
    virtual void activateBeforeContents() = 0;
    // To be called as soon as the first windows of an overlay are mapped; none of them may
    // move or go before. `covered` says what lies beneath them; its pixmaps are freed.
    virtual void keepContents(std::span<const CoveredPart> covered) = 0;

    // Once no overlay is shown: nothing is listened to, held in the server or kept in
    // memory afterwards.
    virtual void deactivate() = 0;
};

}  // namespace Platform::X11
