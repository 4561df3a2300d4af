// The loupe's picture with the real painter: smooth at ring, capsule and text, and hard
// everywhere else.
#include "Tarnwick/LoupePicture.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Platform/Qt/QtShapePainter.h"
#include "Support/DrawnImage.h"

namespace Tarnwick {
namespace {

Platform::Image drawn(LoupePicture& picture, const Platform::Image* sample)
{
    const auto rows = sample != nullptr ? Platform::ImageRows(*sample) : Platform::ImageRows();
    picture.show(sample != nullptr ? &rows : nullptr);
    return TestSupport::drawn(picture);
}

struct Setting {
    double diameter;
    double scale;
    int side;
};

class PaintedLoupePicture : public testing::TestWithParam<Setting> {
protected:
    // A chequerboard of two colours that the lines turn into two others.
    Platform::Image sample()
    {
        const int side = static_cast<int>(std::lround(GetParam().side * GetParam().scale));
        Platform::Image image(side, side);
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x)
                image.pixels()[static_cast<std::size_t>(y) * static_cast<std::size_t>(side) + static_cast<std::size_t>(x)] =
                    (x + y) % 2 == 0 ? 0xFF204080 : 0xFFF0E010;
        }
        return image;
    }

    // In device pixels, beyond the circle's own edge.
    double beyondCircle(int x, int y) const
    {
        const double middle = GetParam().diameter * GetParam().scale / 2;
        return std::hypot(x + 0.5 - middle, y + 0.5 - middle) - (middle - GetParam().scale);
    }

    Platform::QtShapePainter painter;
    LoupePicture picture{painter};
};

bool isCapturedColour(std::uint32_t pixel) { return pixel == 0xFF204080 || pixel == 0xFFF0E010 || pixel == 0xFFDFBF7F || pixel == 0xFF0F1FEF; }

bool isPremultiplied(std::uint32_t pixel)
{
    const auto alpha = pixel >> 24;
    return (pixel >> 16 & 0xFF) <= alpha && (pixel >> 8 & 0xFF) <= alpha && (pixel & 0xFF) <= alpha;
}

TEST_P(PaintedLoupePicture, IsHardInsideTheRingAndClearOutsideIt)
{
    const auto captured = sample();
    picture.lay(GetParam().diameter, GetParam().scale);
    const auto image = drawn(picture, &captured);
    const double scale = GetParam().scale;
    const int footer = static_cast<int>(std::floor(GetParam().diameter * scale));
    for (int y = 0; y < footer; ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const auto pixel = image.pixel(x, y);
            const double beyond = beyondCircle(x, y);
            ASSERT_TRUE(isPremultiplied(pixel)) << x << " " << y;
            if (beyond < -scale - 1) {
                ASSERT_TRUE(isCapturedColour(pixel)) << std::hex << pixel << std::dec << " at " << x << " " << y;
            }
            if (beyond > scale + 1) {
                ASSERT_EQ(pixel, 0U) << x << " " << y;
            }
        }
    }
}

TEST_P(PaintedLoupePicture, HasARingOverTheSampleAndOverNothing)
{
    Platform::Image white(1, 1);
    white.pixels()[0] = 0xFFFFFFFF;
    picture.lay(GetParam().diameter, GetParam().scale);
    const auto image = drawn(picture, &white);
    const double scale = GetParam().scale;
    const int footer = static_cast<int>(std::floor(GetParam().diameter * scale));
    const auto isNearLine = [&](int position) { return std::abs(position + 0.5 - GetParam().diameter * scale / 2) <= scale; };
    int innerPixels = 0;
    int outerPixels = 0;
    for (int y = 0; y < footer; ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const double beyond = beyondCircle(x, y);
            const auto pixel = image.pixel(x, y);
            const bool isWithinRing = std::abs(beyond) < scale - 0.8;
            if (isWithinRing && beyond < -0.8 && !isNearLine(x) && !isNearLine(y)) {
                ASSERT_EQ(pixel, 0xFF000000U | (pixel & 0xFF) * 0x010101U) << x << " " << y;
                ASSERT_NEAR(pixel & 0xFF, 0x8C, 2) << x << " " << y;
                ++innerPixels;
            }
            if (isWithinRing && beyond > 0.8) {
                ASSERT_EQ(pixel & 0xFFFFFFU, 0U) << x << " " << y;
                ASSERT_NEAR(pixel >> 24, 0x73, 2) << x << " " << y;
                ++outerPixels;
            }
            if (beyond > 0.8) {
                ASSERT_LE(pixel >> 24, 0x73U) << x << " " << y;
            }
        }
    }
    EXPECT_EQ(scale >= 2, innerPixels > 100);
    EXPECT_EQ(scale >= 2, outerPixels > 100);
}

TEST_P(PaintedLoupePicture, HasACapsuleInTheMiddleOfTheFooter)
{
    picture.lay(GetParam().diameter, GetParam().scale);
    const auto image = drawn(picture, nullptr);
    const double scale = GetParam().scale;
    const int row = static_cast<int>((GetParam().diameter + 14) * scale);
    const auto text = painter.textSize("1 / 2  size       \u2039 \u203A  zoom", {.size = 11, .weight = Platform::FontWeight::medium});
    const double left = (GetParam().diameter - text.width - 24) / 2 * scale;
    if (left > 1) {
        EXPECT_EQ(image.pixel(static_cast<int>(left) - 1, row), 0U);
        EXPECT_EQ(image.pixel(static_cast<int>(GetParam().diameter * scale - left) + 1, row), 0U);
    }
    const int inside = static_cast<int>(std::max(left, 0.0) + 3 * scale);
    EXPECT_GE(image.pixel(inside, row) >> 24, 0x9EU);
    const int gap =
        static_cast<int>(left + (12 + painter.textSize("1 / 2  size   ", {.size = 11, .weight = Platform::FontWeight::medium}).width) * scale);
    EXPECT_EQ(image.pixel(gap, row), 0x9E000000U);
}

INSTANTIATE_TEST_SUITE_P(Settings, PaintedLoupePicture,
    testing::Values(Setting{220, 1, 55}, Setting{220, 2, 55}, Setting{220, 1.5, 55}, Setting{120, 1, 3}, Setting{120, 2, 29}, Setting{400, 1, 399},
        Setting{130, 1.25, 31}, Setting{400, 3, 399}));

// The circle ends at 161.25, before the middle of the pixel there.
TEST(PaintedLoupePictureRim, ShowsTheSampleInAPixelThatItCoversInPart)
{
    Platform::QtShapePainter painter;
    LoupePicture picture(painter);
    picture.lay(130, 1.25);
    Platform::Image white(3, 3);
    std::fill(white.pixels().begin(), white.pixels().end(), 0xFFFFFFFF);
    const auto pixel = drawn(picture, &white).pixel(161, 80);
    EXPECT_NEAR(pixel & 0xFF, 35, 3);
    EXPECT_NEAR(pixel >> 24, 0x73 + 35, 4);
}

TEST(PaintedLoupePictureSizes, AreSurvivedHoweverOdd)
{
    Platform::QtShapePainter painter;
    LoupePicture picture(painter);
    Platform::Image sample(3, 3);
    for (const double diameter : {0.001, 1.0, 2.001, 3.0, 12.5, 1e4, 1e9, 1e18}) {
        picture.lay(diameter, 1);
        EXPECT_LE(drawn(picture, &sample).pixels().size(), 2048U * 2048U) << diameter;
    }
}

}  // namespace
}  // namespace Tarnwick
