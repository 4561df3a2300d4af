#include "Tarnwick/ColourInversion.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Tarnwick {
namespace {

std::uint32_t inverted(std::uint32_t pixel)
{
    Platform::Image image(1, 1);
    image.pixels()[0] = pixel;
    invertColours(image);
    return image.pixel(0, 0);
}

TEST(ColourInversion, InvertsOpaqueColours)
{
    EXPECT_EQ(inverted(0xFF000000), 0xFFFFFFFF);
    EXPECT_EQ(inverted(0xFFFFFFFF), 0xFF000000);
    EXPECT_EQ(inverted(0xFF336699), 0xFFCC9966);
    EXPECT_EQ(inverted(0xFFFF0001), 0xFF00FFFE);
}

TEST(ColourInversion, KeepsAlphaAndTheMultipliedForm)
{
    EXPECT_EQ(inverted(0x80402000), 0x80406080);
    EXPECT_EQ(inverted(0x80800040), 0x80008040);
    EXPECT_EQ(inverted(0x01010001), 0x01000100);
}

TEST(ColourInversion, LeavesTransparentPixelsTransparent) { EXPECT_EQ(inverted(0x00000000), 0x00000000U); }

TEST(ColourInversion, InvertsEveryPixelOfAnyLength)
{
    for (const int width : {1, 3, 4, 15, 16, 17, 1919}) {
        Platform::Image image(width, 1);
        std::fill(image.pixels().begin(), image.pixels().end(), 0xFF102030);
        invertColours(image);
        EXPECT_EQ(std::count(image.pixels().begin(), image.pixels().end(), 0xFFEFDFCF), width);
    }
}

TEST(ColourInversion, TakesAnEmptyImage)
{
    Platform::Image image;
    invertColours(image);
    EXPECT_TRUE(image.isEmpty());
}

}  // namespace
}  // namespace Tarnwick
