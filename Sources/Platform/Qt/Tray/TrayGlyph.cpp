#include "Platform/Qt/Tray/TrayGlyph.h"

#include <QPixmap>
#include <algorithm>
#include <array>

namespace Platform {
namespace {

constexpr QRgb glyphColour = 0xffffffff;
constexpr QRgb outlineColour = 0xff2b2b2b;
constexpr std::array sizes = {16, 22, 24, 32, 44, 48, 64, 96};

// In whole pixels of one size.
struct GlyphMeasures {
    explicit GlyphMeasures(int side) : size(side), outline(std::max(1, side / 24)), stroke(strokeFor(side)) { }

    // As even as the size, so that the plus lies in the middle.
    static int strokeFor(int side)
    {
        const int stroke = std::max(2, side / 8);
        return (side - stroke) % 2 == 0 ? stroke : stroke + (stroke == 2 ? 1 : -1);
    }

    int size;
    int outline;
    int stroke;
    int cornerReach = size * 5 / 16;
    int plusReach = size * 3 / 16;
};

std::array<QRect, 10> strokesOf(const GlyphMeasures& m)
{
    const int near = m.outline;
    const int far = m.size - m.outline;
    const int middle = (m.size - m.stroke) / 2;
    const int plusLength = m.stroke + 2 * (m.plusReach - m.stroke / 2);
    const int plusStart = (m.size - plusLength) / 2;
    return {QRect(near, near, m.cornerReach, m.stroke), QRect(near, near, m.stroke, m.cornerReach),
        QRect(far - m.cornerReach, near, m.cornerReach, m.stroke), QRect(far - m.stroke, near, m.stroke, m.cornerReach),
        QRect(near, far - m.stroke, m.cornerReach, m.stroke), QRect(near, far - m.cornerReach, m.stroke, m.cornerReach),
        QRect(far - m.cornerReach, far - m.stroke, m.cornerReach, m.stroke), QRect(far - m.stroke, far - m.cornerReach, m.stroke, m.cornerReach),
        QRect(plusStart, middle, plusLength, m.stroke), QRect(middle, plusStart, m.stroke, plusLength)};
}

// A painter would do the same, but keeps half a megabyte of Qt in memory for it.
void fillRect(QImage& image, const QRect& rect, QRgb colour)
{
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        std::fill_n(reinterpret_cast<QRgb*>(image.scanLine(y)) + rect.left(), rect.width(), colour);
}

}  // namespace

QImage trayGlyphImage(int size)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(0U);
    const GlyphMeasures measures(size);
    const auto strokes = strokesOf(measures);
    for (const auto& stroke : strokes)
        fillRect(image, stroke.adjusted(-measures.outline, -measures.outline, measures.outline, measures.outline), outlineColour);
    for (const auto& stroke : strokes)
        fillRect(image, stroke, glyphColour);
    return image;
}

QIcon trayGlyphIcon()
{
    QIcon icon;
    for (const int size : sizes)
        icon.addPixmap(QPixmap::fromImage(trayGlyphImage(size)));
    return icon;
}

}  // namespace Platform
