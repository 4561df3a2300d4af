// A program whose window is painted once: it never paints any of it again, and all that the
// server would paint is a plain background.
#pragma once

#include <memory>
#include <string>

#include "Platform/X11/Connection.h"
#include "Platform/X11/MonitorLayout.h"

namespace TestSupport {

class PaintedOnce {
public:
    // At `frame` (device pixels of the X screen), on top, out of any window manager's hands.
    // Throws when there is no such server.
    PaintedOnce(const std::string& displayName, const Platform::X11::DeviceRect& frame);

private:
    const std::unique_ptr<Platform::X11::Connection> m_connection;
};

}  // namespace TestSupport
