#include "Tarnwick/ScreenGeometry.h"

#include <gtest/gtest.h>

#include <array>

namespace Tarnwick {
namespace {

using Platform::Rect;

const std::array<Platform::Screen, 3> screens = {{
    {"MAIN", {0, 0, 1920, 1080}, 1},
    {"SIDE", {1920, 56, 1280, 1024}, 2},
    {"BELOW", {100, -600, 800, 600}, 1.5},
}};

TEST(ScreenGeometry, FindsTheScreenThatHoldsAPoint)
{
    EXPECT_EQ(screenAt(screens, {0, 0})->name, "MAIN");
    EXPECT_EQ(screenAt(screens, {1919.5, 1079.5})->name, "MAIN");
    EXPECT_EQ(screenAt(screens, {1920.5, 500})->name, "SIDE");
    EXPECT_EQ(screenAt(screens, {500, -0.5})->name, "BELOW");
}

TEST(ScreenGeometry, FindsTheNearestScreenToAPointOnNone)
{
    EXPECT_EQ(screenAt(screens, {5000, 5000})->name, "SIDE");
    EXPECT_EQ(screenAt(screens, {-10, -700})->name, "BELOW");
    EXPECT_EQ(screenAt(screens, {-10, -20})->name, "MAIN");
}

TEST(ScreenGeometry, FindsNoScreenWhereThereIsNone) { EXPECT_EQ(screenAt({}, {0, 0}), nullptr); }

TEST(ScreenGeometry, BoundsTheDesktopFromThePrimaryScreensTopLeft)
{
    EXPECT_EQ(desktopBounds(screens), (Rect{0, 0, 3200, 1680}));
    const std::array<Platform::Screen, 2> leftAndAbove = {{{"MAIN", {0, 0, 1920, 1080}, 1}, {"SIDE", {-1280, 300, 1280, 1024}, 1}}};
    EXPECT_EQ(desktopBounds(leftAndAbove), (Rect{-1280, -244, 3200, 1324}));
    EXPECT_EQ(desktopBounds({}), (Rect{0, 0, 0, 0}));
}

TEST(ScreenGeometry, IntersectsRectangles)
{
    EXPECT_EQ(intersection({0, 0, 10, 10}, {5, -5, 10, 8}), (Rect{5, 0, 5, 3}));
    EXPECT_EQ(intersection({0, 0, 10, 10}, {2, 3, 4, 5}), (Rect{2, 3, 4, 5}));
    EXPECT_EQ(intersection({0, 0, 10, 10}, {20, 0, 5, 5}).width, 0);
    EXPECT_EQ(intersection({0, 0, 10, 10}, {0, -20, 5, 5}).height, 0);
}

}  // namespace
}  // namespace Tarnwick
