#include "Platform/X11/Capture/ServerCanvases.h"

#include <algorithm>

namespace Platform::X11 {
namespace {

constexpr std::size_t mostCanvases = 8;

}  // namespace

ServerCanvases::~ServerCanvases()
{
    for (auto& entry : m_entries)
        entry.canvas.release(m_server.connection());
}

void ServerCanvases::begin()
{
    for (auto& entry : m_entries)
        entry.isInUse = false;
}

Canvas& ServerCanvases::add(const DeviceRect& size)
{
    // Neither too small nor a waste of the server's memory.
    const auto fits = [&](const Entry& entry) {
        const long needed = long{size.width} * size.height;
        const auto& canvas = entry.canvas;
        return !entry.isInUse && canvas.width >= size.width && canvas.height >= size.height &&
            long{canvas.width} * canvas.height <= 2 * needed + 4096;
    };
    auto entry = std::find_if(m_entries.begin(), m_entries.end(), fits);
    if (entry == m_entries.end()) {
        const auto isOlder = [](const Entry& a, const Entry& b) { return a.isInUse != b.isInUse ? b.isInUse : a.lastUse < b.lastUse; };
        entry = std::min_element(m_entries.begin(), m_entries.end(), isOlder);
        if (m_entries.size() < mostCanvases || entry->isInUse)
            entry = m_entries.insert(m_entries.end(), Entry());
        auto& c = m_server.connection();
        entry->canvas.release(c);
        entry->canvas = {c.newId(), XCB_NONE, size.width, size.height};
        const auto wireSize = toWire(size);
        xcb_create_pixmap(c, c.screen().root_depth, entry->canvas.pixmap, c.root(), wireSize.width, wireSize.height);
    }
    entry->isInUse = true;
    entry->lastUse = ++m_uses;
    return entry->canvas;
}

}  // namespace Platform::X11
