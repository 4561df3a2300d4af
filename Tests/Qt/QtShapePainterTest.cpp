#include "Platform/Qt/QtShapePainter.h"

#include <gtest/gtest.h>

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace Platform {
namespace {

constexpr std::uint32_t opaqueBlack = 0xFF000000;
constexpr std::uint32_t white95 = 0xF2F2F2F2;
constexpr Font medium11{.size = 11, .weight = FontWeight::medium};

std::uint32_t alphaOf(std::uint32_t pixel) { return pixel >> 24; }

class QtShapePainterTest : public testing::Test {
protected:
    static Image cleared(int width, int height)
    {
        Image image(width, height);
        std::fill(image.pixels().begin(), image.pixels().end(), 0U);
        return image;
    }

    // In whole pixels.
    static double coveredArea(const Image& image)
    {
        double sum = 0;
        for (const auto pixel : image.pixels())
            sum += alphaOf(pixel);
        return sum / 255;
    }

    // From the centre of a pixel to the image's own.
    static double distance(const Image& image, int x, int y) { return std::hypot(x + 0.5 - image.width() / 2.0, y + 0.5 - image.height() / 2.0); }

    // Columns and rows that hold something.
    static Rect extent(const Image& image)
    {
        int left = image.width();
        int right = -1;
        int top = image.height();
        int bottom = -1;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixel(x, y) == 0)
                    continue;
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
        }
        return {static_cast<double>(left), static_cast<double>(top), right - left + 1.0, bottom - top + 1.0};
    }

    QtShapePainter painter;
};

using QtShapePainterEllipse = QtShapePainterTest;
using QtShapePainterRectangle = QtShapePainterTest;
using QtShapePainterText = QtShapePainterTest;

TEST_F(QtShapePainterEllipse, CoversItsInsideWhollyAndItsEdgeInPart)
{
    for (const double scale : {1.0, 1.5, 2.0}) {
        const int side = static_cast<int>(std::lround(60 * scale));
        auto image = cleared(side, side);
        painter.fillEllipse({image, scale}, {5, 5, 50, 50}, opaqueBlack);
        const double radius = 25 * scale;
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                if (distance(image, x, y) < radius - 1) {
                    ASSERT_EQ(image.pixel(x, y), opaqueBlack) << scale << " " << x << " " << y;
                }
                if (distance(image, x, y) > radius + 1) {
                    ASSERT_EQ(image.pixel(x, y), 0U) << scale << " " << x << " " << y;
                }
            }
        }
        EXPECT_NEAR(coveredArea(image), std::numbers::pi * radius * radius, radius * radius * 0.015);
    }
}

TEST_F(QtShapePainterEllipse, StrokesHalfInsideAndHalfOutside)
{
    constexpr std::uint32_t black45 = 0x73000000;
    for (const double scale : {1.0, 2.0}) {
        const int side = static_cast<int>(60 * scale);
        auto image = cleared(side, side);
        painter.strokeEllipse({image, scale}, {5, 5, 50, 50}, 4, black45);
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                const double offRing = std::abs(distance(image, x, y) - 25 * scale);
                if (offRing < 2 * scale - 1) {
                    ASSERT_EQ(image.pixel(x, y), black45) << scale << " " << x << " " << y;
                }
                if (offRing > 2 * scale + 1) {
                    ASSERT_EQ(image.pixel(x, y), 0U) << scale << " " << x << " " << y;
                }
            }
        }
    }
}

TEST_F(QtShapePainterEllipse, EndsAtTheImagesEdges)
{
    auto image = cleared(10, 10);
    painter.fillEllipse({image, 1}, {-100, -100, 210, 210}, opaqueBlack);
    EXPECT_EQ(coveredArea(image), 100);
    Image none;
    painter.fillEllipse({none, 1}, {0, 0, 10, 10}, opaqueBlack);
    painter.drawText({none, 1}, {0, 0}, "text", medium11, white95);
    EXPECT_TRUE(none.isEmpty());
}

TEST_F(QtShapePainterRectangle, IsSharpOnWholePixelsAndPartlyCoveredBetweenThem)
{
    auto image = cleared(40, 20);
    painter.fillRoundedRectangle({image, 1}, {4, 2.5, 30, 15}, 7.5, 0x9E000000);
    EXPECT_EQ(image.pixel(18, 1), 0U);
    EXPECT_NEAR(alphaOf(image.pixel(18, 2)), 79, 1);
    EXPECT_EQ(image.pixel(18, 3), 0x9E000000U);
    EXPECT_EQ(image.pixel(18, 16), 0x9E000000U);
    EXPECT_NEAR(alphaOf(image.pixel(18, 17)), 79, 1);
    EXPECT_EQ(image.pixel(18, 18), 0U);
    EXPECT_EQ(image.pixel(3, 9), 0U);
    EXPECT_EQ(image.pixel(5, 9), 0x9E000000U);
    EXPECT_EQ(image.pixel(4, 3), 0U);
    EXPECT_EQ(image.pixel(33, 16), 0U);

    auto dense = cleared(80, 40);
    painter.fillRoundedRectangle({dense, 2}, {4, 2.5, 30, 15}, 7.5, 0x9E000000);
    EXPECT_EQ(dense.pixel(36, 4), 0U);
    EXPECT_EQ(dense.pixel(36, 5), 0x9E000000U);
    EXPECT_EQ(dense.pixel(36, 34), 0x9E000000U);
    EXPECT_EQ(dense.pixel(36, 35), 0U);
}

