#include "TenWindows.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "Support/Desktop/TestPattern.h"
#include "Support/WaitUntil.h"

namespace Benchmarks {
namespace {

constexpr int windowCount = 10;

// Tells the window manager to leave the window where it was put.
void setPositionHints(Platform::X11::Connection& connection, xcb_window_t window)
{
    constexpr std::uint32_t positionAndSizeByUser = 3;
    std::array<std::uint32_t, 18> hints{};  // WM_SIZE_HINTS
    hints[0] = positionAndSizeByUser;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
}

}  // namespace

TenWindows::TenWindows(const std::string& displayName) : m_connection(Platform::X11::Connection::open(displayName))
{
    if (!m_connection)
        throw std::runtime_error("no X server at " + displayName);
    for (int i = 0; i < windowCount; ++i)
        createWindow(i);
    m_connection->flush();
    if (!TestSupport::waitUntil([this] { return areViewable(); }))
        throw std::runtime_error("the ten windows did not come up");
}

// Each shows a picture of its own, repeated where the window is larger.
void TenWindows::createWindow(int index)
{
    auto& connection = *m_connection;
    const auto& screen = connection.screen();
    const auto part = [](std::uint16_t whole, double share) { return static_cast<std::uint16_t>(whole * share); };
    const auto picture = TestSupport::makePixmap(connection, TestSupport::testPattern(640, 360, static_cast<std::uint32_t>(index) + 1));
    const auto window = connection.newId();
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen.root,
        static_cast<std::int16_t>(part(screen.width_in_pixels, 0.04 + 0.06 * index)),
        static_cast<std::int16_t>(part(screen.height_in_pixels, 0.05 + 0.055 * index)), part(screen.width_in_pixels, 0.35),
        part(screen.height_in_pixels, 0.38), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual, XCB_CW_BACK_PIXMAP, &picture);
    setPositionHints(connection, window);
    xcb_map_window(connection, window);
    xcb_free_pixmap(connection, picture);
    m_windows.push_back(window);
}

bool TenWindows::areViewable() const
{
    return std::all_of(m_windows.begin(), m_windows.end(), [this](xcb_window_t window) {
        const auto cookie = xcb_get_window_attributes(*m_connection, window);
        const auto reply = Platform::X11::adopt(xcb_get_window_attributes_reply(*m_connection, cookie, nullptr));
        return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
    });
}

}  // namespace Benchmarks
