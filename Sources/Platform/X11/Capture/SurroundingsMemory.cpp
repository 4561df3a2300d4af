#include "Platform/X11/Capture/SurroundingsMemory.h"

#include <algorithm>

namespace Platform::X11 {
namespace {

constexpr std::uint32_t colourBits = 0xffffff;

// Coordinates may be negative.
std::size_t wrapped(int value, int length)
{
    const int rest = value % length;
    return static_cast<std::size_t>(rest < 0 ? rest + length : rest);
}

}  // namespace

// Calls with the number of the pixel in `part`, row by row, and its place in the memory.
template <typename Use> void SurroundingsMemory::forEachPixel(const DeviceRect& part, Use&& use) const
{
    const auto width = static_cast<std::size_t>(m_window.width);
    std::size_t number = 0;
    for (int y = part.y; y < part.bottom(); ++y) {
        const auto row = wrapped(y, m_window.height) * width;
        auto column = wrapped(part.x, m_window.width);
        for (int x = 0; x < part.width; ++x) {
            use(number++, row + column);
            if (++column == width)
                column = 0;
        }
    }
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
    std::vector<Pixel> known;
    const auto kept = intersection(window, m_window);
    forEachPixel(kept, [&](std::size_t, std::size_t place) { known.push_back(m_pixels[place]); });
    m_window = window;
    m_pixels.assign(static_cast<std::size_t>(window.width) * static_cast<std::size_t>(window.height), Pixel());
    forEachPixel(kept, [&](std::size_t number, std::size_t place) { m_pixels[place] = known[number]; });
}

void SurroundingsMemory::moveTo(const DeviceRect& window)
{
    m_entered.clear();
    m_entered.add(window);
    m_entered.subtract(m_window);
    m_window = window;
    for (const auto& part : m_entered.rects())
        forEachPixel(part, [this](std::size_t, std::size_t place) { m_pixels[place].screen = unknown; });
}

void SurroundingsMemory::learn(const DeviceRect& part, std::span<const std::uint32_t> composed, std::span<const std::uint32_t> screen)
{
    if (!encloses(m_window, part))
        return;
    forEachPixel(part, [&](std::size_t number, std::size_t place) {
        m_pixels[place] = {composed[number] & colourBits, screen[number] & colourBits};
    });
}

void SurroundingsMemory::recover(
    const DeviceRect& area, const Region& covered, std::span<const std::uint32_t> composed, std::span<std::uint32_t> picture) const
{
    for (const auto& part : covered.rects()) {
        const auto common = intersection(part, area);
        const auto firstOfRow = [&](int y) {
            return static_cast<std::size_t>(y - area.y) * static_cast<std::size_t>(area.width) + static_cast<std::size_t>(common.x - area.x);
        };
        const bool isInside = encloses(m_window, common);
        for (int y = common.y; y < common.bottom(); ++y) {
            const auto first = firstOfRow(y);
            std::copy_n(&composed[first], common.width, &picture[first]);
            if (!isInside)
                continue;
            forEachPixel({common.x, y, common.width, 1}, [&](std::size_t number, std::size_t place) {
                const auto& known = m_pixels[place];
                if (known.screen != unknown && known.composed == composed[first + number])
                    picture[first + number] = known.screen;
            });
        }
    }
}

void SurroundingsMemory::forget()
{
    m_window = {};
    m_pixels.clear();
}

}  // namespace Platform::X11
