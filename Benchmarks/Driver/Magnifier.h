// A program that magnifies what lies under the pointer in a window of its own, whichever
// it is: found by its window, judged by what that shows.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Desktop.h"
#include "Platform/X11/Connection.h"

namespace Benchmarks {

class Magnifier {
public:
    // Of a program that was started on that desktop when the root had those children. Waits
    // for its window: the largest of the new ones. Throws when none comes.
    Magnifier(const Desktop&, const std::vector<xcb_window_t>& windowsBefore);

    static std::vector<xcb_window_t> windowsOf(const Desktop&);

    // The pixels in the middle of its window, of this moment.
    std::vector<std::uint32_t> picture() const;

    // How many different pictures it shows in a second, looked at 1,000 times.
    double picturesPerSecond() const;

    // From a move of the pointer by half the screen to the first other picture, in
    // milliseconds, once for each of so many moves. Ends early where no other comes.
    std::vector<double> lags(int moves) const;

private:
    bool findWindow(const std::vector<xcb_window_t>& windowsBefore);
    void measureWindow();

    std::string m_displayName;
    std::unique_ptr<Platform::X11::Connection> m_connection;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    std::int16_t m_middleX = 0;
    std::int16_t m_middleY = 0;
};

}  // namespace Benchmarks
