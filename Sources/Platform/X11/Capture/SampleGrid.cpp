#include "Platform/X11/Capture/SampleGrid.h"

#include <algorithm>
#include <cmath>

namespace Platform::X11 {
namespace {

constexpr double furthestCoordinate = 1e6;
constexpr double largestSide = 65535;
constexpr double largestArea = 1 << 28;

bool isUsable(const Rect& rect)
{
    const bool isNear = std::abs(rect.x) <= furthestCoordinate && std::abs(rect.y) <= furthestCoordinate;  // false for not-a-number
    return isNear && rect.width > 0 && rect.height > 0 && rect.width <= largestSide && rect.height <= largestSide &&
        rect.width * rect.height <= largestArea;
}

}  // namespace

void SampleGrid::Axis::lay(int start, int length, int count, double step)
{
    m_start = start;
    if (length == m_length && step == m_step && count == static_cast<int>(m_offsets.size()))
        return;
    m_length = length;
    m_step = step;
    m_offsets.resize(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        m_offsets[static_cast<std::size_t>(i)] = std::min(snap(i * step), length - 1);
}

SampleGrid::Axis::Range SampleGrid::Axis::within(int from, int to) const
{
    const auto index = [this](int value) {
        return static_cast<std::size_t>(std::lower_bound(m_offsets.begin(), m_offsets.end(), value - m_start) - m_offsets.begin());
    };
    return {index(from), index(to)};
}

bool SampleGrid::lay(const MonitorLayout& layout, const DeviceRect& root, const Rect& rect, CaptureResolution resolution)
{
    if (!isUsable(rect))
        return false;
    const auto device = layout.deviceRectOfCapture(rect);
    if (device.isEmpty())
        return false;
    const bool isBest = resolution == CaptureResolution::best;
    const double step = isBest ? 1 : layout.scaleOfCapture(rect);
    m_columns.lay(device.x, device.width, isBest ? device.width : std::max(1, snap(rect.width)), step);
    m_rows.lay(device.y, device.height, isBest ? device.height : std::max(1, snap(rect.height)), step);
    const DeviceRect sampled = {m_columns.front(), m_rows.front(), m_columns.back() - m_columns.front() + 1, m_rows.back() - m_rows.front() + 1};
    m_area = intersection(sampled, root);
    if (m_area.isEmpty())
        m_area = {};
    return true;
}

// On one of them: more are not worth the search.
bool SampleGrid::isOnMonitors(const MonitorLayout& layout) const
{
    const DevicePoint first = {m_columns.front(), m_rows.front()};
    const DevicePoint last = {m_columns.back(), m_rows.back()};
    const auto& monitors = layout.monitors();
    return std::any_of(monitors.begin(), monitors.end(), [&](const Monitor& monitor) {
        const auto visible = intersection(monitor.frame, m_area);
        return visible.contains(first) && visible.contains(last);
    });
}

bool SampleGrid::isWholeArea(const MonitorLayout& layout) const { return m_columns.isUnbroken() && m_rows.isUnbroken() && isOnMonitors(layout); }

void SampleGrid::fill(const MonitorLayout& layout, std::span<const std::uint32_t> pixels, Image& image) const
{
    image.resize(static_cast<int>(m_columns.count()), static_cast<int>(m_rows.count()));
    if (!isOnMonitors(layout))
        std::fill(image.pixels().begin(), image.pixels().end(), 0U);
    for (const auto& monitor : layout.monitors())
        fillPart(intersection(monitor.frame, m_area), pixels, image);
}

void SampleGrid::fillPart(const DeviceRect& visible, std::span<const std::uint32_t> pixels, Image& image) const
{
    constexpr std::uint32_t opaque = 0xff000000;
    if (visible.isEmpty())
        return;
    const auto columns = m_columns.within(visible.x, visible.right());
    const auto rows = m_rows.within(visible.y, visible.bottom());
    if (columns.from == columns.to)
        return;
    for (auto row = rows.from; row < rows.to; ++row) {
        const auto* from = pixels.data() + static_cast<std::ptrdiff_t>(m_rows.at(row) - m_area.y) * m_area.width - m_area.x;
        auto* to = image.pixels().data() + row * m_columns.count();
        if (m_columns.isUnbroken()) {
            const auto* first = from + m_columns.at(columns.from);
            const auto* last = first + (columns.to - columns.from);
            std::transform(first, last, to + columns.from, [](std::uint32_t pixel) { return pixel | opaque; });
            continue;
        }
        for (auto column = columns.from; column < columns.to; ++column)
            to[column] = from[m_columns.at(column)] | opaque;
    }
}

}  // namespace Platform::X11
