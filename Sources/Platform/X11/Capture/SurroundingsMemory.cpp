#include "Platform/X11/Capture/SurroundingsMemory.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Platform/X11/Capture/PixelColours.h"

namespace Platform::X11 {
namespace {

// What the screen showed where the composed value is the known one.
void recoverRun(
    const std::uint32_t* composed, const std::uint32_t* knownComposed, const std::uint32_t* knownScreen, std::size_t count, std::uint32_t* to)
{
    for (std::size_t i = 0; i < count; ++i) {
        const auto now = colourOf(composed[i]);
        const auto screen = knownScreen[i];
        to[i] = knownComposed[i] == now ? screen : now;
    }
}

// Coordinates may be negative.
std::size_t wrapped(int value, int length)
{
    const int rest = value % length;
    return static_cast<std::size_t>(rest < 0 ? rest + length : rest);
}

// Calls for runs of pixels that follow each other both in the part, row by row, and in the
// memory of the window: with the number of the first in the part, its place in the memory,
// and how many they are. The part lies in the window.
template <typename Use> void forEachRunOf(const DeviceRect& window, const DeviceRect& part, Use&& use)
{
    if (part.isEmpty())
        return;
    const auto width = static_cast<std::size_t>(window.width);
    const auto length = static_cast<std::size_t>(part.width);
    std::size_t number = 0;
    for (int y = part.y; y < part.bottom(); ++y, number += length) {
        const auto row = wrapped(y, window.height) * width;
        const auto column = wrapped(part.x, window.width);
        const auto untilEdge = std::min(length, width - column);
        use(number, row + column, untilEdge);
        if (untilEdge < length)
            use(number + untilEdge, row, length - untilEdge);
    }
}

}  // namespace

class SurroundingsMemory::Rows final : public PixelRows {
public:
    void show(std::shared_ptr<const std::vector<std::uint32_t>> answers, const DeviceRect& window, const DeviceRect& area)
    {
        m_answers = std::move(answers);
        m_window = window;
        m_area = area;
    }

