#include "Support/FakeShapePainter.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace TestSupport {
namespace {

using Platform::Canvas;
using Platform::Point;
using Platform::Rect;

std::string rendering(const Rect& rect)
{
    std::ostringstream text;
    text << rect.x << " " << rect.y << " " << rect.width << " " << rect.height;
    return text.str();
}

std::string rendering(std::uint32_t colour)
{
    std::ostringstream text;
    text << std::hex << std::uppercase << std::setfill('0') << std::setw(8) << colour;
    return text.str();
}

std::string rendering(const Platform::Font& font)
{
    std::ostringstream text;
    text << font.size << (font.weight == Platform::FontWeight::medium ? " medium" : " regular");
    return text.str();
}

std::uint32_t over(std::uint32_t above, std::uint32_t below)
{
    std::uint32_t result = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        const auto channel = [shift](std::uint32_t pixel) { return pixel >> shift & 0xFF; };
        const double shining = channel(below) * (255.0 - (above >> 24)) / 255.0;
        result |= static_cast<std::uint32_t>(channel(above) + std::lround(shining)) << shift;
    }
    return result;
}

template <typename Contains> void paint(const Canvas& canvas, std::uint32_t colour, Contains contains)
{
    for (int y = 0; y < canvas.image.height(); ++y) {
        for (int x = 0; x < canvas.image.width(); ++x) {
            if (!contains(Point{(x + 0.5) / canvas.scale, (y + 0.5) / canvas.scale}))
                continue;
            const auto index = static_cast<std::size_t>(y) * static_cast<std::size_t>(canvas.image.width()) + static_cast<std::size_t>(x);
            auto& pixel = canvas.image.pixels()[index];
            pixel = over(colour, pixel);
        }
    }
}

bool ellipseContains(const Rect& rect, Point point)
{
    const double x = (point.x - rect.x) / rect.width * 2 - 1;
    const double y = (point.y - rect.y) / rect.height * 2 - 1;
    return rect.width > 0 && rect.height > 0 && x * x + y * y <= 1;
}

bool roundedRectangleContains(const Rect& rect, double radius, Point point)
{
    const double dx = std::max({rect.x + radius - point.x, point.x - rect.x - rect.width + radius, 0.0});
    const double dy = std::max({rect.y + radius - point.y, point.y - rect.y - rect.height + radius, 0.0});
    return dx * dx + dy * dy <= radius * radius;
}

Rect inset(const Rect& rect, double by) { return {rect.x + by, rect.y + by, rect.width - 2 * by, rect.height - 2 * by}; }

}  // namespace

void FakeShapePainter::fillEllipse(const Canvas& canvas, const Rect& rect, std::uint32_t colour)
{
    std::ostringstream line;
    line << "painter.fillEllipse " << rendering(rect) << " " << rendering(colour) << " @" << canvas.scale;
    m_log.add(line.str());
    paint(canvas, colour, [&](Point point) { return ellipseContains(rect, point); });
}

void FakeShapePainter::strokeEllipse(const Canvas& canvas, const Rect& rect, double lineWidth, std::uint32_t colour)
{
    std::ostringstream line;
    line << "painter.strokeEllipse " << rendering(rect) << " " << lineWidth << " " << rendering(colour) << " @" << canvas.scale;
    m_log.add(line.str());
    const auto outer = inset(rect, -lineWidth / 2);
    const auto inner = inset(rect, lineWidth / 2);
    paint(canvas, colour, [&](Point point) { return ellipseContains(outer, point) && !ellipseContains(inner, point); });
}

void FakeShapePainter::fillRoundedRectangle(const Canvas& canvas, const Rect& rect, double radius, std::uint32_t colour)
{
    std::ostringstream line;
    line << "painter.fillRoundedRectangle " << rendering(rect) << " " << radius << " " << rendering(colour) << " @" << canvas.scale;
    m_log.add(line.str());
    paint(canvas, colour, [&](Point point) { return roundedRectangleContains(rect, radius, point); });
}

Platform::Size FakeShapePainter::textSize(std::string_view text, const Platform::Font& font)
{
    m_log.add("painter.textSize " + rendering(font) + " " + std::string(text));
    return m_textSize;
}

void FakeShapePainter::drawText(const Canvas& canvas, Point topLeft, std::string_view text, const Platform::Font& font, std::uint32_t colour)
{
    std::ostringstream line;
    line << "painter.drawText " << topLeft.x << " " << topLeft.y << " " << rendering(font) << " " << rendering(colour) << " " << text << " @"
         << canvas.scale;
    m_log.add(line.str());
    const Rect box{topLeft.x, topLeft.y, m_textSize.width, m_textSize.height};
    paint(canvas, colour, [&](Point point) { return roundedRectangleContains(box, 0, point); });
}

}  // namespace TestSupport
