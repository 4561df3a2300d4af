// What changes beneath an overlay that rests.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>

#include "Platform/Image.h"
#include "Support/Desktop/Desktop.h"

namespace TestSupport {

// The program knows long before that all it shows is at rest.
inline constexpr std::chrono::milliseconds longRest{400};

// Another program's window of one colour, which it can change.
class ColouredWindow {
public:
    ColouredWindow(Desktop& desktop, const Platform::X11::DeviceRect& frame, std::uint32_t colour)
        : m_connection(desktop.connection()), m_frame(frame), m_window(m_connection.newId())
    {
        const std::uint32_t values[] = {colour, 1};
        xcb_create_window(m_connection, 0, m_window, m_connection.root(), static_cast<std::int16_t>(frame.x), static_cast<std::int16_t>(frame.y),
            static_cast<std::uint16_t>(frame.width), static_cast<std::uint16_t>(frame.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, 0,
            XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
        xcb_map_window(m_connection, m_window);
        m_connection.flush();
    }

    void setColour(std::uint32_t colour)
    {
        xcb_change_window_attributes(m_connection, m_window, XCB_CW_BACK_PIXEL, &colour);
        xcb_clear_area(m_connection, 0, m_window, 0, 0, 0, 0);
        m_connection.flush();
    }

    // The screen's picture with the window in that colour.
    Platform::Image over(Platform::Image picture, std::uint32_t colour) const
    {
        for (int y = m_frame.y; y < m_frame.bottom(); ++y) {
            const auto row = picture.pixels().begin() + std::ptrdiff_t{y} * picture.width();
            std::fill(row + m_frame.x, row + m_frame.right(), 0xff000000 | colour);
        }
        return picture;
    }

private:
    Platform::X11::Connection& m_connection;
    const Platform::X11::DeviceRect m_frame;
    const xcb_window_t m_window;
};

}  // namespace TestSupport
