// Where the input focus is while the overlays have the keys, and the focus borrowed where
// no window has it: passive grabs of keys do not work then. Main thread only.
#pragma once

#include <functional>
#include <memory>

#include "Platform/MainLoop.h"
#include "Platform/X11/Connection.h"

namespace Platform::X11 {

class KeyboardFocus {
public:
    // `moved` is called in a later turn of the loop after the focus left the window that
    // toplevel() gave, or came from nowhere.
    KeyboardFocus(Connection&, MainLoop&, std::function<void()> moved);
    ~KeyboardFocus();
    KeyboardFocus(const KeyboardFocus&) = delete;
    KeyboardFocus& operator=(const KeyboardFocus&) = delete;

    // Watches the focus from now on. Where no window has it, at once or later, `lender`
    // gets it, which must be viewable then or XCB_WINDOW_NONE. May be called again with
    // another lender.
    void begin(xcb_window_t lender);
    // A borrowed focus goes back to no window, unless somebody else took it meanwhile.
    void end();

    // The child of the root that the focus is in. XCB_WINDOW_NONE where it is in none:
    // with no window, with the root, or wherever the pointer is. Some round trips.
    xcb_window_t toplevel();

    // Every event of the connection must pass here.
    void handle(const xcb_generic_event_t&);

private:
    xcb_window_t focus() const;
    bool setFocus(xcb_window_t window) const;
    void borrowIfNobodyHasIt();
    xcb_window_t toplevelOf(xcb_window_t window) const;
    void watch(xcb_window_t toplevel);
    void postMoved();

    Connection& m_connection;
    MainLoop& m_mainLoop;
    const std::function<void()> m_moved;
    bool m_isOn = false;
    xcb_window_t m_lender = XCB_WINDOW_NONE;
    xcb_window_t m_watched = XCB_WINDOW_NONE;
    bool m_isBorrowed = false;
    bool m_isMovePending = false;
    std::unique_ptr<Timer> m_timer;
    std::shared_ptr<KeyboardFocus*> m_self;  // empties when this goes
};

}  // namespace Platform::X11
