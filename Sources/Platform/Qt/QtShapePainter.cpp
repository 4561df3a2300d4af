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

// A painter on the image's own memory.
class ImagePainter {
public:
    explicit ImagePainter(const Canvas& canvas)
        : m_image(reinterpret_cast<uchar*>(canvas.image.pixels().data()), canvas.image.width(), canvas.image.height(),
              static_cast<qsizetype>(canvas.image.width()) * 4, QImage::Format_ARGB32_Premultiplied)
    {
        m_image.setDevicePixelRatio(canvas.scale);
        if (!m_image.isNull())
            m_painter.begin(&m_image);
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setPen(Qt::NoPen);
    }

    QPainter* operator->() { return &m_painter; }
    bool isActive() const { return m_painter.isActive(); }

private:
    QImage m_image;
    QPainter m_painter;
};

}  // namespace

void QtShapePainter::fillEllipse(const Canvas& canvas, const Rect& rect, std::uint32_t colour)
{
    ImagePainter painter(canvas);
    painter->setBrush(colourOf(colour));
    painter->drawEllipse(rectOf(rect));
}

void QtShapePainter::strokeEllipse(const Canvas& canvas, const Rect& rect, double lineWidth, std::uint32_t colour)
{
    ImagePainter painter(canvas);
    painter->setPen(QPen(colourOf(colour), lineWidth));
    painter->drawEllipse(rectOf(rect));
}

void QtShapePainter::fillRoundedRectangle(const Canvas& canvas, const Rect& rect, double radius, std::uint32_t colour)
{
    ImagePainter painter(canvas);
    painter->setBrush(colourOf(colour));
    painter->drawRoundedRect(rectOf(rect), radius, radius);
}

Size QtShapePainter::textSize(std::string_view text, const Font& font)
{
    const QFontMetricsF metrics(fontOf(font));
    return {metrics.horizontalAdvance(textOf(text)), metrics.height()};
}

void QtShapePainter::drawText(const Canvas& canvas, Point topLeft, std::string_view text, const Font& font, std::uint32_t colour)
{
    ImagePainter painter(canvas);
    const auto qtFont = fontOf(font);
    painter->setFont(qtFont);
    painter->setPen(colourOf(colour));
    painter->drawText(QPointF(topLeft.x, topLeft.y + QFontMetricsF(qtFont).ascent()), textOf(text));
}

}  // namespace Platform
