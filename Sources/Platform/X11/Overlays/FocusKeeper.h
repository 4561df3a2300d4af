// Gives the focus back where it was. The overlays never take it, but a window manager
// whose focus follows the mouse sees the pointer enter a window when the InputOnly
// window goes, and focuses that. Asked within a moment of the hiding, it puts the former
// active window back; a change later than that is the user's.
#pragma once

#include <memory>

#include "Platform/X11/Connection.h"
#include "Platform/X11/EventPump.h"

namespace Platform::X11 {

class FocusKeeper {
public:
    // Round trips go over `requests`; `events` is a connection that nothing else uses.
    FocusKeeper(Connection& requests, Connection& events, FileDescriptorWatcher&, MainLoop&);

    // Before an overlay is mapped.
    void remember();
    // Before the last overlay is unmapped.
    void keep();

private:
    void handle(const xcb_generic_event_t&);
    void stopWatching();
    void selectProperties(bool isWanted);
    void activate(xcb_window_t window);

    Connection& m_requests;
    Connection& m_events;
    MainLoop& m_mainLoop;
    const xcb_atom_t m_activeWindowAtom;
    xcb_window_t m_former = XCB_WINDOW_NONE;
    EventPump m_pump;
    std::unique_ptr<Timer> m_watchEnds;
};

}  // namespace Platform::X11
