#include "Tarnwick/LoupePicture.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "Tarnwick/PremultipliedPixel.h"

namespace Tarnwick {
namespace {

constexpr double circleInset = 1;
constexpr double lineWidth = 1;
constexpr double ringWidth = 2;
constexpr double horizontalPadding = 12;
constexpr double verticalPadding = 5;

constexpr std::uint32_t backdropColour = 0x26000000;  // black at 15 %
constexpr std::uint32_t ringColour = 0x73000000;      // black at 45 %
constexpr std::uint32_t capsuleColour = 0x9E000000;   // black at 62 %
constexpr std::uint32_t textColour = 0xF2F2F2F2;      // white at 95 %
constexpr std::uint32_t opaque = 0xFF000000;

// The guillemets are U+2039 and U+203A.
constexpr std::string_view footerText = "1 / 2  size       \u2039 \u203A  zoom";
constexpr Platform::Font footerFont{.size = 11, .weight = Platform::FontWeight::medium};

constexpr double mostRows = 2048;

// Sums and products that differ from a whole number, or from a half, by the error of
// their arithmetic only are taken for it.
constexpr double arithmeticError = 1e-6;

int pixelsToCover(double length) { return static_cast<int>(std::max(1.0, std::ceil(length - arithmeticError))); }

std::size_t nearestEdge(double position) { return static_cast<std::size_t>(std::max(0.0, std::floor(position + 0.5 + arithmeticError))); }

// Which pixel of the sample each device pixel of a side shows: the one that its centre
// falls into where `count` of them are stretched over `portion` of `length`, from `offset`
// on (both in fractions); `count` where there is none.
struct Side {
    double start = 0;
    double length = 0;
    double offset = 0;
    double portion = 1;
    std::size_t count = 0;

