// An open menu of another program: a window past the window manager, with the keyboard and
// the pointer in its hands, as toolkits do it.
#pragma once

#include <memory>
#include <string>

#include "Platform/Image.h"
#include "Platform/X11/Connection.h"
#include "Platform/X11/MonitorLayout.h"

namespace TestSupport {

class ForeignMenu {
public:
    // Filled with testPattern(…, seed); `frame` in device pixels of the X screen. Returns when it
    // is there and has both. Throws when that does not come true.
    ForeignMenu(const std::string& displayName, const Platform::X11::DeviceRect& frame, std::uint32_t seed);

    // That picture of the screen with the menu on it.
    Platform::Image paintedOn(const Platform::Image& screen) const;

    // How often the key (its evdev code) was pressed since the last call.
    int takePresses(std::uint16_t evdevCode);

private:
    bool takesKeyboardAndPointer() const;

    const Platform::X11::DeviceRect m_frame;
    const Platform::Image m_contents;
    std::unique_ptr<Platform::X11::Connection> m_connection;
    xcb_window_t m_window = XCB_WINDOW_NONE;
};

}  // namespace TestSupport
