#include "Tarnwick/LoupePicture.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

#include "Support/AllocationCounter.h"
#include "Support/DrawnImage.h"
#include "Support/FakeShapePainter.h"
#include "Tarnwick/NumberedImage.h"

namespace Tarnwick {
namespace {

using Platform::Image;
using TestSupport::drawn;
using Lines = std::vector<std::string>;

constexpr std::uint32_t backdrop = 0x26000000;
constexpr std::uint32_t ring = 0x73000000;

Image imageOf(int width, std::vector<std::uint32_t> pixels)
{
    Image image(width, static_cast<int>(pixels.size()) / width);
    std::copy(pixels.begin(), pixels.end(), image.pixels().begin());
    return image;
}

class LoupePictureTest : public testing::Test {
protected:
    // The first rows, a character for each pixel.
    Lines rows(const Image& image, int count, const std::map<std::uint32_t, char>& legend)
    {
        Lines lines;
        for (int y = 0; y < count; ++y) {
            std::string line;
            for (int x = 0; x < image.width(); ++x) {
                const auto known = legend.find(image.pixel(x, y));
                line += known != legend.end() ? known->second : '?';
            }
            lines.push_back(line);
        }
        return lines;
    }

    // Valid until the next call.
    const Image& compose(const Image* sample, const Platform::Rect& part = LoupePicture::wholeSquare)
    {
        sampleRows = sample != nullptr ? Platform::ImageRows(*sample) : Platform::ImageRows();
        picture.show(sample != nullptr ? &sampleRows : nullptr, part);
        TestSupport::draw(picture, composed);
        return composed;
    }

