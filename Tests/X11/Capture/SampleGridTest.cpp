#include "Platform/X11/Capture/SampleGrid.h"

#include <gtest/gtest.h>

namespace CaptureTests {
namespace {

using namespace Platform;
using namespace Platform::X11;

// A screen of 20 x 10 device pixels, each of which holds its own number.
class SampleGrid : public testing::Test {
protected:
    bool lay(const Rect& rect, double scale = 1, CaptureResolution resolution = CaptureResolution::nominal)
    {
        m_layout = MonitorLayout({{"MAIN", m_root, scale}});
        return m_grid.lay(m_layout, m_root, rect, resolution);
    }

    std::vector<std::uint32_t> fill()
    {
        const auto& area = m_grid.area();
        std::vector<std::uint32_t> pixels;
        for (int y = area.y; y < area.bottom(); ++y) {
            for (int x = area.x; x < area.right(); ++x)
                pixels.push_back(static_cast<std::uint32_t>(y * 100 + x));
        }
        m_grid.fill(m_layout, pixels, m_image);
        std::vector<std::uint32_t> numbers(m_image.pixels().begin(), m_image.pixels().end());
        for (auto& number : numbers)
            number = number == 0 ? nothing : number & 0xffffff;
        return numbers;
    }
    using Numbers = std::vector<std::uint32_t>;

    static constexpr std::uint32_t nothing = 9999;
    static constexpr DeviceRect m_root = {0, 0, 20, 10};
    MonitorLayout m_layout;
    Platform::X11::SampleGrid m_grid;
    Image m_image;
};

TEST_F(SampleGrid, TakesEveryPixelAtScaleOne)
{
    ASSERT_TRUE(lay({3, 4, 3, 2}));
    EXPECT_EQ(m_grid.area(), (DeviceRect{3, 4, 3, 2}));
    EXPECT_EQ(fill(), (Numbers{403, 404, 405, 503, 504, 505}));
    EXPECT_EQ(m_image.pixel(0, 0), 0xff000000U + 403);
}

TEST_F(SampleGrid, ForgetsThePlaceTheSizeAndTheScaleOfTheFormerRectangle)
{
    ASSERT_TRUE(lay({3, 4, 3, 2}));
    ASSERT_TRUE(lay({5, 1, 3, 2}));
    EXPECT_EQ(fill(), (Numbers{105, 106, 107, 205, 206, 207}));
    ASSERT_TRUE(lay({5, 1, 2, 1}));
    EXPECT_EQ(fill(), (Numbers{105, 106}));
    ASSERT_TRUE(lay({2, 1, 2, 1}, 2));
    EXPECT_EQ(fill(), (Numbers{204, 206}));
    ASSERT_TRUE(lay({5, 1, 2, 1}));
    EXPECT_EQ(fill(), (Numbers{105, 106}));
}

TEST_F(SampleGrid, TakesTheNearestPixelOfEachPointAtScaleOneAndAHalf)
{
    ASSERT_TRUE(lay({0, 0, 4, 1}, 1.5));
    EXPECT_EQ(m_grid.area(), (DeviceRect{0, 0, 6, 1}));
    EXPECT_EQ(fill(), (Numbers{0, 2, 3, 5}));
    ASSERT_TRUE(lay({0, 0, 4, 1}, 1.5, CaptureResolution::best));
    EXPECT_EQ(fill(), (Numbers{0, 1, 2, 3, 4, 5, 100, 101, 102, 103, 104, 105}));
}

TEST_F(SampleGrid, RoundsTheNumberOfPointsHalvesUp)
{
    ASSERT_TRUE(lay({0, 0, 2.5, 1}, 2));
    EXPECT_EQ(fill(), (Numbers{0, 2, 4}));
    ASSERT_TRUE(lay({0, 0, 2.4, 1}, 2));
    EXPECT_EQ(fill(), (Numbers{0, 2}));
}

TEST_F(SampleGrid, TakesNoPixelBeyondTheRectangle)
{
    ASSERT_TRUE(lay({0.5, 0, 1.5, 1}));
    EXPECT_EQ(m_grid.area(), (DeviceRect{1, 0, 1, 1}));
    EXPECT_EQ(fill(), (Numbers{1, 1}));
}

TEST_F(SampleGrid, GivesLessThanAPointOnePixel)
{
    ASSERT_TRUE(lay({2, 1, 0.4, 0.4}, 2));
    EXPECT_EQ(fill(), (Numbers{204}));
}

TEST_F(SampleGrid, IsOfNoUseWithoutPixels)
{
    EXPECT_FALSE(lay({2.1, 1, 0.2, 5}));
    EXPECT_FALSE(lay({2, 1.1, 5, 0.2}));
    EXPECT_FALSE(lay({2, 1, 0, 5}));
    EXPECT_FALSE(lay({2, 1, 70000, 70000}));
    EXPECT_TRUE(lay({2, 1, 0.4, 5}, 2));
}

TEST_F(SampleGrid, LeavesOutWhatLiesOffTheScreen)
{
    ASSERT_TRUE(lay({18, 9, 4, 2}));
    EXPECT_EQ(m_grid.area(), (DeviceRect{18, 9, 2, 1}));
    EXPECT_EQ(fill(), (Numbers{918, 919, nothing, nothing, nothing, nothing, nothing, nothing}));
    ASSERT_TRUE(lay({-2, -1, 3, 2}));
    EXPECT_EQ(m_grid.area(), (DeviceRect{0, 0, 1, 1}));
    ASSERT_TRUE(lay({50, 50, 2, 1}));
    EXPECT_TRUE(m_grid.area().isEmpty());
    EXPECT_EQ(fill(), (Numbers{nothing, nothing}));
}

TEST_F(SampleGrid, LeavesOutWhatLiesOnNoMonitor)
{
    m_layout = MonitorLayout({{"MAIN", {0, 0, 10, 10}, 1}, {"SIDE", {12, 0, 8, 5}, 1}});
    ASSERT_TRUE(m_grid.lay(m_layout, m_root, {8, 4, 6, 2}, CaptureResolution::nominal));
    EXPECT_EQ(fill(), (Numbers{408, 409, nothing, nothing, 412, 413, 508, 509, nothing, nothing, nothing, nothing}));
}

}  // namespace
}  // namespace CaptureTests
