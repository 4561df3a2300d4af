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
    // Begins with windows of ours on the screen. What the others keep of the places that
    // those cover are pixels of ours at first; what was there before is put back.
    Redirection(CaptureServer&, const StackModel&, std::span<const CoveredPart>);
    ~Redirection();
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

private:
    void putBack(const StackModel&, std::span<const CoveredPart>);
    void putBack(const CoveredPart&, xcb_xfixes_region_t, const ToplevelWindow&, xcb_gcontext_t);

    CaptureServer& m_server;
    xcb_connection_t* m_c;
};

}  // namespace Platform::X11
