#include "Platform/X11/Capture/TruthMemory.h"

#include <algorithm>
#include <numeric>

namespace Platform::X11 {
namespace {

// Enough for the strips of the time in which left places count as covered, at 60 a
// second, two a time, on a screen of 8K.
constexpr std::size_t mostRecords = 64;
constexpr std::size_t mostValues = 2U << 20;

std::size_t rowStart(const DeviceRect& area, int x, int y)
{
    return static_cast<std::size_t>(y - area.y) * static_cast<std::size_t>(area.width) + static_cast<std::size_t>(x - area.x);
}

}  // namespace

void TruthMemory::recover(std::uint32_t windowNumber, const DeviceRect& area, const Region& covered, std::span<const std::uint32_t> composed,
    std::span<std::uint32_t> picture)
{
    m_unknown = covered;
    for (std::size_t i = m_records.size(); i-- > 0 && !m_unknown.isEmpty();) {
        const auto& record = m_records[i];
        if (record.windowNumber != windowNumber)
            continue;
        m_parts.clear();
        m_unknown.appendIntersection(record.area, m_parts);
        for (const auto& part : m_parts) {
            for (int y = part.y; y < part.bottom(); ++y) {
                auto known = rowStart(record.area, part.x, y);
                auto own = rowStart(area, part.x, y);
                for (int x = 0; x < part.width; ++x, ++known, ++own)
                    picture[own] = record.composed[known] == composed[own] ? record.truth[known] : composed[own];
            }
            m_unknown.subtract(part);
        }
    }
    for (const auto& part : m_unknown.rects()) {
        for (int y = part.y; y < part.bottom(); ++y) {
            const auto own = rowStart(area, part.x, y);
            std::copy_n(&composed[own], part.width, &picture[own]);
        }
    }
}

void TruthMemory::remember(
    std::uint32_t windowNumber, const DeviceRect& area, std::span<const std::uint32_t> composed, std::span<const std::uint32_t> picture)
{
    const auto values = composed.size() + picture.size();
    if (values > mostValues)
        return;
    auto& record = makeRecord(windowNumber, area, values);
    record.windowNumber = windowNumber;
    record.area = area;
    record.composed.assign(composed.begin(), composed.end());
    record.truth.assign(picture.begin(), picture.end());
}

std::size_t TruthMemory::valueCount() const
{
    return std::accumulate(
        m_records.begin(), m_records.end(), std::size_t{0}, [](std::size_t sum, const Record& record) { return sum + record.size(); });
}

// The record of the same place, else the oldest one when there is no room for more;
// always the newest afterwards.
TruthMemory::Record& TruthMemory::makeRecord(std::uint32_t windowNumber, const DeviceRect& area, std::size_t values)
{
    const auto isSame = [&](const Record& record) { return record.windowNumber == windowNumber && record.area == area; };
    auto reused = std::find_if(m_records.begin(), m_records.end(), isSame);
    if (reused == m_records.end()) {
        for (values += valueCount(); m_records.size() > 1 && values - m_records.front().size() > mostValues; m_records.erase(m_records.begin()))
            values -= m_records.front().size();
        const bool isFull = m_records.size() == mostRecords || (values > mostValues && !m_records.empty());
        reused = isFull ? m_records.begin() : m_records.insert(m_records.end(), Record());
    }
    std::rotate(reused, reused + 1, m_records.end());
    return m_records.back();
}

}  // namespace Platform::X11
