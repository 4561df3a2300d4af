#include "Platform/X11/Capture/StraightReading.h"

#include "X11/Capture/PainterFixture.h"

namespace CaptureTests {
namespace {

using namespace Platform::X11;
using Pixels = std::vector<std::uint32_t>;

class StraightReading : public PainterFixture {
protected:
    static PaintStep onScreen(const DeviceRect& area)
    {
        PaintStep step;
        step.isOnScreen = true;
        step.area = area;
        return step;
    }

    StraightReading() : PainterFixture(CanvasMemory::servers) { }

    // Nothing where the steps have to be painted.
    Pixels read(const std::vector<PaintStep>& steps, const DeviceRect& area)
    {
        m_desktop.sync();
        m_images.begin(0);
        const auto picture = addStraight(*m_captureServer, m_painter, m_images, steps, area);
        EXPECT_TRUE(m_images.read());
        Pixels pixels;
        if (picture) {
            for (const auto pixel : m_images.pixels(*picture))
                pixels.push_back(pixel & 0xffffff);
        }
        return pixels;
    }

    static constexpr std::uint32_t red = 0xff0000;
    static constexpr std::uint32_t green = 0x00ff00;
    static constexpr std::uint32_t blue = 0x0000ff;
};

TEST_F(StraightReading, PutsARowTogether)
{
    window(green, {0, 0, 320, 200});
    const auto hidden = window(blue, {20, 0, 20, 20});
    window(red, {22, 10, 1, 1});
    EXPECT_EQ(read({onScreen({20, 10, 2, 1}), onScreen({23, 10, 1, 1}), stepFor(hidden, {22, 10, 1, 1}, {2, 10})}, {20, 10, 4, 1}),
        (Pixels{blue, blue, blue, blue}));
    EXPECT_EQ(
        read({onScreen({18, 10, 4, 1}), stepFor(hidden, {22, 10, 2, 1}, {2, 10})}, {18, 10, 6, 1}), (Pixels{green, green, blue, blue, blue, blue}));
}

TEST_F(StraightReading, PutsAColumnTogether)
{
    const auto upper = window(red, {0, 0, 10, 10});
    const auto lower = window(blue, {0, 10, 10, 10});
    EXPECT_EQ(read({stepFor(lower, {5, 10, 1, 2}, {5, 0}), stepFor(upper, {5, 8, 1, 2}, {5, 8})}, {5, 8, 1, 4}), (Pixels{red, red, blue, blue}));
    // Rows of several pixels too.
    EXPECT_EQ(read({stepFor(lower, {5, 10, 2, 1}, {5, 0}), stepFor(upper, {5, 9, 2, 1}, {5, 9})}, {5, 9, 2, 2}), (Pixels{red, red, blue, blue}));
}

TEST_F(StraightReading, ReadsAPartOfAWindow)
{
    Image pattern(4, 2);
    for (std::uint32_t i = 0; i < 8; ++i)
        pattern.pixels()[i] = i;
    const auto id = window(red, {100, 50, 4, 2});
    m_desktop.setPatternBackground(id, pattern, false);
    EXPECT_EQ(read({stepFor(id, {101, 50, 2, 2}, {1, 0})}, {101, 50, 2, 2}), (Pixels{1, 2, 5, 6}));
}

TEST_F(StraightReading, ReadsSeveralPicturesAtOnce)
{
    const auto left = stepFor(window(red, {0, 0, 10, 10}), {0, 0, 3, 1});
    const auto right = stepFor(window(blue, {10, 0, 10, 10}), {10, 0, 2, 2});
    m_desktop.sync();
    m_images.begin(0);
    const auto first = addStraight(*m_captureServer, m_painter, m_images, {&left, 1}, left.area);
    const auto second = addStraight(*m_captureServer, m_painter, m_images, {&right, 1}, right.area);
    ASSERT_TRUE(first && second && m_images.read());
    EXPECT_EQ(m_images.pixels(*first).size(), 3U);
    EXPECT_EQ(m_images.pixels(*first)[2] & 0xffffff, red);
    EXPECT_EQ(m_images.pixels(*second).size(), 4U);
    EXPECT_EQ(m_images.pixels(*second)[3] & 0xffffff, blue);
}

TEST_F(StraightReading, LeavesToBePaintedWhatIsNotThereAsItIsWanted)
{
    const auto id = window(red, {0, 0, 20, 20});
    const auto step = stepFor(id, {0, 0, 4, 4});
    auto blended = step;
    blended.isBlended = true;
    auto ofOtherDepth = step;
    ofOtherDepth.depth = 32;
    PaintStep background;
    background.area = step.area;
    EXPECT_EQ(read({step}, step.area), Pixels(16, red));
    EXPECT_TRUE(read({blended}, step.area).empty());
    EXPECT_TRUE(read({ofOtherDepth}, step.area).empty());
    EXPECT_TRUE(read({background}, step.area).empty());
    // Of so many parts that reading them one by one would take longer.
    std::vector<PaintStep> dots(20, stepFor(id, {0, 0, 1, 1}));
    for (std::size_t x = 0; x < dots.size(); ++x)
        dots[x].area.x = dots[x].source.x = static_cast<int>(x);
    EXPECT_TRUE(read(dots, {0, 0, 20, 1}).empty());
    // Side by side in more than one row.
    EXPECT_TRUE(read({stepFor(id, {0, 0, 2, 4}), stepFor(id, {2, 0, 2, 4}, {2, 0})}, step.area).empty());
}

}  // namespace
}  // namespace CaptureTests
