#include "Platform/Qt/QtShapePainter.h"

#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QPen>

#include "Platform/Qt/QtFont.h"

namespace Platform {
namespace {

QRectF rectOf(const Rect& rect) { return {rect.x, rect.y, rect.width, rect.height}; }

QColor colourOf(std::uint32_t premultiplied) { return QColor::fromRgba(qUnpremultiply(premultiplied)); }

QString textOf(std::string_view text) { return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())); }

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
    const QFontMetricsF metrics(qtFontOf(font));
    return {metrics.horizontalAdvance(textOf(text)), metrics.height()};
}

void QtShapePainter::drawText(const Canvas& canvas, Point topLeft, std::string_view text, const Font& font, std::uint32_t colour)
{
    const auto qtFont = qtFontOf(font);
    const QPointF baseline(topLeft.x, topLeft.y + QFontMetricsF(qtFont).ascent());
    paintOn(canvas, [&](QPainter& painter) {
        painter.setFont(qtFont);
        painter.setPen(colourOf(colour));
        painter.drawText(baseline, textOf(text));
    });
}

}  // namespace Platform
