// How the overlays tell the capture that it will be needed: it listens to the window
// tree only in between. Main thread only.
#pragma once

namespace Platform::X11 {

class CaptureActivation {
public:
    virtual ~CaptureActivation() = default;

    // Before the first overlay's windows exist. Nothing when active already.
    virtual void activate() = 0;
    // After the last overlay is gone.
    virtual void deactivate() = 0;
};

}  // namespace Platform::X11
