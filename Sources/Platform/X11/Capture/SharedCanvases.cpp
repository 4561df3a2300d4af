#include "Platform/X11/Capture/SharedCanvases.h"

#include <algorithm>
#include <utility>

namespace Platform::X11 {

SharedCanvases::~SharedCanvases()
{
    for (auto& entry : m_entries)
        entry.canvas.release(m_server.connection());
}

bool SharedCanvases::begin(std::size_t pixels)
{
    if (!m_isPossible)
        return false;
    // Most sizes come again at the same place.
    std::erase_if(m_entries, [this](Entry& entry) {
        if (!entry.isInUse)
            entry.canvas.release(m_server.connection());
        return !std::exchange(entry.isInUse, false);
    });
    m_size = 0;
    if (!m_shared || pixels > m_shared->pixels().size())
        grow(pixels);
    return m_isPossible;
}

void SharedCanvases::grow(std::size_t pixels)
{
    for (auto& entry : m_entries)
        entry.canvas.release(m_server.connection());
    m_entries.clear();
    m_shared.reset();
    // A little more is wanted soon where what a moving overlay meets is read.
    m_shared = SharedMemory::make(m_server.connection(), pixels + pixels / 4);
    m_server.countRoundTrip();
    m_isPossible = m_shared != nullptr && isAccepted();
}

// A server may offer what it then refuses.
bool SharedCanvases::isAccepted()
{
    auto& c = m_server.connection();
    const auto pixmap = c.newId();
    const auto request = xcb_shm_create_pixmap_checked(c, pixmap, c.root(), 1, 1, c.screen().root_depth, m_shared->segment(), 0);
    const bool isRefused = adopt(xcb_request_check(c, request)) != nullptr || c.isBroken();
    m_server.countRoundTrip();
    if (!isRefused)
        xcb_free_pixmap(c, pixmap);
    return !isRefused;
}

Canvas& SharedCanvases::add(const DeviceRect& size)
{
    const auto start = m_size;
    const auto count = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    m_size += count;
    m_pixels = m_shared->pixels().subspan(start, count);
    const auto isSame = [&](const Entry& entry) {
        return entry.start == start && entry.canvas.width == size.width && entry.canvas.height == size.height;
    };
    auto entry = std::find_if(m_entries.begin(), m_entries.end(), isSame);
    if (entry == m_entries.end())
        entry = m_entries.insert(entry, {{makePixmap(size, start), XCB_NONE, size.width, size.height}, start, false});
    entry->isInUse = true;
    return entry->canvas;
}

xcb_pixmap_t SharedCanvases::makePixmap(const DeviceRect& size, std::size_t start)
{
    auto& c = m_server.connection();
    const auto pixmap = c.newId();
    const auto wireSize = toWire(size);
    xcb_shm_create_pixmap(c, pixmap, c.root(), wireSize.width, wireSize.height, c.screen().root_depth, m_shared->segment(),
        static_cast<std::uint32_t>(start * sizeof(std::uint32_t)));
    return pixmap;
}

}  // namespace Platform::X11
