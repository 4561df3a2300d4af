#include "Platform/X11/Capture/PaintPlan.h"

#include <algorithm>

namespace Platform::X11 {
namespace {

constexpr std::uint8_t argbDepth = 32;

// Truncated to eight bits, as compositors do.
std::uint8_t alphaOf(std::uint32_t opacity) { return static_cast<std::uint8_t>(std::uint64_t{opacity} * 0xff / fullOpacity); }

PaintStep stepFor(const ToplevelWindow& window, bool blends)
{
    PaintStep step;
    step.window = window.id;
    step.contents = window.contents;
    step.visual = window.visual;
    step.depth = window.depth;
    step.alpha = blends ? alphaOf(window.opacity) : 0xff;
    step.isBlended = blends && (window.depth == argbDepth || step.alpha != 0xff);
    return step;
}

PaintStep rootStep(const StackModel& model)
{
    PaintStep step;
    step.contents = model.rootBackground();
    return step;
}

void add(PaintStep step, std::span<const DeviceRect> parts, std::vector<PaintStep>& steps)
{
    for (const auto& part : parts) {
        step.area = part;
        steps.push_back(step);
    }
}

}  // namespace

bool BelowOverlay::leavesOut(xcb_window_t window) const { return std::find(leftOut.begin(), leftOut.end(), window) != leftOut.end(); }

void lookBelow(std::uint32_t windowNumber, std::span<const OverlayEntry> entries, const StackModel& model, BelowOverlay& below)
{
    below.leftOut.clear();
    const auto hasNumber = [&](const OverlayEntry& entry) { return entry.windowNumber == windowNumber; };
    const auto overlay = std::find_if(entries.begin(), entries.end(), hasNumber);
    for (auto entry = overlay; entry != entries.end(); ++entry) {
        for (const auto& picture : entry->pictures)
            below.leftOut.push_back(picture.window);
        below.leftOut.push_back(entry->catcher);
    }
    const auto windows = model.windows();
    below.top = windows.size();
    if (overlay == entries.end())
        return;
    for (std::size_t i = 0; i < windows.size(); ++i) {
        const auto isWindow = [&](const OverlayPicture& picture) { return picture.window == windows[i].id; };
        if (windows[i].isMapped && std::any_of(overlay->pictures.begin(), overlay->pictures.end(), isWindow)) {
            below.top = i;
            return;
        }
    }
}

void PaintPlanner::plan(const StackModel& model, const BelowOverlay& below, bool blends, const DeviceRect& area, std::vector<PaintStep>& steps)
{
    m_uncovered.clear();
    m_uncovered.add(intersection(area, model.root()));
    if (!blends)
        takeWhatTheScreenShows(model, below, steps);
    const auto windows = model.windows();
    for (std::size_t i = below.top; i-- > 0 && !m_uncovered.isEmpty();) {
        const auto& window = windows[i];
        if (!window.hasPixels() || intersection(window.frame, area).isEmpty() || below.leavesOut(window.id))
            continue;
        findVisibleParts(window);
        auto step = stepFor(window, blends);
        for (const auto& part : m_parts) {
            step.area = part;
            step.source = {part.x - window.frame.x, part.y - window.frame.y};
            steps.push_back(step);
            if (!step.isBlended)
                m_uncovered.subtract(part);
        }
    }
    add(rootStep(model), m_uncovered.rects(), steps);
}

// What no window that is left out hides: all else is to be put together from the windows.
void PaintPlanner::takeWhatTheScreenShows(const StackModel& model, const BelowOverlay& below, std::vector<PaintStep>& steps)
{
    m_parts.clear();
    const auto windows = model.windows();
    for (std::size_t i = 0; i < windows.size(); ++i) {
        const auto& window = windows[i];
        if (!window.isMapped || window.isInputOnly || (i < below.top && !below.leavesOut(window.id)))
            continue;
        m_uncovered.appendIntersection(window.frame, m_parts);
        m_uncovered.subtract(window.frame);
    }
    auto step = rootStep(model);
    step.isOnScreen = true;
    add(step, m_uncovered.rects(), steps);
    m_uncovered.clear();
    for (const auto& part : m_parts)
        m_uncovered.add(part);
}

void PaintPlanner::findVisibleParts(const ToplevelWindow& window)
{
    m_parts.clear();
    if (!window.isShaped) {
        m_uncovered.appendIntersection(window.frame, m_parts);
        return;
    }
    for (const auto& part : window.shape) {
        const DeviceRect onScreen = {window.frame.x + window.border + part.x, window.frame.y + window.border + part.y, part.width, part.height};
        m_uncovered.appendIntersection(intersection(onScreen, window.frame), m_parts);
    }
}

}  // namespace Platform::X11
