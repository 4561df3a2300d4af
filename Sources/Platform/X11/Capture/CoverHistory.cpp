#include "Platform/X11/Capture/CoverHistory.h"

#include <algorithm>

namespace Platform::X11 {

DeviceRect withShadow(const DeviceRect& frame)
{
    constexpr int reach = 40;
    return {frame.x - reach, frame.y - reach, frame.width + 2 * reach, frame.height + 2 * reach};
}

void CoverHistory::update(std::span<const OverlayEntry> entries, Time now)
{
    for (auto& place : m_places)
        place.isCurrent = false;
    for (const auto& entry : entries) {
        for (const auto& [window, frame] : entry.pictures) {
            if (!frame.isEmpty())
                cover(window, entry.isOutlined ? withShadow(frame) : frame, now);
        }
    }
    std::erase_if(m_places, [now](const Place& place) { return now - place.lastSeen > memory; });
}

void CoverHistory::cover(xcb_window_t window, const DeviceRect& frame, Time now)
{
    const auto isSame = [&](const Place& place) { return place.window == window && place.frame == frame; };
    const auto known = std::find_if(m_places.begin(), m_places.end(), isSame);
    if (known != m_places.end())
        *known = {window, frame, now, true};
    else
        m_places.push_back({window, frame, now, true});
}

void CoverHistory::findCovered(const DeviceRect& area, const StackModel& model, const BelowOverlay& below, Region& covered) const
{
    covered.clear();
    for (const auto& place : m_places) {
        if (!place.isCurrent || below.leavesOut(place.window))
            covered.add(intersection(place.frame, area));
    }
    const auto windows = model.windows();
    for (std::size_t i = 0; i < windows.size(); ++i) {
        if (windows[i].hasPixels() && (i >= below.top || below.leavesOut(windows[i].id)))
            covered.add(intersection(windows[i].frame, area));
    }
}

}  // namespace Platform::X11
