// Switching the capture's knowledge of the screen on and off, for those who show
// overlays. Any thread.
#pragma once

namespace Platform::X11 {

class CaptureActivation {
public:
    virtual ~CaptureActivation() = default;

    // To be called before the first window of an overlay is mapped: from then on every
    // window of the screen keeps its whole contents, covered or not. Twice does no harm.
    virtual void activate() = 0;

    // Once no overlay is shown: nothing is listened to, held in the server or kept in
    // memory afterwards.
    virtual void deactivate() = 0;
};

}  // namespace Platform::X11
