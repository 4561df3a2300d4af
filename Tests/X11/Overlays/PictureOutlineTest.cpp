#include "Platform/X11/Overlays/PictureOutline.h"

#include <gtest/gtest.h>

#include <array>

namespace OverlayTests {
namespace {

using Pixels = std::vector<std::uint32_t>;
using Rectangles = std::vector<std::array<int, 4>>;

constexpr std::uint32_t set = 0xff808080;

class PictureOutline : public testing::Test {
protected:
    Rectangles rectangles() const
    {
        Rectangles all;
        for (const auto& [x, y, width, height] : m_outline.rectangles())
            all.push_back({x, y, width, height});
        return all;
    }

    Platform::X11::PictureOutline m_outline;
};

TEST_F(PictureOutline, IsOneRectangleForAPictureWithoutHoles)
{
    EXPECT_TRUE(m_outline.take(Pixels(12, set), 4));
    EXPECT_EQ(rectangles(), (Rectangles{{0, 0, 4, 3}}));
}

TEST_F(PictureOutline, JoinsRowsThatAreAlikeAndKeepsTheOthersApart)
{
    m_outline.take(Pixels{0, set, set, 0,  //
                       0, set, set, 0,     //
                       set, 0, 0, set,     //
                       0, 0, 0, 0,         //
                       set, 0, 0, set,     //
                       set, 0, 0, set},
        4);
    EXPECT_EQ(rectangles(), (Rectangles{{1, 0, 2, 2}, {0, 2, 1, 1}, {3, 2, 1, 1}, {0, 4, 1, 2}, {3, 4, 1, 2}}));
}

TEST_F(PictureOutline, LeavesOutWhatIsFainterThanAnEighth)
{
    m_outline.take(Pixels{0x1fffffff & 0x1f1f1f1f, 0x20000000, 0x26000000, 0x73000000}, 4);
    EXPECT_EQ(rectangles(), (Rectangles{{1, 0, 3, 1}}));
}

TEST_F(PictureOutline, TellsWhetherItIsAnotherOne)
{
    EXPECT_TRUE(m_outline.take(Pixels{0, set, set, 0}, 4));
    EXPECT_FALSE(m_outline.take(Pixels{0, 0xff000001, 0x80000000, 0x10000000}, 4));
    EXPECT_TRUE(m_outline.take(Pixels{set, set, set, 0}, 4));
    EXPECT_TRUE(m_outline.take(Pixels{set, set, set, 0}, 2));
    EXPECT_FALSE(m_outline.take(Pixels{set, set, set, 0}, 2));
    EXPECT_EQ(rectangles(), (Rectangles{{0, 0, 2, 1}, {0, 1, 1, 1}}));
}

TEST_F(PictureOutline, IsEmptyForAPictureOfNothing)
{
    m_outline.take(Pixels(4, 0), 2);
    EXPECT_EQ(rectangles(), Rectangles{});
}

TEST_F(PictureOutline, MakesPixelsOpaqueInTheColourThatTheyHave)
{
    Pixels pixels{0x80800000, 0x73000000, 0x26000000, 0x9e9e9e9e, 0xff123456, 0x40201030};
    m_outline.take(pixels, 6);
    m_outline.makeOpaque(pixels);
    EXPECT_EQ(pixels, (Pixels{0xffff0000, 0xff000000, 0xff000000, 0xffffffff, 0xff123456, 0xff8040bf}));
}

TEST_F(PictureOutline, TakesAwayWhatIsNotDrawn)
{
    Pixels pixels(40, 0xff112233);
    pixels[20] = 0x1f1f0000;
    pixels[39] = 0;
    m_outline.take(pixels, 40);
    m_outline.makeOpaque(pixels);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        EXPECT_EQ(pixels[i], i == 20 || i == 39 ? 0U : 0xff112233U) << i;
}

TEST_F(PictureOutline, ForgetsWhereALargerPictureWasTranslucent)
{
    m_outline.take(Pixels(400, 0x80800000), 40);
    Pixels pixels(40, 0xff112233);
    m_outline.take(pixels, 40);
    pixels.resize(400, 0x80800000);
    m_outline.makeOpaque(pixels);
    EXPECT_EQ(pixels[399], 0x80800000U);
}

TEST_F(PictureOutline, MakesPicturesOfTheSameAlphaOpaqueAlike)
{
    Pixels first(100, 0xff112233);
    for (const std::size_t i : {0U, 31U, 32U, 70U, 99U})
        first[i] = 0x80000000;
    Pixels second(100, 0xff445566);
    for (const std::size_t i : {0U, 31U, 32U, 70U, 99U})
        second[i] = 0x80400000;
    m_outline.take(first, 10);
    m_outline.makeOpaque(second);
    for (std::size_t i = 0; i < second.size(); ++i)
        EXPECT_EQ(second[i], i == 0 || i == 31 || i == 32 || i == 70 || i == 99 ? 0xff800000U : 0xff445566U) << i;
}

}  // namespace
}  // namespace OverlayTests
