// Two monitors side by side, MAIN 1920 x 1080 (the primary) and SIDE 1280 x 1024, and
// monitors of scale 2.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <algorithm>

#include "EndToEnd/CrosshairScene.h"
#include "EndToEnd/EveryWindowManager.h"
#include "EndToEnd/ExpectedScreen.h"
#include "Support/Desktop/Monitors.h"
#include "Support/Desktop/TestPattern.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;
using Platform::Image;
using Platform::X11::DeviceRect;

namespace {

constexpr DeviceRect mainMonitor{0, 0, 1920, 1080};
constexpr DeviceRect sideMonitor{1920, 0, 1280, 1024};

class TwoMonitors : public testing::TestWithParam<WindowManagerKind> {
protected:
    TwoMonitors()
    {
        setMonitor(desktop.connection(), "MAIN", mainMonitor, true);
        setMonitor(desktop.connection(), "SIDE", sideMonitor, false);
        program.emplace(desktop);
        program->waitUntilReady();
    }

    void pressShortcut() { desktop.keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X}); }

    testing::AssertionResult shows(const Image& expected)
    {
        if (waitUntil([&] { return desktop.screenshot() == expected; }, std::chrono::seconds(5)))
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << difference(expected, desktop.screenshot()).value_or("");
    }

    Desktop desktop{GetParam(), "3200x1080x24"};
    Wallpaper wallpaper{desktop.displayName(), testPattern(3200, 1080, 7)};
    std::optional<TarnwickProgram> program;
};

INSTANTIATE_TEST_SUITE_P(Under, TwoMonitors, testing::Values(WindowManagerKind::none, WindowManagerKind::openbox), nameOfParameter);

std::uint32_t& pixelAt(Image& image, int x, int y)
{
    return image.pixels()[static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width()) + static_cast<std::size_t>(x)];
}

TEST_P(TwoMonitors, OnlyTheOneWithTheActiveWindowGetsTheCrosshair)
{
    TestWindow window(desktop.displayName(), "window", {200, 150, 600, 400}, 1);
    window.activate();
    desktop.pointer().moveTo(500, 400);
    const auto beneath = desktop.screenshotAtRest();
    pressShortcut();
    EXPECT_TRUE(shows(withCrosshair(beneath, 500, 400, mainMonitor)));
}

TEST_P(TwoMonitors, TheLinesEndAtTheEdgeWhenThePointerLeaves)
{
    TestWindow window(desktop.displayName(), "window", {200, 150, 600, 400}, 1);
    window.activate();
    desktop.pointer().moveTo(500, 400);
    const auto beneath = desktop.screenshotAtRest();
    pressShortcut();
    ASSERT_TRUE(shows(withCrosshair(beneath, 500, 400, mainMonitor)));
    desktop.pointer().moveTo(2500, 300);
    auto expected = beneath;
    for (int x = 0; x < 1920; ++x)
        pixelAt(expected, x, 300) = inverse(beneath.pixel(x, 300));
    EXPECT_TRUE(shows(expected));
}

// The strips are captured at the same offsets from the primary monitor's top-left corner,
// wherever the crosshair is.
TEST_P(TwoMonitors, OnTheSecondTheLinesShowThePrimarysColours)
{
    TestWindow window(desktop.displayName(), "window", {2300, 500, 600, 400}, 1);
    window.activate();
    desktop.pointer().moveTo(2220, 200);
    const auto beneath = desktop.screenshotAtRest();
    pressShortcut();
    auto expected = beneath;
    for (int column = 0; column < 1280; ++column)
        pixelAt(expected, 1920 + column, 200) = inverse(beneath.pixel(column, 256));
    for (int row = 0; row < 1024; ++row)
        pixelAt(expected, 2220, row) = inverse(beneath.pixel(300, 56 + row));
    EXPECT_TRUE(shows(expected));
}

TEST_P(TwoMonitors, AMonitorThatGoesGivesItsCrosshairUpToTheNext)
{
    TestWindow window(desktop.displayName(), "window", {2300, 500, 600, 400}, 1);
    window.activate();
    removeMonitor(desktop.connection(), "SIDE");
    setMonitor(desktop.connection(), "MAIN", {0, 0, 3200, 1080}, true);
    desktop.pointer().moveTo(2220, 200);
    const auto beneath = desktop.screenshotAtRest();
    pressShortcut();
    EXPECT_TRUE(shows(withCrosshair(beneath, 2220, 200)));
}

class ScaleTwo : public testing::Test {
protected:
    CrosshairScene scene{WindowManagerKind::openbox, {{"QT_SCALE_FACTOR", "2"}}};

    // One image pixel a point, the top left one of its 2 x 2 device pixels; the lines begin
    // at the device pixels x and y, half a point before the pointer's.
    Image withCrosshairOfPoints(int x, int y) const
    {
        const auto& beneath = scene.beneath();
        auto picture = beneath;
        for (const int row : {y, y + 1}) {
            for (int column = 0; column < 1280; ++column)
                pixelAt(picture, column, row) = inverse(beneath.pixel(column - column % 2, y));
        }
        for (const int column : {x, x + 1}) {
            for (int row = 0; row < 800; ++row)
                pixelAt(picture, column, row) = inverse(beneath.pixel(x, row - row % 2));
        }
        return picture;
    }
};

TEST_F(ScaleTwo, TheLinesAreOnePointWideAndShowOnePixelPerPoint)
{
    scene.desktop().pointer().moveTo(400, 300);
    scene.pressShortcut();
    EXPECT_TRUE(scene.shows(withCrosshairOfPoints(399, 299)));
}

}  // namespace
