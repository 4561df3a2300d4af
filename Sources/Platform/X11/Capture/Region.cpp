#include "Platform/X11/Capture/Region.h"

#include <algorithm>

namespace Platform::X11 {
namespace {

void appendUnlessEmpty(std::vector<DeviceRect>& rects, const DeviceRect& rect)
{
    if (!rect.isEmpty())
        rects.push_back(rect);
}

// What is left of `whole` around `hole`, which lies inside it.
void appendFrame(std::vector<DeviceRect>& rects, const DeviceRect& whole, const DeviceRect& hole)
{
    appendUnlessEmpty(rects, {whole.x, whole.y, whole.width, hole.y - whole.y});
    appendUnlessEmpty(rects, {whole.x, hole.y, hole.x - whole.x, hole.height});
    appendUnlessEmpty(rects, {hole.right(), hole.y, whole.right() - hole.right(), hole.height});
    appendUnlessEmpty(rects, {whole.x, hole.bottom(), whole.width, whole.bottom() - hole.bottom()});
}

}  // namespace

bool Region::contains(DevicePoint point) const
{
    return std::any_of(m_rects.begin(), m_rects.end(), [&](const DeviceRect& rect) { return rect.contains(point); });
}

bool Region::encloses(const DeviceRect& rect) const
{
    long covered = 0;
    for (const auto& own : m_rects) {
        const auto common = intersection(own, rect);
        covered += long{common.width} * common.height;
    }
    return covered == long{rect.width} * rect.height;
}

void Region::add(const DeviceRect& rect)
{
    if (rect.isEmpty())
        return;
    subtract(rect);
    m_rects.push_back(rect);
}

void Region::subtract(const DeviceRect& rect)
{
    m_spare.clear();
    for (const auto& whole : m_rects) {
        const auto hole = intersection(whole, rect);
        if (hole.isEmpty())
            m_spare.push_back(whole);
        else
            appendFrame(m_spare, whole, hole);
    }
    m_rects.swap(m_spare);
}

void Region::appendIntersection(const DeviceRect& rect, std::vector<DeviceRect>& parts) const
{
    for (const auto& own : m_rects)
        appendUnlessEmpty(parts, intersection(own, rect));
}

}  // namespace Platform::X11
