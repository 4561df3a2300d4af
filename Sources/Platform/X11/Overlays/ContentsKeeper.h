// Has the windows of the screen keep their contents while there are overlays: before the
// first window of ours covers any of them where a compositor has them kept anyway, else
// just after. Copying all of them takes the server longer than a frame on a large screen,
// and the first picture shall not wait for it. Main thread.
#pragma once

#include <vector>

#include "Platform/X11/CaptureActivation.h"
#include "Platform/X11/Connection.h"

namespace Platform::X11 {

class ContentsKeeper {
public:
    // Both must outlive this. The connection is that of the overlays' windows.
    ContentsKeeper(Connection&, CaptureActivation&);

    void start();
    // Once no window of ours is mapped.
    void stop();

    // Whether it has to be told of windows that are mapped.
    bool keepsLater() const { return m_keepsLater; }
    // Before windows of ours are mapped, for each of them. No other client's request comes
    // between this and haveMapped().
    void willMap(xcb_window_t, const DeviceRect& place);
    // Once all are mapped and painted.
    void haveMapped();

private:
    Connection& m_connection;
    CaptureActivation& m_capture;
    bool m_keepsLater = false;
    std::vector<CoveredPart> m_covered;
};

}  // namespace Platform::X11
