// The input focus, borrowed where no window has it: passive grabs of keys do not work
// then. Given back to no window afterwards, unless somebody else took it meanwhile.
#pragma once

#include <memory>

#include "Platform/MainLoop.h"
#include "Platform/X11/Connection.h"

namespace Platform::X11 {

class FocusLoan {
public:
    FocusLoan(Connection&, MainLoop&);
    ~FocusLoan();
    FocusLoan(const FocusLoan&) = delete;
    FocusLoan& operator=(const FocusLoan&) = delete;

    // From now on the window, which must be viewable, gets the focus where no window has
    // it: at once (one round trip), and when it is lost later. XCB_WINDOW_NONE ends.
    void begin(xcb_window_t window);
    void end();

    // Every event of the connection must pass here.
    void handle(const xcb_generic_event_t&);

private:
    void takeIfNobodyHasIt();
    bool hasFocus(xcb_window_t window) const;
    bool setFocus(xcb_window_t window) const;
    void selectFocusEvents(bool isOn) const;

    Connection& m_connection;
    MainLoop& m_mainLoop;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    bool m_isBorrowed = false;
    std::unique_ptr<Timer> m_timer;
};

}  // namespace Platform::X11
