#include "Magnifier.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "Support/Desktop/XTestPointer.h"
#include "Support/WaitUntil.h"

namespace Benchmarks {
namespace {

using Platform::X11::adopt;
using Platform::X11::Connection;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::uint16_t side = 32;

std::vector<xcb_window_t> childrenOfRoot(const Connection& connection)
{
    const auto tree = adopt(xcb_query_tree_reply(connection, xcb_query_tree(connection, connection.root()), nullptr));
    if (!tree)
        throw std::runtime_error("the X server is gone");
    const auto* children = xcb_query_tree_children(tree.get());
    return {children, children + xcb_query_tree_children_length(tree.get())};
}

// Of a window with pixels that is on the screen; 0 of others.
long areaOf(const Connection& connection, xcb_window_t window)
{
    const auto attributes = adopt(xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, window), nullptr));
    const auto geometry = adopt(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    if (!attributes || !geometry || attributes->map_state != XCB_MAP_STATE_VIEWABLE || attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY)
        return 0;
    return long{geometry->width} * geometry->height;
}

}  // namespace

std::vector<xcb_window_t> Magnifier::windowsOf(const Desktop& desktop) { return childrenOfRoot(*Connection::open(desktop.displayName())); }

Magnifier::Magnifier(const Desktop& desktop, const std::vector<xcb_window_t>& windowsBefore)
    : m_displayName(desktop.displayName()), m_connection(Connection::open(desktop.displayName()))
{
    if (!TestSupport::waitUntil([&] { return findWindow(windowsBefore); }, 20s))
        throw std::runtime_error("no magnifier comes");
}

bool Magnifier::findWindow(const std::vector<xcb_window_t>& windowsBefore)
{
    long largest = long{side} * side;
    for (const auto window : childrenOfRoot(*m_connection)) {
        if (std::find(windowsBefore.begin(), windowsBefore.end(), window) != windowsBefore.end())
            continue;
        if (const auto area = areaOf(*m_connection, window); area > largest) {
            largest = area;
            m_window = window;
        }
    }
    if (m_window != XCB_WINDOW_NONE)
        measureWindow();
    return m_window != XCB_WINDOW_NONE;
}

// Beside the middle, where magnifiers draw lines or a pointer that always look the same.
void Magnifier::measureWindow()
{
    const auto geometry = adopt(xcb_get_geometry_reply(*m_connection, xcb_get_geometry(*m_connection, m_window), nullptr));
    if (!geometry)
        throw std::runtime_error("the magnifier's window is gone");
    m_middleX = static_cast<std::int16_t>(geometry->width / 2 - side - 4);
    m_middleY = static_cast<std::int16_t>(geometry->height / 2 - side - 4);
}

std::vector<std::uint32_t> Magnifier::picture() const
{
    const auto cookie = xcb_get_image(*m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, m_middleX, m_middleY, side, side, ~0U);
    const auto reply = adopt(xcb_get_image_reply(*m_connection, cookie, nullptr));
    if (!reply)
        return {};  // off the screen in part, for the moment
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) / sizeof(std::uint32_t));
    std::memcpy(pixels.data(), xcb_get_image_data(reply.get()), pixels.size() * sizeof(std::uint32_t));
    return pixels;
}

double Magnifier::picturesPerSecond() const
{
    constexpr auto duration = 2s;
    int count = 0;
    const auto start = Clock::now();
    for (auto last = picture(); Clock::now() - start < duration; std::this_thread::sleep_for(1ms)) {
        auto next = picture();
        if (next == last)
            continue;
        ++count;
        last = std::move(next);
    }
    return count / std::chrono::duration<double>(duration).count();
}

std::vector<double> Magnifier::lags(int moves) const
{
    constexpr auto longest = 2s;
    TestSupport::XTestPointer pointer(m_displayName);
    const int width = m_connection->screen().width_in_pixels;
    const int height = m_connection->screen().height_in_pixels;
    std::vector<double> milliseconds;
    for (int i = 0; i < moves; ++i) {
        // At any moment of the program's own rhythm, and after it has come to rest.
        std::this_thread::sleep_for(300ms + i * 7919us % 17000us);
        const auto before = picture();
        const auto start = Clock::now();
        pointer.moveTo(width / (i % 2 == 0 ? 3 : 2) + i * 3, height / (i % 2 == 0 ? 2 : 3) + i * 2);
        while (picture() == before && Clock::now() - start < longest)
            std::this_thread::sleep_for(100us);
        const auto passed = Clock::now() - start;
        if (passed >= longest)
            break;
        milliseconds.push_back(std::chrono::duration<double, std::milli>(passed).count());
    }
    return milliseconds;
}

}  // namespace Benchmarks
