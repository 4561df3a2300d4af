#include "Platform/X11/Capture/Region.h"

#include <gtest/gtest.h>

#include <random>

namespace CaptureTests {
namespace {

using Platform::X11::DeviceRect;
using Platform::X11::Region;

std::vector<DeviceRect> rectsOf(const Region& region) { return {region.rects().begin(), region.rects().end()}; }

TEST(Region, LeavesAFrameAroundAHole)
{
    Region region;
    region.add({0, 0, 10, 10});
    region.subtract({2, 3, 4, 5});
    EXPECT_EQ(rectsOf(region), (std::vector<DeviceRect>{{0, 0, 10, 3}, {0, 3, 2, 5}, {6, 3, 4, 5}, {0, 8, 10, 2}}));
}

TEST(Region, IsEmptyWhenAllIsSubtracted)
{
    Region region;
    region.add({0, 0, 10, 1});
    region.subtract({-5, -5, 10, 10});
    region.subtract({5, 0, 5, 1});
    EXPECT_TRUE(region.isEmpty());
}

TEST(Region, IgnoresEmptyRectangles)
{
    Region region;
    region.add({0, 0, 0, 10});
    region.add({0, 0, 10, -1});
    EXPECT_TRUE(region.isEmpty());
}

TEST(Region, CountsOverlappingPartsOnce)
{
    Region region;
    region.add({0, 0, 10, 10});
    region.add({5, 5, 10, 10});
    long pixels = 0;
    for (const auto& rect : region.rects())
        pixels += long{rect.width} * rect.height;
    EXPECT_EQ(pixels, 175);
}

TEST(Region, EnclosesWhatItsPartsHoldTogether)
{
    Region region;
    region.add({0, 0, 5, 10});
    region.add({5, 0, 5, 10});
    EXPECT_TRUE(region.encloses({2, 2, 6, 6}));
    EXPECT_FALSE(region.encloses({2, 2, 9, 6}));
}

TEST(Region, HoldsTheSamePixelsAsAMapOfThem)
{
    std::mt19937 generator(7);
    const auto random = [&](int from, int to) { return std::uniform_int_distribution<int>(from, to)(generator); };
    Region region;
    bool held[30][30] = {};
    for (int step = 0; step < 500; ++step) {
        const DeviceRect rect = {random(-5, 29), random(-5, 29), random(0, 15), random(0, 15)};
        const bool isAdded = random(0, 2) == 0;
        isAdded ? region.add(rect) : region.subtract(rect);
        for (int y = 0; y < 30; ++y) {
            for (int x = 0; x < 30; ++x) {
                held[y][x] = rect.contains({x, y}) ? isAdded : held[y][x];
                ASSERT_EQ(region.contains({x, y}), held[y][x]) << step;
            }
        }
    }
}

}  // namespace
}  // namespace CaptureTests
