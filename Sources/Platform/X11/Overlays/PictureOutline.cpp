#include "Platform/X11/Overlays/PictureOutline.h"

#include <algorithm>

namespace Platform::X11 {
namespace {

constexpr std::uint32_t faintest = 0x20000000;
constexpr std::uint32_t opaque = 0xff000000;

std::uint32_t inItsOwnColour(std::uint32_t pixel)
{
    // As of a ring and a capsule.
    const bool isBlack = (pixel & ~opaque) == 0;
    if (isBlack)
        return opaque;
    const std::uint32_t alpha = pixel >> 24;
    const auto channel = [&](unsigned shift) {
        const auto value = (((pixel >> shift) & 0xff) * 0xff + alpha / 2) / alpha;
        return std::min<std::uint32_t>(value, 0xff) << shift;
    };
    return opaque | channel(16) | channel(8) | channel(0);
}

}  // namespace

bool PictureOutline::take(std::span<const std::uint32_t> pixels, int width)
{
    bool isNew = m_width != static_cast<std::size_t>(width) || m_isDrawn.size() != pixels.size();
    m_width = static_cast<std::size_t>(width);
    m_isDrawn.resize(pixels.size());
    std::uint8_t difference = 0;
    auto* known = m_isDrawn.data();
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const auto isDrawn = static_cast<std::uint8_t>(pixels[i] >= faintest ? 1 : 0);
        difference = static_cast<std::uint8_t>(difference | (known[i] ^ isDrawn));
        known[i] = isDrawn;
    }
    isNew = isNew || difference != 0;
    if (isNew)
        makeRectangles();
    findTranslucent(pixels);
    return isNew;
}

void PictureOutline::findTranslucent(std::span<const std::uint32_t> pixels)
{
    m_translucent.clear();
    const auto isTranslucent = [](std::uint32_t pixel) { return pixel != 0 && pixel < opaque; };
    for (auto run = std::find_if(pixels.begin(), pixels.end(), isTranslucent); run != pixels.end();) {
        const auto end = std::find_if_not(run, pixels.end(), isTranslucent);
        m_translucent.push_back({static_cast<std::size_t>(run - pixels.begin()), static_cast<std::size_t>(end - run)});
        run = std::find_if(end, pixels.end(), isTranslucent);
    }
}

void PictureOutline::makeRectangles()
{
    m_rectangles.clear();
    std::size_t bandStart = 0;
    for (std::size_t row = 0; row * m_width < m_isDrawn.size(); ++row)
        addRow(row, bandStart);
}

// A row like the one above makes the band above taller.
void PictureOutline::addRow(std::size_t row, std::size_t& bandStart)
{
    const auto rowStart = m_rectangles.size();
    const auto begin = m_isDrawn.begin() + static_cast<std::ptrdiff_t>(row * m_width);
    const auto end = begin + static_cast<std::ptrdiff_t>(m_width);
    for (auto run = std::find(begin, end, 1); run != end;) {
        const auto runEnd = std::find(run, end, 0);
        m_rectangles.push_back({static_cast<std::int16_t>(run - begin), static_cast<std::int16_t>(row), static_cast<std::uint16_t>(runEnd - run), 1});
        run = std::find(runEnd, end, 1);
    }
    const auto band = std::span(m_rectangles).subspan(bandStart, rowStart - bandStart);
    const auto added = std::span(m_rectangles).subspan(rowStart);
    const auto isSame = [](const xcb_rectangle_t& a, const xcb_rectangle_t& b) { return a.x == b.x && a.width == b.width; };
    const bool isBelow = !band.empty() && band.front().y + band.front().height == static_cast<int>(row);
    if (!isBelow || !std::equal(band.begin(), band.end(), added.begin(), added.end(), isSame)) {
        bandStart = rowStart;
        return;
    }
    for (auto& rectangle : band)
        ++rectangle.height;
    m_rectangles.resize(rowStart);
}

void PictureOutline::makeOpaque(std::span<std::uint32_t> pixels) const
{
    for (const auto& run : m_translucent) {
        for (auto& pixel : pixels.subspan(run.start, run.count))
            pixel = pixel < faintest ? 0 : inItsOwnColour(pixel);
    }
}

}  // namespace Platform::X11
