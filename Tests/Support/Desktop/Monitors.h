// Several monitors on Xvfb's one screen, as RandR clients see them.
#pragma once

#include <string>

#include "Platform/X11/Connection.h"
#include "Platform/X11/MonitorLayout.h"

namespace TestSupport {

// Makes or moves the monitor of that name. The primary one takes the server's only output,
// so the monitor that the server made by itself goes.
void setMonitor(Platform::X11::Connection&, const std::string& name, const Platform::X11::DeviceRect& frame, bool isPrimary);
void removeMonitor(Platform::X11::Connection&, const std::string& name);

}  // namespace TestSupport