    std::size_t indexAt(std::size_t pixel) const
    {
        // The rim's outermost pixels have their centres beyond the circle.
        const double centre = std::clamp(static_cast<double>(pixel) + 0.5 - start, 0.0, length);
        const double index = std::floor((centre - offset * length) * static_cast<double>(count) / (portion * length));
        if (index == static_cast<double>(count) && centre == length)
            return count - 1;
        return index >= 0 && index < static_cast<double>(count) ? static_cast<std::size_t>(index) : count;
    }
};

bool areOpaque(std::span<const std::uint32_t> pixels)
{
    std::uint32_t common = opaque;
    for (const auto pixel : pixels)
        common &= pixel;
    return common == opaque;
}

void layIndices(std::vector<std::size_t>& indices, std::size_t size, const Side& side)
{
    indices.resize(size);
    for (std::size_t pixel = 0; pixel < size; ++pixel)
        indices[pixel] = side.indexAt(pixel);
}

}  // namespace

void LoupePicture::lay(double diameter, double scale)
{
    if (diameter == m_diameter && scale == m_screenScale)
        return;
    m_diameter = diameter;
    m_screenScale = scale;
    m_scale = std::min(scale, mostRows / (diameter + loupeFooterHeight));
    m_ornaments.resize(pixelsToCover(diameter * m_scale), pixelsToCover((diameter + loupeFooterHeight) * m_scale));
    std::fill(m_ornaments.pixels().begin(), m_ornaments.pixels().end(), 0U);
    m_sampleWidth = 0;
    m_sampleHeight = 0;
    ++m_alphaNumber;
    paintOrnaments();
    cutCircle();
    layCentreLines();
}

Platform::Size LoupePicture::size() const { return {m_ornaments.width() / m_scale, m_ornaments.height() / m_scale}; }

void LoupePicture::paintOrnaments()
{
    const Platform::Canvas canvas{m_ornaments, m_scale};
    const double circleSide = m_diameter - 2 * circleInset;
    if (circleSide > 0)
        m_painter.strokeEllipse(canvas, {circleInset, circleInset, circleSide, circleSide}, ringWidth, ringColour);

    const auto text = m_painter.textSize(footerText, footerFont);
    const Platform::Size capsule{text.width + 2 * horizontalPadding, text.height + 2 * verticalPadding};
    const Platform::Point corner{(m_diameter - capsule.width) * 0.5, m_diameter + (loupeFooterHeight - capsule.height) * 0.5};
    m_painter.fillRoundedRectangle(canvas, {corner.x, corner.y, capsule.width, capsule.height}, capsule.height * 0.5, capsuleColour);
    m_painter.drawText(canvas, {corner.x + horizontalPadding, corner.y + verticalPadding}, footerText, footerFont, textColour);
}

void LoupePicture::cutCircle()
{
    m_rows.clear();
    m_firstRow = 0;
    m_rim.clear();
    const double circleSide = m_diameter - 2 * circleInset;
    if (circleSide <= 0)
        return;
    Platform::Image clip(m_ornaments.width(), std::min(m_ornaments.width(), m_ornaments.height()));
    std::fill(clip.pixels().begin(), clip.pixels().end(), 0U);
    m_painter.fillEllipse({clip, m_scale}, {circleInset, circleInset, circleSide, circleSide}, opaque);
    for (std::size_t y = 0; y < static_cast<std::size_t>(clip.height()); ++y) {
        const auto row = cutRow(y, clip);
        if (row.from == row.to)
            continue;
        if (m_rows.empty())
            m_firstRow = y;
        m_rows.push_back(row);
    }
}

LoupePicture::Row LoupePicture::cutRow(std::size_t y, const Platform::Image& clip)
{
    const auto width = static_cast<std::size_t>(clip.width());
    const auto coverage = clip.pixels().subspan(y * width, width);
    const auto ornaments = m_ornaments.pixels().subspan(y * width, width);
    const auto shows = [&](std::size_t x) { return coverage[x] != 0; };
    const auto showsPlainly = [&](std::size_t x) { return alphaOf(coverage[x]) == 255 && ornaments[x] == 0; };

    Row row;
    while (row.from < width && !shows(row.from))
        ++row.from;
    row.to = width;
    while (row.to > row.from && !shows(row.to - 1))
        --row.to;
    row.innerFrom = row.from;
    while (row.innerFrom < row.to && !showsPlainly(row.innerFrom))
        ++row.innerFrom;
    row.innerTo = row.innerFrom;
    while (row.innerTo < row.to && showsPlainly(row.innerTo))
        ++row.innerTo;

    for (std::size_t x = row.from; x < row.to; ++x) {
        if (x == row.innerFrom)
            x = row.innerTo;
        if (x < row.to)
            m_rim.push_back({ornaments[x], alphaOf(scaled(coverage[x], 255 - alphaOf(ornaments[x])))});
    }
    return row;
}

// Hard edges, on device pixels: a line of one point is as sharp as a pixel of the sample.
void LoupePicture::layCentreLines()
{
    const double middle = m_diameter * 0.5 * m_scale;
    const double reach = lineWidth * 0.5 * m_scale;
    const auto width = static_cast<std::size_t>(m_ornaments.width());
    m_lineFrom = std::min(nearestEdge(middle - reach), width - 1);
    m_lineTo = std::clamp(nearestEdge(middle + reach), m_lineFrom + 1, width);
}

void LoupePicture::laySample()
{
    const auto width = static_cast<std::size_t>(m_sample->width());
    const auto height = static_cast<std::size_t>(m_sample->height());
    if (width == m_sampleWidth && height == m_sampleHeight && m_part == m_samplePart)
        return;
    m_sampleWidth = width;
    m_sampleHeight = height;
    m_samplePart = m_part;
    const auto size = static_cast<std::size_t>(m_ornaments.width());
    const double start = circleInset * m_scale;
    const double length = (m_diameter - 2 * circleInset) * m_scale;
    layIndices(m_sampleColumns, size, {start, length, m_part.x, m_part.width, width});
    layIndices(m_sampleRows, size, {start, length, m_part.y, m_part.height, height});
    m_showsSampleOnly = std::find(m_sampleColumns.begin(), m_sampleColumns.end(), width) == m_sampleColumns.end();
    layRuns();
    m_sampleRow.resize(width);
    m_blended.resize(width + 1);
    m_blended[width] = backdropColour;
}

void LoupePicture::layRuns()
{
    constexpr std::size_t shortRun = 16;  // columns: they are put faster one by one
    m_runs.clear();
    const auto& columns = m_sampleColumns;
    for (std::size_t from = 0, to = 1; from < columns.size(); from = to++) {
        while (to < columns.size() && columns[to] == columns[to - 1] + 1)
            ++to;
        m_runs.push_back({from, to - from});
    }
    if (m_runs.size() * shortRun > columns.size())
        m_runs.clear();
}

void LoupePicture::show(const Platform::PixelRows* sample, const Platform::Rect& part)
{
    m_sample = sample;
    m_part = part;
}

void LoupePicture::draw(std::span<std::uint32_t> pixels)
{
    const std::span<const std::uint32_t> ornaments = m_ornaments.pixels();
    const auto width = static_cast<std::size_t>(m_ornaments.width());
    const auto circleStart = m_firstRow * width;
    const auto circleEnd = circleStart + m_rows.size() * width;
    std::copy_n(ornaments.data(), circleStart, pixels.data());
    if (!m_rows.empty())
        drawCircle(pixels.data());
    std::copy(ornaments.begin() + static_cast<std::ptrdiff_t>(circleEnd), ornaments.end(), pixels.data() + circleEnd);
}

void LoupePicture::drawCircle(std::uint32_t* to)
{
    const auto width = static_cast<std::size_t>(m_ornaments.width());
    m_row.resize(width);
    m_crossing.resize(width);
    if (m_sample != nullptr)
        laySample();

    m_isSampleOpaque = m_sample != nullptr;
    const RimPixel* rim = m_rim.data();
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        const auto y = m_firstRow + i;
        const bool showsTheSameAsAbove = i > 0 && (m_sample == nullptr || m_sampleRows[y] == m_sampleRows[y - 1]);
        if (!showsTheSameAsAbove)
            magnifyRow(y);
        const bool isCrossed = y >= m_lineFrom && y < m_lineTo;
        if (isCrossed)
            crossRow();
        rim = putRow(m_rows[i], isCrossed ? m_crossing : m_row, y, rim, to + y * width);
    }
    const auto alpha = m_sample == nullptr ? SampleAlpha::none : m_isSampleOpaque ? SampleAlpha::opaque : SampleAlpha::mixed;
    // From one opaque sample to the next only colours change, without one nothing does.
    if (std::exchange(m_drawnAlpha, alpha) != alpha || alpha == SampleAlpha::mixed)
        ++m_alphaNumber;
}

