#include "Platform/X11/Overlays/PictureBuffer.h"

#include <algorithm>
#include <utility>

namespace Platform::X11 {

namespace {

// What is smaller goes along with the request at no cost to speak of.
constexpr std::size_t fewestShared = 1024;

}  // namespace

std::span<std::uint32_t> PictureBuffer::take(std::size_t pixels)
{
    if (m_isShareable && pixels >= fewestShared && pixels > m_capacity)
        share(pixels);
    if (m_shared && pixels <= m_capacity) {
        if (const auto put = std::exchange(m_put, std::nullopt))
            adopt(xcb_request_check(m_connection, *put));
        m_taken = m_shared->pixels().first(pixels);
    } else {
        m_own.resize(pixels);
        m_taken = m_own;
    }
    return m_taken;
}

void PictureBuffer::share(std::size_t pixels)
{
    forgetPut();
    m_shared.reset();
    m_shared = SharedMemory::make(m_connection, pixels);
    m_isShareable = m_shared != nullptr;
    m_capacity = m_isShareable ? pixels : 0;
}

// The server reads what was put before it lets go of the memory.
void PictureBuffer::forgetPut()
{
    if (const auto put = std::exchange(m_put, std::nullopt))
        xcb_discard_reply(m_connection, put->sequence);
}

void PictureBuffer::put(xcb_window_t window, xcb_gcontext_t graphics, std::uint8_t depth, int width)
{
    if (m_taken.data() == m_own.data()) {
        putThroughConnection(window, graphics, depth, width);
        return;
    }
    const auto columns = static_cast<std::uint16_t>(width);
    const auto rows = static_cast<std::uint16_t>(m_taken.size() / columns);
    forgetPut();
    m_put = xcb_shm_put_image_checked(
        m_connection, window, graphics, columns, rows, 0, 0, columns, rows, 0, 0, depth, XCB_IMAGE_FORMAT_Z_PIXMAP, 0, m_shared->segment(), 0);
}

// As many rows as fit one request are put together.
void PictureBuffer::putThroughConnection(xcb_window_t window, xcb_gcontext_t graphics, std::uint8_t depth, int width) const
{
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = m_taken.size() / columns;
    const auto mostRows = std::max<std::size_t>(1, (std::size_t{xcb_get_maximum_request_length(m_connection)} * 4 - 64) / (columns * 4));
    for (std::size_t first = 0; first < rows; first += mostRows) {
        const auto part = m_taken.subspan(first * columns, std::min(mostRows, rows - first) * columns);
        xcb_put_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, graphics, static_cast<std::uint16_t>(width),
            static_cast<std::uint16_t>(part.size() / columns), 0, static_cast<std::int16_t>(first), 0, depth,
            static_cast<std::uint32_t>(part.size_bytes()), reinterpret_cast<const std::uint8_t*>(part.data()));
    }
}

}  // namespace Platform::X11
