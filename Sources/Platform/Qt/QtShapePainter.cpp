#include "Platform/Qt/QtShapePainter.h"

#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPen>
#include <cmath>

namespace Platform {
namespace {

QRectF rectOf(const Rect& rect) { return {rect.x, rect.y, rect.width, rect.height}; }

QColor colourOf(std::uint32_t premultiplied) { return QColor::fromRgba(qUnpremultiply(premultiplied)); }

QString textOf(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

// Font sizes of Qt are whole pixels, or points of an inch; a size in our points is the
// pixel size at scale 1, and the painter's own scale does the rest.
QFont fontOf(const Font& font)
{
    QFont result = QGuiApplication::font();
    result.setPixelSize(static_cast<int>(std::lround(font.size)));
    result.setWeight(font.weight == FontWeight::medium ? QFont::Medium : QFont::Normal);
    // Coloured fringes would be wrong over whatever lies beneath.
    result.setStyleStrategy(QFont::NoSubpixelAntialias);
    return result;
}

// On the image's own memory.
template <typename Paint> void paintOn(const Canvas& canvas, Paint paint)
{
    auto& image = canvas.image;
    if (image.isEmpty())
        return;
    QImage target(reinterpret_cast<uchar*>(image.pixels().data()), image.width(), image.height(), static_cast<qsizetype>(image.width()) * 4,
        QImage::Format_ARGB32_Premultiplied);
    target.setDevicePixelRatio(canvas.scale);
    QPainter painter(&target);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    paint(painter);
}

}  // namespace

void QtShapePainter::fillEllipse(const Canvas& canvas, const Rect& rect, std::uint32_t colour)
{
    paintOn(canvas, [&](QPainter& painter) {
        painter.setBrush(colourOf(colour));
        painter.drawEllipse(rectOf(rect));
    });
}

void QtShapePainter::strokeEllipse(const Canvas& canvas, const Rect& rect, double lineWidth, std::uint32_t colour)
{
    paintOn(canvas, [&](QPainter& painter) {
        painter.setPen(QPen(colourOf(colour), lineWidth));
        painter.drawEllipse(rectOf(rect));
    });
}

void QtShapePainter::fillRoundedRectangle(const Canvas& canvas, const Rect& rect, double radius, std::uint32_t colour)
{
    paintOn(canvas, [&](QPainter& painter) {
        painter.setBrush(colourOf(colour));
        painter.drawRoundedRect(rectOf(rect), radius, radius);
    });
}

Size QtShapePainter::textSize(std::string_view text, const Font& font)
{
    const QFontMetricsF metrics(fontOf(font));
    return {metrics.horizontalAdvance(textOf(text)), metrics.height()};
}

void QtShapePainter::drawText(const Canvas& canvas, Point topLeft, std::string_view text, const Font& font, std::uint32_t colour)
{
    const auto qtFont = fontOf(font);
    const QPointF baseline(topLeft.x, topLeft.y + QFontMetricsF(qtFont).ascent());
    paintOn(canvas, [&](QPainter& painter) {
        painter.setFont(qtFont);
        painter.setPen(colourOf(colour));
        painter.drawText(baseline, textOf(text));
    });
}

}  // namespace Platform
