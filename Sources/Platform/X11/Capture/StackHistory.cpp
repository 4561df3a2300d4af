#include "Platform/X11/Capture/StackHistory.h"

#include <algorithm>
#include <utility>

#include "Platform/X11/Capture/CoverHistory.h"
#include "Platform/X11/Capture/WindowLook.h"

namespace Platform::X11 {
namespace {

bool isOurs(xcb_window_t window, std::span<const OverlayEntry> overlays)
{
    return std::any_of(overlays.begin(), overlays.end(), [window](const OverlayEntry& overlay) {
        return std::any_of(
            overlay.pictures.begin(), overlay.pictures.end(), [window](const OverlayPicture& picture) { return picture.window == window; });
    });
}

}  // namespace

void StackHistory::update(const StackModel& model, std::span<const OverlayEntry> overlays, Time now)
{
    std::erase_if(m_changes, [now](const Change& change) { return now - change.time > CoverHistory::memory; });
    see(model, overlays);
    if (std::exchange(m_hasSeen, true))
        compare(now);
    std::swap(m_before, m_now);
}

void StackHistory::see(const StackModel& model, std::span<const OverlayEntry> overlays)
{
    m_now.clear();
    for (const auto& window : model.windows()) {
        if (window.hasPixels() && !isOurs(window.id, overlays))
            m_now.push_back({window.id, window.frame, lookOf(window)});
    }
}

// Windows that lie between those that are the same as before, from below and from above,
// may have changed.
void StackHistory::compare(Time now)
{
    const auto [beforeFirst, nowFirst] = std::mismatch(m_before.begin(), m_before.end(), m_now.begin(), m_now.end());
    const auto [beforeLast, nowLast] =
        std::mismatch(m_before.rbegin(), std::make_reverse_iterator(beforeFirst), m_now.rbegin(), std::make_reverse_iterator(nowFirst));
    const auto add = [&](auto first, auto last) {
        std::transform(first, last, std::back_inserter(m_changes), [now](const Seen& seen) { return Change{withShadow(seen.frame), now}; });
    };
    add(beforeFirst, beforeLast.base());
    add(nowFirst, nowLast.base());
}

void StackHistory::addRecent(const DeviceRect& area, Region& region) const
{
    for (const auto& change : m_changes)
        region.add(intersection(change.area, area));
}

}  // namespace Platform::X11