TEST_F(QtShapePainterRectangle, LiesOverWhatIsThere)
{
    auto image = cleared(4, 1);
    image.pixels()[1] = 0xFFFFFFFF;
    painter.fillRoundedRectangle({image, 1}, {0, 0, 4, 1}, 0, 0x80000000);
    EXPECT_EQ(image.pixel(0, 0), 0x80000000U);
    EXPECT_EQ(image.pixel(1, 0), 0xFF7F7F7FU);
}

TEST_F(QtShapePainterText, IsMeasuredInPoints)
{
    const auto one = painter.textSize("zoom", medium11);
    const auto two = painter.textSize("zoomzoom", medium11);
    EXPECT_GT(one.width, 15);
    EXPECT_LT(one.width, 45);
    EXPECT_NEAR(two.width, 2 * one.width, 2);
    EXPECT_GE(one.height, 11);
    EXPECT_LE(one.height, 18);
    EXPECT_EQ(two.height, one.height);
    EXPECT_NEAR(painter.textSize("zoom", {.size = 22, .weight = FontWeight::medium}).width, 2 * one.width, 4);
    EXPECT_EQ(painter.textSize("", medium11).width, 0);
    EXPECT_GT(painter.textSize("a       b", medium11).width, painter.textSize("a b", medium11).width + 6);
}

// Not every font has all weights, but none is alike in two sizes, and all have a bold one.
TEST_F(QtShapePainterText, HasItsSizeAndItsWeight)
{
    const auto fontOf = [](int pixels, QFont::Weight weight) {
        auto font = QGuiApplication::font();
        font.setPixelSize(pixels);
        font.setWeight(weight);
        font.setStyleStrategy(QFont::NoSubpixelAntialias);
        return font;
    };
    const auto drawnWith = [](const QFont& font) {
        auto image = cleared(200, 30);
        QImage target(reinterpret_cast<uchar*>(image.pixels().data()), 200, 30, QImage::Format_ARGB32_Premultiplied);
        QPainter text(&target);
        text.setRenderHint(QPainter::Antialiasing);
        text.setFont(font);
        text.setPen(Qt::white);
        text.drawText(QPointF(5, 5 + QFontMetricsF(font).ascent()), "zoom size");
        return image;
    };
    auto drawn = cleared(200, 30);
    painter.drawText({drawn, 1}, {5, 5}, "zoom size", medium11, 0xFFFFFFFF);
    EXPECT_EQ(drawn, drawnWith(fontOf(11, QFont::Medium)));
    EXPECT_NE(drawn, drawnWith(fontOf(11, QFont::Bold)));
    EXPECT_NE(drawn, drawnWith(fontOf(10, QFont::Medium)));
    EXPECT_NE(drawn, drawnWith(fontOf(12, QFont::Medium)));
    const auto widthWith = [](const QFont& font) { return QFontMetricsF(font).horizontalAdvance("zoom size"); };
    const auto measured = painter.textSize("zoom size", medium11).width;
    EXPECT_EQ(measured, widthWith(fontOf(11, QFont::Medium)));
    EXPECT_NE(measured, widthWith(fontOf(11, QFont::Bold)));
    EXPECT_LT(widthWith(fontOf(10, QFont::Medium)), measured);
    EXPECT_GT(widthWith(fontOf(12, QFont::Medium)), measured);
}

TEST_F(QtShapePainterText, LiesInTheBoxThatIsMeasured)
{
    for (const double scale : {1.0, 1.5, 2.0}) {
        auto image = cleared(static_cast<int>(200 * scale), static_cast<int>(60 * scale));
        painter.drawText({image, scale}, {20, 20}, "1 / 2  size", medium11, white95);
        const auto box = painter.textSize("1 / 2  size", medium11);
        const auto drawn = extent(image);
        EXPECT_GE(drawn.x, 19 * scale);
        EXPECT_LE(drawn.x, 24 * scale);
        EXPECT_NEAR(drawn.x + drawn.width, (20 + box.width) * scale, 4 * scale);
        EXPECT_GE(drawn.y, 20 * scale);
        EXPECT_LE(drawn.y + drawn.height, (20 + box.height) * scale);
        EXPECT_GE(drawn.height, 7 * scale);
    }
}

TEST_F(QtShapePainterText, HasNoColouredFringes)
{
    auto image = cleared(200, 30);
    painter.drawText({image, 1}, {5, 5}, "1 / 2  size       \u2039 \u203A  zoom", medium11, white95);
    std::uint32_t brightest = 0;
    for (const auto pixel : image.pixels()) {
        ASSERT_EQ(pixel, alphaOf(pixel) * 0x01010101U);
        brightest = std::max(brightest, alphaOf(pixel));
    }
    EXPECT_GT(brightest, 0xC0U);
    EXPECT_LE(brightest, 0xF2U);
}

TEST_F(QtShapePainterText, ReadsUtf8)
{
    const auto drawn = [this](std::string_view text) {
        auto image = cleared(60, 30);
        painter.drawText({image, 2}, {5, 0}, text, medium11, white95);
        return image;
    };
    EXPECT_EQ(painter.textSize("\u2039", medium11).width, painter.textSize("\u203A", medium11).width);
    EXPECT_NE(drawn("\u2039"), drawn("\u203A"));
    EXPECT_NE(drawn("\u2039"), drawn("?"));
    EXPECT_EQ(drawn("zoom"), drawn("zoom"));
}

}  // namespace
}  // namespace Platform