void LoupePicture::magnifyRow(std::size_t y)
{
    if (m_sample == nullptr || m_sampleRows[y] == m_sampleHeight) {
        std::fill(m_row.begin(), m_row.end(), backdropColour);
        m_isSampleOpaque = false;
    } else {
        const auto from = m_sample->row(static_cast<int>(m_sampleRows[y]), m_sampleRow);
        const bool hidesTheBackdrop = m_showsSampleOnly && areOpaque(from);
        m_isSampleOpaque = m_isSampleOpaque && hidesTheBackdrop;
        if (!hidesTheBackdrop)
            std::transform(from.begin(), from.end(), m_blended.begin(), [](std::uint32_t pixel) { return over(pixel, backdropColour); });
        stretchRow(hidesTheBackdrop ? from.data() : m_blended.data());
    }
    for (std::size_t x = m_lineFrom; x < m_lineTo; ++x)
        m_row[x] = differenceWithWhite(m_row[x]);
}

void LoupePicture::stretchRow(const std::uint32_t* shown)
{
    for (const auto& run : m_runs)
        std::copy_n(shown + m_sampleColumns[run.from], run.count, m_row.data() + run.from);
    if (m_runs.empty())
        std::transform(m_sampleColumns.begin(), m_sampleColumns.end(), m_row.begin(), [shown](std::size_t column) { return shown[column]; });
}

// Both lines are one stroke: where they cross, the difference is taken once.
void LoupePicture::crossRow()
{
    for (std::size_t x = 0; x < m_row.size(); ++x)
        m_crossing[x] = differenceWithWhite(m_row[x]);
    std::copy(m_row.data() + m_lineFrom, m_row.data() + m_lineTo, m_crossing.data() + m_lineFrom);
}

const LoupePicture::RimPixel* LoupePicture::putRow(
    const Row& row, const std::vector<std::uint32_t>& shown, std::size_t y, const RimPixel* rim, std::uint32_t* to) const
{
    const auto width = static_cast<std::size_t>(m_ornaments.width());
    const auto* const ornaments = m_ornaments.pixels().data() + y * width;
    const auto putRim = [&](std::size_t first, std::size_t last) {
        for (std::size_t x = first; x < last; ++x, ++rim)
            to[x] = rim->above + scaled(shown[x], rim->share);
    };
    std::copy_n(ornaments, row.from, to);
    putRim(row.from, row.innerFrom);
    std::copy(shown.data() + row.innerFrom, shown.data() + row.innerTo, to + row.innerFrom);
    putRim(row.innerTo, row.to);
    std::copy(ornaments + row.to, ornaments + width, to + row.to);
    return rim;
}

}  // namespace Tarnwick
