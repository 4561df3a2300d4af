#include "EndToEnd/Demonstration/Pictures.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Demonstration {

using Platform::Image;
using Platform::X11::DevicePoint;
using Platform::X11::DeviceRect;

namespace {

QImage viewOf(const Image& image)
{
    const auto* bytes = reinterpret_cast<const uchar*>(image.pixels().data());
    return {bytes, image.width(), image.height(), QImage::Format_RGB32};
}

Image imageOf(const QImage& picture)
{
    Image image(picture.width(), picture.height());
    const auto converted = picture.convertToFormat(QImage::Format_RGB32);
    auto pixels = image.pixels();
    for (int y = 0; y < image.height(); ++y) {
        const auto* row = reinterpret_cast<const std::uint32_t*>(converted.constScanLine(y));
        pixels = pixels.subspan(static_cast<std::size_t>(std::copy_n(row, image.width(), pixels.begin()) - pixels.begin()));
    }
    return image;
}

void paintHills(QPainter& painter, const QSize& size, double height, double phase, const QColor& colour)
{
    QPainterPath hills(QPointF(0, size.height()));
    for (int x = 0; x <= size.width(); x += 4)
        hills.lineTo(x, size.height() * (1 - height) + 40 * std::sin(x / 190.0 + phase) + 15 * std::sin(x / 61.0 + 2 * phase));
    hills.lineTo(size.width(), size.height());
    painter.fillPath(hills, colour);
}

}  // namespace

Image landscape(int width, int height)
{
    QImage picture(width, height, QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, height);
    sky.setColorAt(0, QColor(38, 50, 96));
    sky.setColorAt(0.45, QColor(206, 104, 92));
    sky.setColorAt(0.7, QColor(250, 196, 120));
    painter.fillRect(picture.rect(), sky);
    painter.setBrush(QColor(255, 232, 170));
    painter.setPen(Qt::NoPen);
    painter.drawEllipse(QPointF(width * 0.58, height * 0.57), 54, 54);
    paintHills(painter, picture.size(), 0.40, 0.4, QColor(120, 72, 96));
    paintHills(painter, picture.size(), 0.28, 2.1, QColor(72, 50, 80));
    paintHills(painter, picture.size(), 0.16, 4.0, QColor(34, 30, 52));
    painter.end();
    return imageOf(picture);
}

Image page(int width, int height)
{
    QImage picture(width, height, QImage::Format_RGB32);
    picture.fill(QColor(252, 251, 247));
    QPainter painter(&picture);
    painter.setPen(QColor(40, 40, 44));
    painter.setFont(QFont(QStringLiteral("DejaVu Serif"), 11));
    const auto text = QStringLiteral("Is the edge of this button on the same line as that label? Hold a straight line against the screen "
                                     "and see.\n\nA crosshair whose lines show the inverse of what lies beneath stays legible on white paper, on a "
                                     "photograph and on a dark title bar alike: there is no colour in which it could disappear.\n\n"
                                     "Press the keys again, and it is gone.");
    painter.drawText(picture.rect().adjusted(28, 24, -28, -24), Qt::TextWordWrap, text);
    painter.end();
    return imageOf(picture);
}

Image colourChart(int width, int height)
{
    constexpr int columns = 8;
    constexpr int rows = 5;
    QImage picture(width, height, QImage::Format_RGB32);
    QPainter painter(&picture);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const QRect field(column * width / columns, row * height / rows, width / columns + 1, height / rows + 1);
            painter.fillRect(field, QColor::fromHsv(column * 360 / columns, 255 - row * 55, 90 + row * 40));
        }
    }
    painter.end();
    return imageOf(picture);
}

Image part(const Image& image, const DeviceRect& area) { return imageOf(viewOf(image).copy(area.x, area.y, area.width, area.height)); }

Image closeUp(const Image& image, DevicePoint centre)
{
    constexpr int side = 48;
    constexpr int enlargement = 10;
    const auto surroundings = viewOf(image).copy(centre.x - side / 2, centre.y - side / 2, side, side);
    return imageOf(surroundings.scaled(side * enlargement, side * enlargement));
}

void write(const std::filesystem::path& path, const Image& image)
{
    if (!viewOf(image).save(QString::fromStdString(path.string()), "PNG"))
        throw std::runtime_error("cannot write " + path.string());
}

}  // namespace Demonstration
