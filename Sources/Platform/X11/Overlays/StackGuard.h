// Keeps our overlays above everything. While it watches, each foreign window that is
// mapped or restacked makes it look once at what lies above ours: an ordinary window is
// answered by raising ours; an override-redirect window that covers a whole monitor is
// a screen locker (or the like), which must stay on top, so the overlays have to go. It also
// tells when a compositor comes or goes.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include "Platform/X11/Connection.h"
#include "Platform/X11/EventPump.h"
#include "Platform/X11/SharedMonitorLayout.h"

namespace Platform::X11 {

class StackGuard {
public:
    struct Handlers {
        std::function<void()> raise;    // put ours on top again
        std::function<void()> dismiss;  // something that must stay above came
        std::function<void()> compositorChanged;
        std::function<bool(xcb_window_t)> isOurs;
    };

    // Round trips go over `requests`; `events` is a connection that nothing else uses.
    StackGuard(Connection& requests, Connection& events, FileDescriptorWatcher&, MainLoop&, const SharedMonitorLayout&, Handlers);
    ~StackGuard();

    void watch();
    void stopWatching();

    // To be called before each move of our own windows, of which the server tells this
    // too: while they come 60 times a second, foreign windows are looked for as often, and
    // no event wakes the main loop in between.
    void ownWindowsMove();

private:
    void handle(const xcb_generic_event_t&);
    void lookSoon();
    void look();
    void select(bool isWanted);
    bool mayRaiseAgainst(xcb_window_t rival);

    struct Rivalry {
        std::chrono::steady_clock::time_point since;
        int raises = 0;
    };

    Connection& m_requests;
    Connection& m_events;
    MainLoop& m_mainLoop;
    const SharedMonitorLayout& m_layout;
    const Handlers m_handlers;
    const xcb_atom_t m_compositorSelection;
    const bool m_hasFixes;
    bool m_isWatching = false;
    bool m_willLook = false;
    std::unordered_map<xcb_window_t, Rivalry> m_rivalries;
    std::shared_ptr<StackGuard*> m_self;  // empties when this goes
    EventPump m_pump;
};

}  // namespace Platform::X11
