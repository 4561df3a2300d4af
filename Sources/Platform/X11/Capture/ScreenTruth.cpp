#include "Platform/X11/Capture/ScreenTruth.h"

#include <algorithm>
#include <utility>

#include "Platform/X11/Capture/PixelColours.h"

namespace Platform::X11 {
namespace {

// A larger overlay makes do with what was captured for it before: this takes 61 MB.
constexpr long mostPixels = 2L << 20;

}  // namespace

void ScreenTruth::update(std::span<const OverlayEntry> entries, std::uint64_t compositorChanges, Time now)
{
    m_history.update(entries, now);
    if (std::exchange(m_compositorChanges, compositorChanges) != compositorChanges) {
        m_distrustEnd = now + CoverHistory::memory;
        m_memory.forget();
        m_surroundings.forget();
    }
    if (m_distrustEnd && now > *m_distrustEnd)
        m_distrustEnd.reset();
}

void ScreenTruth::findCovered(const DeviceRect& area, const StackModel& model, const BelowOverlay& below, Region& covered) const
{
    m_history.findCovered(area, model, below, covered);
    m_stackHistory.addRecent(area, covered);
    if (m_distrustEnd)
        covered.add(area);
}

void ScreenTruth::findUpcoming(
    const OverlayEntry& overlay, const DeviceRect& root, const StackModel& model, const BelowOverlay& below, std::vector<DeviceRect>& parts)
{
    parts.clear();
    m_place = {};
    const auto place = withShadow(overlay.upcoming);
    const auto area = intersection(place, root);
    if (area.isEmpty() || long{place.width} * place.height > mostPixels)
        return;
    m_surroundings.follow(overlay.windowNumber, place);
    m_place = area;
    findCovered(area, model, below, m_covered);
    m_upcoming.clear();
    m_upcoming.add(area);
    for (const auto& part : m_covered.rects())
        m_upcoming.subtract(part);
    parts.assign(m_upcoming.rects().begin(), m_upcoming.rects().end());
}

void ScreenTruth::learn(const DeviceRect& part, std::span<const std::uint32_t> composed, std::span<const std::uint32_t> screen)
{
    m_surroundings.learn(part, composed, screen);
}

void ScreenTruth::forgetAnswersFor(const ChangeWatch& changes)
{
    if (changes.hasAllChanged()) {
        m_surroundings.dropAll();
        return;
    }
    for (const auto& part : changes.changed())
        m_surroundings.drop(part);
}

bool ScreenTruth::isKnown(const DeviceRect& area, const Region& covered)
{
    if (!encloses(m_place, area))
        return false;
    const auto parts = covered.rects();
    // Mostly all of it, though some of that might be learned anew.
    return m_surroundings.isKept(area) ||
        std::all_of(parts.begin(), parts.end(), [&](const DeviceRect& part) { return m_surroundings.isKept(intersection(part, area)); });
}

void ScreenTruth::keep(std::uint32_t windowNumber, const DeviceRect& area)
{
    if (m_surroundings.follows(windowNumber))
        m_surroundings.keep(area, m_picture);
}

std::span<const std::uint32_t> ScreenTruth::merge(std::uint32_t windowNumber, const DeviceRect& area, const Region& covered,
    std::span<const std::uint32_t> composed, std::span<const std::uint32_t> screen)
{
    // Without the screen's everything is covered, and overwritten.
    m_picture.resize(composed.size());
    takeColours(screen, m_picture.data());
    if (m_surroundings.follows(windowNumber)) {
        m_surroundings.recover(area, covered, composed, m_picture);
    } else {
        m_composed.resize(composed.size());
        takeColours(composed, m_composed.data());
        m_memory.recover(windowNumber, area, covered, m_composed, m_picture);
        m_memory.remember(windowNumber, area, m_composed, m_picture);
    }
    return m_picture;
}

}  // namespace Platform::X11
