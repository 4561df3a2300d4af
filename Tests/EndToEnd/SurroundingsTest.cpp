// What a desktop does while the crosshair is up, or before: windows that cover it all,
// menus, a focus that follows the pointer, monitors that come, go and change.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <thread>

#include "EndToEnd/ColouredWindow.h"
#include "EndToEnd/CrosshairScene.h"
#include "EndToEnd/EveryWindowManager.h"
#include "EndToEnd/ExpectedScreen.h"
#include "Support/Desktop/ForeignMenu.h"
#include "Support/Desktop/Monitors.h"
#include "Support/Desktop/PaintedOnce.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;
using Platform::X11::DeviceRect;
using Events = std::vector<std::string>;

namespace {

class SurroundingsTest : public testing::TestWithParam<WindowManagerKind> {
protected:
    CrosshairScene scene{GetParam()};
    Desktop& desktop = scene.desktop();
};

INSTANTIATE_TEST_SUITE_P(Under, SurroundingsTest, everyWindowManager(), nameOfParameter);

// Compositors may show such a window past their own picture of the screen.
TEST_P(SurroundingsTest, AFullScreenWindowLiesBeneathTheCrosshair)
{
    TestWindow film(desktop.displayName(), "film", {0, 0, 1280, 800}, 3, TestWindow::Kind::fullScreen);
    film.activate();
    ASSERT_TRUE(waitUntil([&] { return film.isPaintedOn(desktop.screenshot()); }));
    const auto beneath = desktop.screenshotAtRest();
    film.takeEvents();
    scene.pressShortcut();
    EXPECT_TRUE(scene.shows(withCrosshair(beneath, 300, 300)));
    desktop.pointer().moveTo(901, 17);
    EXPECT_TRUE(scene.shows(withCrosshair(beneath, 901, 17)));
    desktop.pointer().click(1);
    scene.pressEscape();
    EXPECT_TRUE(scene.shows(beneath));
    EXPECT_EQ(desktop.focus(), film.id());
    const auto events = film.takeEvents();
    EXPECT_EQ(std::count(events.begin(), events.end(), "ButtonPress 1"), 0);
}

TEST_P(SurroundingsTest, AWindowThatIsPaintedOnlyOnceStaysWhole)
{
    const PaintedOnce window(desktop.displayName(), {250, 250, 300, 200});
    const auto beneath = desktop.screenshotAtRest();
    scene.pressShortcut();
    EXPECT_TRUE(scene.shows(withCrosshair(beneath, 300, 300)));
    desktop.pointer().moveTo(401, 357);
    EXPECT_TRUE(scene.shows(withCrosshair(beneath, 401, 357)));
    scene.pressEscape();
    EXPECT_TRUE(scene.shows(beneath));
}

TEST_P(SurroundingsTest, AMenuThatOpensLiesBeneathAndItsEscapeDismissesTheCrosshairToo)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    ForeignMenu menu(desktop.displayName(), {280, 250, 200, 160}, 5);
    const auto beneath = menu.paintedOn(scene.beneath());
    EXPECT_TRUE(scene.shows(withCrosshair(beneath, 300, 300)));
    scene.pressEscape();
    EXPECT_TRUE(scene.shows(beneath));
    EXPECT_EQ(menu.takePresses(KEY_ESC), 1);
}

// While a program has the keyboard, no other's hot key can fire.
TEST_P(SurroundingsTest, TheShortcutWorksAgainOnceAMenuIsClosed)
{
    {
        ForeignMenu menu(desktop.displayName(), {280, 250, 200, 160}, 5);
        scene.pressShortcut();
        EXPECT_EQ(menu.takePresses(KEY_X), 1);
    }
    ASSERT_TRUE(scene.showsNoCrosshair());
    scene.pressShortcut();
    EXPECT_TRUE(scene.showsCrosshairAt(300, 300));
}

class DockTest : public testing::TestWithParam<WindowManagerKind> {
protected:
    static constexpr DeviceRect place{0, 0, 1280, 40};

    CrosshairScene scene{GetParam()};
    Desktop& desktop = scene.desktop();
};

auto windowManagersOfTheDock()
{
    using enum WindowManagerKind;
    return testing::Values(none, openbox, openboxWithPicom, xfwm4, xfwm4WithCompositor);
}

INSTANTIATE_TEST_SUITE_P(Under, DockTest, windowManagersOfTheDock(), nameOfParameter);

TEST_P(DockTest, LiesBeneathTheCrosshair)
{
    const TestWindow dock(desktop.displayName(), "dock", place, 3, TestWindow::Kind::dock);
    ASSERT_TRUE(waitUntil([&] { return dock.isPaintedOn(desktop.screenshot()); }));
    const auto beneath = desktop.screenshotAtRest();
    scene.pressShortcut();
    EXPECT_TRUE(scene.shows(withCrosshair(beneath, 300, 300)));
    desktop.pointer().moveTo(640, 20);
    EXPECT_TRUE(scene.shows(withCrosshair(beneath, 640, 20)));
    scene.pressEscape();
    EXPECT_TRUE(scene.shows(beneath));
}

