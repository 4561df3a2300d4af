// Has every window of the screen keep its whole contents in the server, covered or not,
// until the object goes.
#pragma once

#include <xcb/xfixes.h>

#include <span>

#include "Platform/X11/Capture/CaptureServer.h"
#include "Platform/X11/Capture/StackModel.h"
#include "Platform/X11/CaptureActivation.h"

namespace Platform::X11 {

class Redirection {
public:
    explicit Redirection(CaptureServer&);
    ~Redirection();
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

    // For one that began with windows of ours on the screen, right afterwards and under a
    // grab of the server. Where those covered others, these keep the pixels of ours, or their
    // background, at first; here they get back what they showed before. A window that is not
    // where it was in `before` is left as it is: the server has its program paint it anew.
    void putBack(std::span<const CoveredPart>, const StackModel&, std::span<const ToplevelWindow> before);

private:
    void putBack(const CoveredPart&, const DeviceRect& common, const ToplevelWindow&, xcb_gcontext_t);
    void subtract(const ToplevelWindow&);

    CaptureServer& m_server;
    xcb_connection_t* m_c;
    // Of the screen: where a window of ours covers what has not been put back yet.
    xcb_xfixes_region_t m_covered;
    xcb_xfixes_region_t m_outline;
};

}  // namespace Platform::X11
