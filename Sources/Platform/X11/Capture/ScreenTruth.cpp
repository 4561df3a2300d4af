#include "Platform/X11/Capture/ScreenTruth.h"

#include <algorithm>
#include <utility>

namespace Platform::X11 {
namespace {

constexpr std::uint32_t colourBits = 0xffffff;

void takeColours(std::span<const std::uint32_t> from, std::vector<std::uint32_t>& to)
{
    to.resize(from.size());
    std::transform(from.begin(), from.end(), to.begin(), [](std::uint32_t pixel) { return pixel & colourBits; });
}

}  // namespace

void ScreenTruth::update(std::span<const OverlayEntry> entries, std::uint64_t compositorChanges, Time now)
{
    m_history.update(entries, now);
    if (std::exchange(m_compositorChanges, compositorChanges) != compositorChanges) {
        m_distrustEnd = now + CoverHistory::memory;
        m_memory.forget();
    }
    if (m_distrustEnd && now > *m_distrustEnd)
        m_distrustEnd.reset();
}

void ScreenTruth::findCovered(const DeviceRect& area, const StackModel& model, const BelowOverlay& below, Region& covered) const
{
    m_history.findCovered(area, model, below, covered);
    if (m_distrustEnd)
        covered.add(area);
}

std::span<const std::uint32_t> ScreenTruth::merge(std::uint32_t windowNumber, const DeviceRect& area, const Region& covered,
    std::span<const std::uint32_t> composed, std::span<const std::uint32_t> screen)
{
    takeColours(composed, m_composed);
    takeColours(screen.empty() ? composed : screen, m_picture);
    m_memory.recover(windowNumber, area, covered, m_composed, m_picture);
    m_memory.remember(windowNumber, area, m_composed, m_picture);
    return m_picture;
}

}  // namespace Platform::X11
