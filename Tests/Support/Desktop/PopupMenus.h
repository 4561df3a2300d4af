// The menus that stand open on a display, whoever opened them.
#pragma once

#include <vector>

#include "Platform/X11/Connection.h"
#include "Platform/X11/MonitorLayout.h"
#include "Support/Desktop/Desktop.h"

namespace TestSupport {

// Their frames, the topmost first.
std::vector<Platform::X11::DeviceRect> openMenus(Platform::X11::Connection&);

// Whether a client has the pointer to itself: a menu of its own, or a click under way.
bool isPointerTaken(Platform::X11::Connection&);

// Waits until one menu is open and painted and has the pointer. Throws when none opens.
Platform::X11::DeviceRect waitForMenu(Desktop&);
// Waits until no menu is open and the pointer is free: a click before that would still be
// the menu's. False when that does not come true.
bool waitForNoMenu(Desktop&);

// A real click on the first or the last entry of a menu.
void clickFirstEntry(Desktop&, const Platform::X11::DeviceRect& menu);
void clickLastEntry(Desktop&, const Platform::X11::DeviceRect& menu);

}  // namespace TestSupport
