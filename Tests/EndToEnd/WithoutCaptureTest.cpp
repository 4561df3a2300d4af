// A server that lets nothing be captured: the overlays show what they have without it.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "EndToEnd/CrosshairScene.h"
#include "EndToEnd/EveryWindowManager.h"
#include "EndToEnd/ExpectedScreen.h"
#include "EndToEnd/LoupeScene.h"

using namespace TestSupport;
using Platform::Image;
using Platform::X11::DeviceRect;
using Events = std::vector<std::string>;

namespace {

SceneOptions withoutCapture(WindowManagerKind kind, const TarnwickProgram::Environment& environment = {})
{
    return {.windowManager = kind, .environment = environment, .serverArguments = {"-extension", "Composite"}};
}

auto windowManagersWithoutCompositor()
{
    using enum WindowManagerKind;
    return testing::Values(none, openbox, xfwm4);
}

class CrosshairWithoutCapture : public testing::TestWithParam<WindowManagerKind> {
protected:
    CrosshairScene scene{withoutCapture(GetParam())};
    Desktop& desktop = scene.desktop();

    testing::AssertionResult showsPlainCrosshairAt(int x, int y) { return scene.withKeys(scene.shows(withPlainCrosshair(scene.beneath(), x, y))); }
};

INSTANTIATE_TEST_SUITE_P(Under, CrosshairWithoutCapture, windowManagersWithoutCompositor(), nameOfParameter);

TEST_P(CrosshairWithoutCapture, IsTwoPlainLinesThatFollowThePointer)
{
    scene.pressShortcut();
    EXPECT_TRUE(showsPlainCrosshairAt(300, 300));
    EXPECT_TRUE(scene.showsNoCursor());
    const std::pair<int, int> positions[] = {{301, 300}, {640, 90}, {0, 0}, {1279, 0}, {1279, 799}, {0, 799}, {777, 555}};
    for (const auto& [x, y] : positions) {
        desktop.pointer().moveTo(x, y);
        EXPECT_TRUE(showsPlainCrosshairAt(x, y)) << "at " << x << ", " << y;
    }
}

TEST_P(CrosshairWithoutCapture, SwallowsKeysAndIsDismissedByEscape)
{
    scene.pressShortcut();
    ASSERT_TRUE(showsPlainCrosshairAt(300, 300));
    desktop.keyboard().tap(KEY_A);
    scene.pressEscape();
    EXPECT_TRUE(scene.showsNoCrosshair());
    EXPECT_TRUE(scene.showsCursorAt(300, 300));
    desktop.keyboard().tap(KEY_B);
    EXPECT_EQ(scene.eventsUpTo("KeyRelease 48"), (Events{"KeyPress 48", "KeyRelease 48"}));
}

TEST(CrosshairWithoutCaptureAtScaleTwo, HasLinesOfOnePoint)
{
    CrosshairScene scene(withoutCapture(WindowManagerKind::openbox, {{"QT_SCALE_FACTOR", "2"}}));
    scene.desktop().pointer().moveTo(400, 300);
    scene.pressShortcut();
    EXPECT_TRUE(scene.shows(withPlainCrosshair(scene.beneath(), 399, 299, 2)));
}

int lightPixels(const Image& screen, const DeviceRect& area)
{
    int count = 0;
    for (int y = area.y; y < area.bottom(); ++y) {
        for (int x = area.x; x < area.right(); ++x)
            count += (screen.pixel(x, y) & 0xff) > 0x80 ? 1 : 0;
    }
    return count;
}

class LoupeWithoutCapture : public testing::TestWithParam<WindowManagerKind> {
protected:
    LoupeScene scene{withoutCapture(GetParam())};
    Desktop& desktop = scene.desktop();
};

INSTANTIATE_TEST_SUITE_P(Under, LoupeWithoutCapture, windowManagersWithoutCompositor(), nameOfParameter);

TEST_P(LoupeWithoutCapture, ShowsTheBackdropAndTheLinesAndNoImage)
{
    scene.pressShortcut();
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .hasSample = false}));
    EXPECT_TRUE(scene.showsNoCursor());
    desktop.pointer().moveTo(700, 420);
    EXPECT_TRUE(scene.showsLoupe({.x = 700, .y = 420, .hasSample = false}));
    desktop.keyboard().tap(KEY_2);
    EXPECT_TRUE(scene.showsLoupe({.x = 700, .y = 420, .diameter = 260, .sampleSide = 65, .hasSample = false}));
    scene.pressEscape();
    EXPECT_TRUE(scene.showsBeneath());
    EXPECT_TRUE(scene.showsCursorAt(700, 420));
}

TEST_P(LoupeWithoutCapture, HasItsRing)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .hasSample = false}));
    const auto screen = desktop.screenshot();
    // Its outer half lies around the backdrop, where it alone is drawn.
    for (const auto& [x, y] : {std::pair{295, 190}, {190, 295}, {409, 295}, {295, 409}}) {
        EXPECT_NE(scene.beneath().pixel(x, y), 0xff000000) << x << ", " << y;
        EXPECT_EQ(screen.pixel(x, y), 0xff000000) << x << ", " << y;
    }
    // Its inner half lies above the lines' ends.
    for (const auto& [x, y] : {std::pair{300, 191}, {191, 300}, {408, 300}, {300, 408}})
        EXPECT_NEAR(screen.pixel(x, y) & 0xff, 0x8c, 2) << x << ", " << y;
}

TEST_P(LoupeWithoutCapture, HasTheWordsInItsFooter)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .hasSample = false}));
    EXPECT_GT(lightPixels(desktop.screenshot(), {240, 412, 120, 24}), 150);
}

}  // namespace
