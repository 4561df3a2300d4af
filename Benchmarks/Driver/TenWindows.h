// Ten windows with pictures in them, laid out as a cascade over the middle of the screen.
// They live as long as the object.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Platform/X11/Connection.h"

namespace Benchmarks {

class TenWindows {
public:
    // Returns when all ten are on the screen. Throws when they do not get there.
    explicit TenWindows(const std::string& displayName);

private:
    void createWindow(int index);
    bool areViewable() const;

    std::unique_ptr<Platform::X11::Connection> m_connection;
    std::vector<xcb_window_t> m_windows;
};

}  // namespace Benchmarks