TEST_P(DockTest, LiesBeneathTheCrosshairWhenItComesLater)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    const TestWindow dock(desktop.displayName(), "dock", place, 3, TestWindow::Kind::dock);
    ASSERT_TRUE(waitUntil([&] { return desktop.screenshot().pixel(640, 20) == dock.picture().pixel(640, 20); }));
    // The shadow of a window that is new is not believed at once.
    std::this_thread::sleep_for(longRest);
    desktop.pointer().moveTo(640, 20);
    const auto withLines = desktop.screenshotAtRest();
    scene.pressEscape();
    ASSERT_TRUE(scene.takesOverlaysAway());
    const auto beneath = desktop.screenshotAtRest();
    EXPECT_TRUE(dock.isPaintedOn(beneath));
    EXPECT_EQ(difference(withCrosshair(beneath, 640, 20), withLines), std::nullopt);
}

class FocusUnderThePointer : public testing::Test {
protected:
    CrosshairScene scene{WindowManagerKind::openboxWithFocusUnderThePointer};
    Desktop& desktop = scene.desktop();
};

TEST_F(FocusUnderThePointer, FollowsThePointerWithoutTheCrosshair)
{
    desktop.pointer().moveTo(900, 600);
    EXPECT_TRUE(waitUntil([&] { return desktop.focus() == scene.otherWindow().id(); }));
}

TEST_F(FocusUnderThePointer, StaysWhileTheCrosshairIsUpAndAfter)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    desktop.pointer().moveTo(900, 600);
    ASSERT_TRUE(scene.showsCrosshairAt(900, 600));
    EXPECT_EQ(desktop.focus(), scene.activeWindow().id());
    scene.pressEscape();
    EXPECT_TRUE(scene.showsNoCrosshair());
    EXPECT_TRUE(waitUntil([&] { return desktop.focus() == scene.activeWindow().id(); }));
    EXPECT_FALSE(waitUntil([&] { return desktop.focus() != scene.activeWindow().id(); }, std::chrono::milliseconds(300)));
}

class ChangingMonitors : public testing::Test {
protected:
    static constexpr DeviceRect mainMonitor{0, 0, 1920, 1080};
    static constexpr DeviceRect sideMonitor{1920, 0, 1280, 1024};

    // Window managers would move the windows to the monitors that are left.
    Scene scene{{.windowManager = WindowManagerKind::none, .width = 3200, .height = 1080, .monitors = {{"MAIN", mainMonitor, 1.0}}}};
    Desktop& desktop = scene.desktop();

    void pressShortcut() { desktop.keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X}); }
    testing::AssertionResult showsCrosshairOnMain(int x, int y)
    {
        return scene.withKeys(scene.shows(withCrosshair(scene.beneath(), x, y, mainMonitor)));
    }
};

TEST_F(ChangingMonitors, OneThatComesLeavesTheCrosshairOnItsOwn)
{
    pressShortcut();
    ASSERT_TRUE(showsCrosshairOnMain(300, 300));
    setMonitor(desktop.connection(), "SIDE", sideMonitor, false);
    desktop.pointer().moveTo(800, 700);
    EXPECT_TRUE(showsCrosshairOnMain(800, 700));
    removeMonitor(desktop.connection(), "SIDE");
    desktop.pointer().moveTo(801, 650);
    EXPECT_TRUE(showsCrosshairOnMain(801, 650));
    scene.pressEscape();
    EXPECT_TRUE(scene.showsBeneath());
}

TEST_F(ChangingMonitors, OneThatBecomesThePrimaryLeavesEscapeAndTheNextShortcutWorking)
{
    setMonitor(desktop.connection(), "SIDE", sideMonitor, false);
    pressShortcut();
    ASSERT_TRUE(showsCrosshairOnMain(300, 300));
    removeMonitor(desktop.connection(), "MAIN");
    setMonitor(desktop.connection(), "SIDE", sideMonitor, true);
    setMonitor(desktop.connection(), "MAIN", mainMonitor, false);
    desktop.pointer().moveTo(400, 330);
    scene.pressEscape();
    ASSERT_TRUE(scene.showsBeneath());
    setMonitor(desktop.connection(), "MAIN", mainMonitor, true);
    pressShortcut();
    EXPECT_TRUE(showsCrosshairOnMain(400, 330));
}

TEST_F(ChangingMonitors, OneThatShrinksUnderTheCrosshairLeavesEscapeAndTheNextShortcutWorking)
{
    constexpr DeviceRect smaller{0, 0, 1024, 768};
    pressShortcut();
    ASSERT_TRUE(showsCrosshairOnMain(300, 300));
    setMonitor(desktop.connection(), "MAIN", smaller, true);
    scene.pressEscape();
    ASSERT_TRUE(scene.showsBeneath());
    pressShortcut();
    EXPECT_TRUE(scene.shows(withCrosshair(scene.beneath(), 300, 300, smaller)));
}

}  // namespace