    TestSupport::CallLog log;
    TestSupport::FakeShapePainter painter{log};
    LoupePicture picture{painter};
    Platform::ImageRows sampleRows;
    Image composed;
};

using LoupePictureLayout = LoupePictureTest;
using LoupePicturePixels = LoupePictureTest;

TEST_F(LoupePictureLayout, PaintsRingCapsuleAndTextOnceForASize)
{
    picture.lay(220, 1);
    EXPECT_EQ(log.lines(),
        (Lines{
            "painter.strokeEllipse 1 1 218 218 2 73000000 @1",
            "painter.textSize 11 medium 1 / 2  size       \xE2\x80\xB9 \xE2\x80\xBA  zoom",
            "painter.fillRoundedRectangle 35 222.5 150 23 11.5 9E000000 @1",
            "painter.drawText 47 227.5 11 medium F2F2F2F2 1 / 2  size       \xE2\x80\xB9 \xE2\x80\xBA  zoom @1",
            "painter.fillEllipse 1 1 218 218 FF000000 @1",
        }));
    log.clear();
    picture.lay(220, 1);
    compose(nullptr);
    const auto sample = numbered(55, 55);
    compose(&sample);
    EXPECT_TRUE(log.lines().empty());
    picture.lay(220, 2);
    EXPECT_EQ(log.count("painter.strokeEllipse 1 1 218 218 2 73000000 @2"), 1);
    picture.lay(260, 2);
    EXPECT_EQ(log.count("painter.strokeEllipse 1 1 258 258 2 73000000 @2"), 1);
}

TEST_F(LoupePictureLayout, IsTheCircleAndTheFooterInDevicePixels)
{
    picture.lay(220, 1);
    EXPECT_EQ(picture.width(), 220);
    EXPECT_EQ(picture.height(), 248);
    picture.lay(220, 1.5);
    EXPECT_EQ(picture.width(), 330);
    EXPECT_EQ(picture.height(), 372);
    EXPECT_EQ(picture.size(), (Platform::Size{220, 248}));
}

TEST_F(LoupePictureLayout, CoversAFractionOfAPixelWithAWholeOne)
{
    picture.lay(130, 1.25);
    EXPECT_EQ(picture.width(), 163);
    EXPECT_EQ(picture.height(), 198);
    EXPECT_EQ(picture.size(), (Platform::Size{130.4, 158.4}));
    picture.lay(130.2, 1);
    EXPECT_EQ(picture.size(), (Platform::Size{131, 159}));
}

TEST_F(LoupePictureLayout, CutsACapsuleThatIsWiderThanTheCircle)
{
    picture.lay(120, 1);
    EXPECT_EQ(log.count("painter.fillRoundedRectangle -15 122.5 150 23 11.5 9E000000 @1"), 1);
    EXPECT_EQ(drawn(picture).pixel(0, 124), 0x9E000000U);
    EXPECT_EQ(drawn(picture).pixel(119, 124), 0x9E000000U);
}

TEST_F(LoupePictureLayout, MakesAHugePictureCoarser)
{
    picture.lay(4068, 2);
    EXPECT_EQ(picture.height(), 2048);
    EXPECT_EQ(picture.width(), 2034);
    EXPECT_EQ(picture.size(), (Platform::Size{4068, 4096}));
    picture.lay(1e18, 1);
    EXPECT_LE(drawn(picture).pixels().size(), 2048U * 2048U);
    EXPECT_GE(picture.size().width, 0.999e18);
    const auto sample = numbered(3, 3);
    compose(&sample);
    compose(nullptr);
}

TEST_F(LoupePictureLayout, HasNoCircleWhereThereIsNoRoomForOne)
{
    const auto sample = numbered(3, 3);
    for (const double diameter : {0.001, 0.5, 1.0, 2.0}) {
        log.clear();
        picture.lay(diameter, 1);
        const auto& image = compose(&sample);
        EXPECT_EQ(image.pixel(0, 0), 0U) << diameter;
        EXPECT_EQ(log.lines().size(), 3U) << diameter;
    }
    picture.lay(2.5, 1);
    compose(&sample);
    EXPECT_EQ(picture.width(), 3);
}

// The circle of diameter 6 in a picture of width 8: 12 pixels in the middle, 20 beneath
// the ring, and the ring alone around them.
TEST_F(LoupePicturePixels, StretchTheSampleIntoTheCircleWithHardEdges)
{
    constexpr std::uint32_t a = 0xFF102030;
    constexpr std::uint32_t b = 0xFF405060;
    constexpr std::uint32_t c = 0xFF708090;
    constexpr std::uint32_t d = 0xFF00FF00;
    constexpr std::uint32_t e = 0xFFFFFFFF;
    constexpr std::uint32_t f = 0xFFFF0000;
    constexpr std::uint32_t g = 0xFF000000;
    constexpr std::uint32_t h = 0xFF0000FF;
    constexpr std::uint32_t i = 0xFFC0C0C0;
    const auto sample = imageOf(3, {a, b, c, d, e, f, g, h, i});
    picture.lay(8, 1);
    // Upper case: as captured. Lower case: under the ring, 140/255 of it. Digits: inverted
    // by a centre line. Punctuation: inverted, under the ring.
    const std::map<std::uint32_t, char> legend = {{0, '.'}, {ring, 'o'}, {b, 'B'}, {d, 'D'}, {e, 'E'}, {f, 'F'}, {h, 'H'}, {0xFF09121A, 'a'},
        {0xFF232C35, 'b'}, {0xFF3D464F, 'c'}, {0xFF008C00, 'd'}, {0xFF8C0000, 'f'}, {0xFF000000, 'g'}, {0xFF00008C, 'h'}, {0xFF696969, 'i'},
        {0xFFBFAF9F, '2'}, {0xFFFF00FF, '4'}, {0xFF000000, 'g'}, {0xFF00FFFF, '6'}, {0xFFFFFF00, '8'}, {0xFF696057, '!'}, {0xFF8C008C, '$'},
        {0xFF008C8C, '%'}, {0xFF8C8C00, '&'}};
    EXPECT_EQ(rows(compose(&sample), 8, legend),
        (Lines{
            "..oooo..",
            ".oab!co.",
            "oaaB2cco",
            "odDEgFfo",
            "o$4gg6%o",
            "oggH8iio",
            ".ogh&io.",
            "..oooo..",
        }));
}

TEST_F(LoupePicturePixels, ShowOnlyBackdropLinesAndRingWithoutASample)
{
    picture.lay(8, 1);
    const std::map<std::uint32_t, char> legend = {{0, '.'}, {ring, 'o'}, {backdrop, '-'}, {0x88000000, '='}, {0xFFFFFFFF, '+'}, {0xFF8C8C8C, '#'}};
    EXPECT_EQ(rows(compose(nullptr), 8, legend),
        (Lines{
            "..oooo..",
            ".o==#=o.",
            "o==-+==o",
            "o=--+-=o",
            "o#++++#o",
            "o==-+==o",
            ".o==#=o.",
            "..oooo..",
        }));
}

TEST_F(LoupePicturePixels, ShowTheBackdropWhereTheSampleLiesOffTheScreens)
{
    picture.lay(8, 1);
    constexpr std::uint32_t white = 0xFFFFFFFF;
    const auto sample = imageOf(3, {white, white, 0, white, white, 0, white, white, 0});
    const auto& image = compose(&sample);
    EXPECT_EQ(image.pixel(3, 3), white);
    EXPECT_EQ(image.pixel(5, 3), backdrop);
    EXPECT_EQ(image.pixel(5, 4), 0xFFFFFFFFU);
    EXPECT_EQ(image.pixel(3, 4), 0xFF000000U);
}

TEST_F(LoupePicturePixels, ForgetTheFormerSample)
{
    picture.lay(8, 1);
    const auto sample = imageOf(1, {0xFF123456});
    EXPECT_EQ(compose(&sample).pixel(3, 3), 0xFF123456U);
    EXPECT_EQ(compose(nullptr).pixel(3, 3), backdrop);
    const auto transparent = imageOf(1, {0});
    compose(&sample);
    EXPECT_EQ(compose(&transparent).pixel(3, 3), backdrop);
    picture.lay(9, 1);
    EXPECT_EQ(compose(&sample).pixel(3, 3), 0xFF123456U);
}

TEST_F(LoupePicturePixels, ShowAPartOfTheSquareInItsPlace)
{
    picture.lay(14, 1);
    constexpr std::uint32_t left = 0xFF0000AA;
    constexpr std::uint32_t right = 0xFF00BB00;
    const auto sample = imageOf(2, {left, right});
    const auto& image = compose(&sample, {0.25, 0, 0.5, 0.5});
    EXPECT_EQ(image.pixel(3, 6), backdrop);
    EXPECT_EQ(image.pixel(4, 6), left);
    EXPECT_EQ(image.pixel(6, 6), left);
    EXPECT_EQ(image.pixel(8, 6), right);
    EXPECT_EQ(image.pixel(9, 6), right);
    EXPECT_EQ(image.pixel(10, 6), backdrop);
    EXPECT_EQ(image.pixel(7, 5), 0xFFFF44FFU);
    EXPECT_EQ(image.pixel(4, 7), 0xFFFFFFFFU);
    EXPECT_EQ(image.pixel(5, 8), backdrop);
}

TEST_F(LoupePicturePixels, ChangeWithTheSizeOfTheSample)
{
    picture.lay(20, 1);
    const auto coarse = numbered(3, 3);
    const auto fine = numbered(9, 9);
    EXPECT_EQ(compose(&coarse).pixel(8, 8), 0xFF001001U);
    EXPECT_EQ(compose(&fine).pixel(8, 8), 0xFF003003U);
    EXPECT_EQ(compose(&coarse).pixel(8, 8), 0xFF001001U);
}

TEST_F(LoupePicturePixels, HaveLinesOfOnePointOnWholeDevicePixels)
{
    struct Expected {
        double diameter;
        double scale;
        int first;
        int last;
    };
    for (const auto& [diameter, scale, first, last] :
        {Expected{220, 1, 110, 110}, {220, 2, 219, 220}, {220, 1.5, 164, 165}, {130, 1.25, 81, 81}, {12.5, 1, 6, 6}, {220, 3, 329, 331}}) {
        picture.lay(diameter, scale);
        const auto& image = compose(nullptr);
        const int row = image.width() / 4;
        const int column = image.width() / 4;
        for (int i = first - 2; i <= last + 2; ++i) {
            const auto expected = i >= first && i <= last ? 0xFFFFFFFFU : backdrop;
            EXPECT_EQ(image.pixel(i, row), expected) << diameter << " " << scale << " column " << i;
            EXPECT_EQ(image.pixel(column, i), expected) << diameter << " " << scale << " row " << i;
        }
    }
}

TEST_F(LoupePicturePixels, InvertBeneathBothLinesOnce)
{
    picture.lay(40, 2);
    const auto sample = imageOf(1, {0xFF204060});
    const auto& image = compose(&sample);
    EXPECT_EQ(image.pixel(39, 39), 0xFFDFBF9FU);
    EXPECT_EQ(image.pixel(40, 40), 0xFFDFBF9FU);
    EXPECT_EQ(image.pixel(39, 20), 0xFFDFBF9FU);
    EXPECT_EQ(image.pixel(20, 40), 0xFFDFBF9FU);
    EXPECT_EQ(image.pixel(38, 38), 0xFF204060U);
}

TEST_F(LoupePicturePixels, LeaveTheFooterAsItWasPainted)
{
    picture.lay(220, 1);
    const auto before = drawn(picture);
    const auto sample = numbered(55, 55);
    const auto& after = compose(&sample);
    for (int y = 220; y < 248; ++y) {
        for (int x = 0; x < 220; ++x)
            ASSERT_EQ(after.pixel(x, y), before.pixel(x, y)) << x << " " << y;
    }
    EXPECT_EQ(before.pixel(0, 234), 0U);
    EXPECT_EQ(before.pixel(40, 234), 0x9E000000U);
}

TEST_F(LoupePicturePixels, AreAllWrittenWhateverTheMemoryHeld)
{
    const auto sample = numbered(55, 55);
    for (const auto& [diameter, scale] : {std::pair{0.5, 1.0}, {2.5, 1.0}, {12.5, 1.0}, {120.0, 1.25}, {220.0, 2.0}, {0.5, 2.0}}) {
        picture.lay(diameter, scale);
        const Platform::ImageRows rowsOfSample(sample);
        for (const Platform::PixelRows* shown :
            {static_cast<const Platform::PixelRows*>(&rowsOfSample), static_cast<const Platform::PixelRows*>(nullptr)}) {
            picture.show(shown);
            const auto count = static_cast<std::size_t>(picture.width()) * static_cast<std::size_t>(picture.height());
            std::vector<std::uint32_t> onZero(count, 0);
            std::vector<std::uint32_t> onOther(count, 0x12345678);
            picture.draw(onZero);
            picture.draw(onOther);
            EXPECT_EQ(onZero, onOther) << diameter << " " << scale;
        }
    }
}

TEST_F(LoupePicturePixels, HaveTheSameAlphaWhereTheirNumberIsTheSame)
{
    const auto opaque = numbered(55, 55);
    const auto dark = imageOf(1, {0xFF000000});
    auto cornered = opaque;
    cornered.pixels()[54] = 0;
    auto holed = opaque;
    holed.pixels()[20 * 55 + 20] = 0;
    std::vector<std::uint8_t> alphas;
    std::uint64_t number = 0;
    int sameNumbers = 0;
    const auto check = [&](const Image* sample, const Platform::Rect& part = LoupePicture::wholeSquare) {
        std::vector<std::uint8_t> alphasNow;
        for (const auto pixel : compose(sample, part).pixels())
            alphasNow.push_back(static_cast<std::uint8_t>(pixel >> 24));
        EXPECT_NE(picture.alphaNumber(), 0U);
        if (std::exchange(number, picture.alphaNumber()) == picture.alphaNumber()) {
            ++sameNumbers;
            EXPECT_EQ(alphasNow, alphas);
        }
        alphas = std::move(alphasNow);
    };
    for (const double diameter : {120, 220, 120}) {
        picture.lay(diameter, 1);
        for (const auto* sample : std::initializer_list<const Image*>{&opaque, &dark, &opaque, &holed, &opaque, &cornered, &holed, &opaque, &dark})
            check(sample);
        check(nullptr);
        check(nullptr);
        check(&opaque, {0.25, 0, 0.5, 0.5});
        check(nullptr);
        check(&opaque);
    }
    // From one that is all opaque to the next one, and from none to none.
    EXPECT_EQ(sameNumbers, 3 * 4);
}

TEST_F(LoupePicturePixels, AllocateNothingOnceTheyWereComposed)
{
    picture.lay(220, 2);
    const auto sample = numbered(110, 110);
    log.setRecording(false);
    compose(&sample);
    const TestSupport::AllocationCounter counter;
    for (int i = 0; i < 10; ++i) {
        picture.lay(220, 2);
        compose(i % 2 == 0 ? nullptr : &sample);
    }
    EXPECT_EQ(counter.count(), 0);
}

}  // namespace
}  // namespace Tarnwick
