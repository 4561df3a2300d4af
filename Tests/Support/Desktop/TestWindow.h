// An application with one window of known contents that records which keys, clicks and
// focus changes reach it. It has a connection of its own, as any program.
#pragma once

#include <string>
#include <vector>

#include "Platform/Image.h"
#include "Platform/X11/Connection.h"
#include "Platform/X11/MonitorLayout.h"

namespace TestSupport {

class TestWindow {
public:
    // A dock keeps its own part of the screen's upper edge free of other windows.
    enum class Kind { ordinary, fullScreen, dock };

    // Shows the window, its contents at `frame` (device pixels of the X screen), filled with
    // testPattern(…, seed). Returns when it is there. Throws when that does not come true.
    TestWindow(
        const std::string& displayName, const std::string& title, const Platform::X11::DeviceRect& frame, std::uint32_t seed, Kind = Kind::ordinary);
    // The same with contents of the caller's.
    TestWindow(const std::string& displayName, const std::string& title, Platform::X11::DevicePoint position, Platform::Image contents,
        Kind = Kind::ordinary);

    // Gives the window the focus, as a click in a task bar would. Returns when it has it.
    void activate();
    bool hasFocus() const;

    // What reached the window since the last call, as "KeyPress 30" (evdev code),
    // "ButtonPress 1", "FocusOut". What grabs do to the focus for a moment is left out.
    std::vector<std::string> takeEvents();

    // True when that picture of the screen shows the contents all over the window; a
    // compositor may be slow to paint them.
    bool isPaintedOn(const Platform::Image& screen) const;

    const Platform::Image& picture() const { return m_contents; }
    // Where the window's contents really are.
    Platform::X11::DeviceRect contents() const;
    xcb_window_t id() const { return m_window; }

private:
    void createWindow(Platform::X11::DevicePoint position);
    void moveIntoPlace(Platform::X11::DevicePoint position);
    void setProperties(const std::string& title, Kind);
    void becomeDock();
    void requestActivation();
    bool isViewable() const;

    const Platform::Image m_contents;
    std::unique_ptr<Platform::X11::Connection> m_connection;
    xcb_window_t m_window = XCB_WINDOW_NONE;
};

}  // namespace TestSupport
