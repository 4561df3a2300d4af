#include "Platform/Qt/Tray/TrayGlyph.h"

#include <gtest/gtest.h>

#include <QPainter>
#include <ostream>

namespace Platform {
namespace {

class TrayGlyphSizes : public testing::TestWithParam<int> { };

// What a panel of that colour shows.
QImage onPanel(const QImage& glyph, QRgb panelColour)
{
    QImage panel(glyph.size(), QImage::Format_RGB32);
    panel.fill(panelColour);
    QPainter(&panel).drawImage(0, 0, glyph);
    return panel;
}

int pixelsThatStandOut(const QImage& shown, QRgb panelColour)
{
    int count = 0;
    for (int y = 0; y < shown.height(); ++y) {
        for (int x = 0; x < shown.width(); ++x)
            count += std::abs(qGray(shown.pixel(x, y)) - qGray(panelColour)) >= 128 ? 1 : 0;
    }
    return count;
}

TEST_P(TrayGlyphSizes, HasOneStrokeOfEachColourAndNothingBetween)
{
    const auto glyph = trayGlyphImage(GetParam());
    ASSERT_EQ(glyph.size(), QSize(GetParam(), GetParam()));
    for (int y = 0; y < glyph.height(); ++y) {
        for (int x = 0; x < glyph.width(); ++x) {
            const auto pixel = glyph.pixel(x, y);
            EXPECT_TRUE(pixel == 0 || pixel == 0xffffffff || pixel == 0xff2b2b2b) << x << "," << y << " " << std::hex << pixel;
        }
    }
}

TEST_P(TrayGlyphSizes, LooksTheSameFromAllSides)
{
    const auto glyph = trayGlyphImage(GetParam());
    EXPECT_EQ(glyph.mirrored(true, false), glyph);
    EXPECT_EQ(glyph.mirrored(false, true), glyph);
    EXPECT_EQ(glyph.transformed(QTransform().rotate(90)), glyph);
}

TEST_P(TrayGlyphSizes, HasAPlusInTheMiddleApartFromItsFourCorners)
{
    const int size = GetParam();
    const auto glyph = trayGlyphImage(size);
    EXPECT_EQ(glyph.pixel(size / 2, size / 2), 0xffffffff);
    EXPECT_EQ(glyph.pixel(size / 12, size / 12), 0xffffffff);
    EXPECT_EQ(glyph.pixel(size / 2, 0), 0U);
    // Out from the middle: the plus, its outline, nothing.
    int x = size / 2;
    while (glyph.pixel(x, size / 2) == 0xffffffff)
        ++x;
    EXPECT_GT(x, size / 2 + 1);
    EXPECT_EQ(glyph.pixel(x, size / 2), 0xff2b2b2b);
    EXPECT_EQ(glyph.pixel(size - 1, size / 2), 0U);
}

TEST_P(TrayGlyphSizes, StandsOutOnDarkAndLightPanels)
{
    const auto glyph = trayGlyphImage(GetParam());
    const int fifth = GetParam() * GetParam() / 5;
    EXPECT_GT(pixelsThatStandOut(onPanel(glyph, 0xff202020), 0xff202020), fifth);
    EXPECT_GT(pixelsThatStandOut(onPanel(glyph, 0xfff5f5f5), 0xfff5f5f5), fifth);
}

INSTANTIATE_TEST_SUITE_P(Usual, TrayGlyphSizes, testing::Values(16, 22, 24, 32, 48));

TEST(TrayGlyph, IsOnTheGridOfTheSvgAtItsSmallest)
{
    const auto glyph = trayGlyphImage(16);
    EXPECT_EQ(glyph.pixel(0, 0), 0xff2b2b2b);
    EXPECT_EQ(glyph.pixel(1, 1), 0xffffffff);
    EXPECT_EQ(glyph.pixel(5, 2), 0xffffffff);
    EXPECT_EQ(glyph.pixel(6, 2), 0xff2b2b2b);
    EXPECT_EQ(glyph.pixel(7, 2), 0U);
    EXPECT_EQ(glyph.pixel(7, 5), 0xffffffff);
    EXPECT_EQ(glyph.pixel(7, 4), 0xff2b2b2b);
    EXPECT_EQ(glyph.pixel(10, 8), 0xffffffff);
    EXPECT_EQ(glyph.pixel(11, 8), 0xff2b2b2b);
}

TEST(TrayGlyph, ComesInTheSizesThatPanelsAskFor)
{
    const auto sizes = trayGlyphIcon().availableSizes();
    for (const int size : {16, 22, 24, 32, 48, 96})
        EXPECT_TRUE(sizes.contains(QSize(size, size))) << size;
}

}  // namespace
}  // namespace Platform
