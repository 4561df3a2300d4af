#include "Platform/X11/MonitorLayout.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Platform::X11 {
namespace {

const Monitor fullHd{"A", {0, 0, 1920, 1080}, 1};

TEST(MonitorLayout, PutsTheDesktopOriginAtThePrimarysBottomLeft)
{
    const MonitorLayout layout({fullHd, {"B", {1920, 100, 1280, 1024}, 1}});
    const auto screens = layout.screens();
    EXPECT_EQ(screens[0].frame, (Rect{0, 0, 1920, 1080}));
    EXPECT_EQ(screens[1].frame, (Rect{1920, -44, 1280, 1024}));
}

TEST(MonitorLayout, MeasuresAMonitorByItsOwnScaleAndPlacesItByThePrimarys)
{
    const MonitorLayout layout({{"A", {0, 0, 3840, 2160}, 2}, {"B", {3840, 0, 1280, 1024}, 1}});
    const auto screens = layout.screens();
    EXPECT_EQ(screens[0].frame, (Rect{0, 0, 1920, 1080}));
    EXPECT_EQ(screens[1].frame, (Rect{1920, 56, 1280, 1024}));
}

TEST(MonitorLayout, GivesThePointOfADevicePixelsTopLeftCorner)
{
    const MonitorLayout layout({fullHd, {"B", {1920, 100, 1280, 1024}, 2}});
    EXPECT_EQ(layout.desktopPoint({0, 0}), (Point{0, 1080}));
    EXPECT_EQ(layout.desktopPoint({10, 1079}), (Point{10, 1}));
    EXPECT_EQ(layout.desktopPoint({1921, 101}), (Point{1920.5, 979.5}));
}

TEST(MonitorLayout, TakesPointsOffEveryMonitorByTheNearestOne)
{
    const MonitorLayout layout({fullHd, {"B", {1920, 0, 1280, 1024}, 1}});
    EXPECT_EQ(layout.monitorAt({2000, 1050})->name, "B");
    EXPECT_EQ(layout.monitorAt({-5, -5})->name, "A");
}

TEST(MonitorLayout, AnswersWithoutMonitors)
{
    const MonitorLayout layout;
    EXPECT_EQ(layout.monitorAt({1, 1}), nullptr);
    EXPECT_EQ(layout.desktopPoint({3, 4}), (Point{3, -4}));
    EXPECT_EQ(layout.deviceRectOfCapture({1, 2, 3, 4}), (DeviceRect{1, 2, 3, 4}));
    EXPECT_TRUE(layout.screens().empty());
}

TEST(MonitorLayout, KnowsTheBoundsOfAllMonitors)
{
    EXPECT_EQ(MonitorLayout({fullHd}).bounds(), (DeviceRect{0, 0, 1920, 1080}));
    EXPECT_EQ(MonitorLayout({fullHd, {"B", {-1280, 100, 1280, 1024}, 1}}).bounds(), (DeviceRect{-1280, 0, 3200, 1124}));
    EXPECT_TRUE(MonitorLayout().bounds().isEmpty());
}

TEST(MonitorLayout, SurvivesRectanglesOfAnySize)
{
    const MonitorLayout layout({fullHd});
    const auto huge = layout.deviceRectOfDesktop({-1e300, -1e18, 2e300, 2e18});
    EXPECT_EQ(huge.width, 1 << 30);
    EXPECT_EQ(huge.height, 1 << 30);
    EXPECT_EQ(intersection(huge, {0, 0, 1920, 1080}), (DeviceRect{0, 0, 1920, 1080}));
    EXPECT_TRUE(layout.deviceRectOfDesktop({0, 0, -1e300, -22}).isEmpty());
}

// The bands of the crosshair: a half point to either side of the pointer.
TEST(MonitorLayout, SnapsBandsAtScaleOneToThePointersOwnRowAndColumn)
{
    const MonitorLayout layout({fullHd});
    const auto mouse = layout.desktopPoint({700, 300});
    EXPECT_EQ(layout.deviceRectOfDesktop({0, mouse.y - 0.5, 1920, 1}), (DeviceRect{0, 300, 1920, 1}));
    EXPECT_EQ(layout.deviceRectOfDesktop({mouse.x - 0.5, 0, 1, 1080}), (DeviceRect{700, 0, 1, 1080}));
    EXPECT_EQ(layout.deviceRectOfCapture({0, 299.5, 1920, 1}), (DeviceRect{0, 300, 1920, 1}));
}

TEST(MonitorLayout, SnapsBandsToOnePointOnEveryScale)
{
    for (const double scale : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
        const MonitorLayout layout({{"A", {0, 0, 3840, 2160}, scale}});
        const int widest = static_cast<int>(std::ceil(scale));
        const int narrowest = static_cast<int>(std::floor(scale));
        for (int y = 0; y < 2160; ++y) {
            const auto mouse = layout.desktopPoint({y, y});
            const auto band = layout.deviceRectOfDesktop({0, mouse.y - 0.5, 10, 1});
            ASSERT_TRUE(band.height == widest || band.height == narrowest) << scale << " " << y;
            ASSERT_LE(band.y, y) << scale;
            ASSERT_GE(band.bottom(), y) << scale;
        }
    }
}

TEST(MonitorLayout, BreaksTiesAlikeAtScaleThree)
{
    const MonitorLayout layout({{"A", {0, 0, 3000, 3000}, 3}});
    for (int x = 0; x < 3000; ++x) {
        const auto mouse = layout.desktopPoint({x, 0});
        // floor(x - 1.5 + 0.5) = x - 1
        ASSERT_EQ(layout.deviceRectOfDesktop({mouse.x - 0.5, 500, 1, 1}).x, x - 1);
    }
}

TEST(MonitorLayout, FindsEveryDevicePixelAgain)
{
    for (const double scale : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
        for (const double otherScale : {1.0, 1.5, 2.0}) {
            const MonitorLayout layout({{"A", {200, 300, 1200, 900}, scale}, {"B", {1400, 100, 900, 700}, otherScale}});
            for (int i = 0; i < 700; ++i) {
                for (const DevicePoint pixel : {DevicePoint{200 + i, 300 + i}, DevicePoint{1400 + i, 100 + i}}) {
                    const auto point = layout.desktopPoint(pixel);
                    const auto* monitor = layout.monitorAt(pixel);
                    // A pixel's width of points around its centre lies on its own monitor.
                    const double side = 1 / monitor->scale;
                    const auto found = layout.deviceRectOfDesktop({point.x, point.y - side, side, side});
                    ASSERT_EQ(found, (DeviceRect{pixel.x, pixel.y, 1, 1})) << scale << " " << otherScale << " " << i;
                }
            }
        }
    }
}

TEST(MonitorLayout, GoesOnPastAMonitorsEdgeInItsOwnGrid)
{
    const MonitorLayout layout({fullHd, {"B", {1920, 0, 1280, 1024}, 2}});
    EXPECT_EQ(layout.deviceRectOfCapture({1800, 10, 200, 4}), (DeviceRect{1800, 10, 200, 4}));
    EXPECT_EQ(layout.deviceRectOfCapture({-20, -10, 60, 40}), (DeviceRect{-20, -10, 60, 40}));
    EXPECT_EQ(layout.scaleOfCapture({2000, 10, 20, 4}), 2);
}

}  // namespace
}  // namespace Platform::X11
