// The window that the window manager calls active.
#pragma once

#include "Platform/X11/Connection.h"

namespace Platform::X11 {

// _NET_ACTIVE_WINDOW of the root; none without a window manager that says so. One round trip.
xcb_window_t activeWindow(Connection&);

}  // namespace Platform::X11