    int width() const override { return m_area.width; }
    int height() const override { return m_area.height; }
    std::span<const std::uint32_t> row(int y, std::span<std::uint32_t> scratch) const override
    {
        const auto length = static_cast<std::size_t>(m_area.width);
        auto found = std::span<const std::uint32_t>(scratch).first(length);
        forEachRunOf(m_window, {m_area.x, m_area.y + y, m_area.width, 1}, [&](std::size_t number, std::size_t place, std::size_t count) {
            const auto* const from = m_answers->data() + place;
            if (count == length)
                found = {from, count};
            else
                std::copy_n(from, count, &scratch[number]);
        });
        return found;
    }

private:
    std::shared_ptr<const std::vector<std::uint32_t>> m_answers;
    DeviceRect m_window;
    DeviceRect m_area;
};

template <typename Use> void SurroundingsMemory::forEachRun(const DeviceRect& part, Use&& use) const
{
    forEachRunOf(m_window, part, std::forward<Use>(use));
}

void SurroundingsMemory::follow(std::uint32_t windowNumber, const DeviceRect& area)
{
    if (m_windowNumber != windowNumber)
        forget();
    m_windowNumber = windowNumber;
    if (!encloses(m_window, area))
        makeRoom(area);
}

// The place that an overlay has just left may be wanted again at once.
void SurroundingsMemory::makeRoom(const DeviceRect& area)
{
    const int width = std::max(m_window.width, area.width + area.width / 2);
    const int height = std::max(m_window.height, area.height + area.height / 2);
    const DeviceRect window = {area.x - (width - area.width) / 2, area.y - (height - area.height) / 2, width, height};
    if (width == m_window.width && height == m_window.height)
        moveTo(window);
    else
        growTo(window);
}

void SurroundingsMemory::growTo(const DeviceRect& window)
{
    const auto kept = intersection(window, m_window);
    std::vector<std::uint32_t> composed;
    std::vector<std::uint32_t> screen;
    forEachRun(kept, [&](std::size_t, std::size_t place, std::size_t count) {
        composed.insert(composed.end(), &m_composed[place], &m_composed[place] + count);
        screen.insert(screen.end(), &m_screen[place], &m_screen[place] + count);
    });
    m_window = window;
    m_composed.assign(static_cast<std::size_t>(window.width) * static_cast<std::size_t>(window.height), unknown);
    m_screen.resize(m_composed.size());
    m_answers = std::make_shared<std::vector<std::uint32_t>>(m_composed.size());
    m_rows.reset();
    m_isKept.assign(m_composed.size(), 0);
    m_keptArea = {};
    forEachRun(kept, [&](std::size_t number, std::size_t place, std::size_t count) {
        std::copy_n(&composed[number], count, &m_composed[place]);
        std::copy_n(&screen[number], count, &m_screen[place]);
    });
}

void SurroundingsMemory::moveTo(const DeviceRect& window)
{
    m_entered.clear();
    m_entered.add(window);
    m_entered.subtract(m_window);
    m_window = window;
    m_keptArea = intersection(m_keptArea, window);
    for (const auto& part : m_entered.rects())
        forEachRun(part, [this](std::size_t, std::size_t place, std::size_t count) {
            std::fill_n(&m_composed[place], count, unknown);
            std::fill_n(&m_isKept[place], count, std::uint8_t{0});
        });
}

void SurroundingsMemory::learn(const DeviceRect& part, std::span<const std::uint32_t> composed, std::span<const std::uint32_t> screen)
{
    if (!encloses(m_window, part))
        return;
    forEachRun(part, [&](std::size_t number, std::size_t place, std::size_t count) {
        takeColours(composed.subspan(number, count), &m_composed[place]);
        takeColours(screen.subspan(number, count), &m_screen[place]);
        std::transform(&m_screen[place], &m_screen[place] + count, m_answers->data() + place, opaqueOf);
        std::fill_n(&m_isKept[place], count, std::uint8_t{1});
    });
}

void SurroundingsMemory::recover(
    const DeviceRect& area, const Region& covered, std::span<const std::uint32_t> composed, std::span<std::uint32_t> picture) const
{
    for (const auto& part : covered.rects()) {
        const auto common = intersection(part, area);
        const bool isInside = encloses(m_window, common);
        for (int y = common.y; y < common.bottom(); ++y) {
            const auto first =
                static_cast<std::size_t>(y - area.y) * static_cast<std::size_t>(area.width) + static_cast<std::size_t>(common.x - area.x);
            if (!isInside) {
                takeColours(composed.subspan(first, static_cast<std::size_t>(common.width)), &picture[first]);
                continue;
            }
            forEachRun({common.x, y, common.width, 1}, [&](std::size_t number, std::size_t place, std::size_t count) {
                recoverRun(&composed[first + number], &m_composed[place], &m_screen[place], count, &picture[first + number]);
            });
        }
    }
}

void SurroundingsMemory::keep(const DeviceRect& area, std::span<const std::uint32_t> picture)
{
    if (!encloses(m_window, area))
        return;
    forEachRun(area, [&](std::size_t number, std::size_t place, std::size_t count) {
        std::transform(&picture[number], &picture[number] + count, m_answers->data() + place, opaqueOf);
        std::fill_n(&m_isKept[place], count, std::uint8_t{1});
    });
}

bool SurroundingsMemory::isKept(const DeviceRect& area)
{
    if (!encloses(m_window, area))
        return false;
    m_unseen.clear();
    m_unseen.add(area);
    m_unseen.subtract(m_keptArea);
    bool areAll = true;
    for (const auto& part : m_unseen.rects())
        forEachRun(
            part, [&](std::size_t, std::size_t place, std::size_t count) { areAll = areAll && std::memchr(&m_isKept[place], 0, count) == nullptr; });
    if (areAll)
        m_keptArea = area;
    return areAll;
}

void SurroundingsMemory::recall(const DeviceRect& area, std::span<std::uint32_t> picture) const
{
    forEachRun(
        area, [&](std::size_t number, std::size_t place, std::size_t count) { std::copy_n(m_answers->data() + place, count, &picture[number]); });
}

std::shared_ptr<const PixelRows> SurroundingsMemory::recalled(const DeviceRect& area)
{
    // Whoever still has the former ones may read them on.
    if (m_rows.use_count() != 1)
        m_rows = std::make_shared<Rows>();
    m_rows->show(m_answers, m_window, area);
    return m_rows;
}

void SurroundingsMemory::drop(const DeviceRect& area)
{
    m_keptArea = {};
    forEachRun(intersection(area, m_window),
        [&](std::size_t, std::size_t place, std::size_t count) { std::fill_n(&m_isKept[place], count, std::uint8_t{0}); });
}

void SurroundingsMemory::dropAll()
{
    m_keptArea = {};
    std::fill(m_isKept.begin(), m_isKept.end(), std::uint8_t{0});
}

void SurroundingsMemory::forget()
{
    m_window = {};
    m_composed.clear();
    m_screen.clear();
    m_answers.reset();
    m_rows.reset();
    m_isKept.clear();
    m_keptArea = {};
}

}  // namespace Platform::X11
