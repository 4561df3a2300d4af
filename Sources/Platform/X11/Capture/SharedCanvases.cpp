#include "Platform/X11/Capture/SharedCanvases.h"

#include <algorithm>

namespace Platform::X11 {

SharedCanvases::~SharedCanvases()
{
    for (auto& entry : m_entries)
        entry.canvas.release(m_server.connection());
}

bool SharedCanvases::begin(std::size_t pixels)
{
    m_hasFailed = false;
    if (!m_isPossible)
        return false;
    ++m_uses;
    releaseUnused();
    m_size = 0;
    if (pixels > (m_shared ? m_shared->pixels().size() : 0))
        grow(pixels);
    return m_isPossible;
}

// Most sizes come again at the same place, though two overlays take turns.
void SharedCanvases::releaseUnused()
{
    constexpr std::uint64_t longestUnused = 4;
    const auto isUsed = [this](const Entry& entry) { return m_uses - entry.lastUse <= longestUnused; };
    const auto unused = std::partition(m_entries.begin(), m_entries.end(), isUsed);
    std::for_each(unused, m_entries.end(), [this](Entry& entry) { entry.canvas.release(m_server.connection()); });
    m_entries.erase(unused, m_entries.end());
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
    m_isPossible = m_shared != nullptr;
}

void SharedCanvases::failed(const xcb_generic_error_t& error)
{
    const auto* extension = xcb_get_extension_data(m_server.connection(), &xcb_shm_id);
    if (error.major_code != extension->major_opcode || error.minor_code != XCB_SHM_CREATE_PIXMAP)
        return;
    m_hasFailed = true;
    m_isPossible = false;
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
        entry = m_entries.insert(entry, {{makePixmap(size, start), XCB_NONE, size.width, size.height}, start, 0});
    entry->lastUse = m_uses;
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
