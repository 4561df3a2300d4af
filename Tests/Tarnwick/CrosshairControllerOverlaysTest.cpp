// What the controller shows, and in which order it does so.
#include "CrosshairControllerFixture.h"

namespace Tarnwick {
namespace {

using Platform::Rect;

using ControllerOverlays = CrosshairControllerTest;

TEST_F(ControllerOverlays, ShowsAndThenRemovesTheCrosshairAndTheCursorAccordingly)
{
    start();
    controller->showCrosshair();
    EXPECT_TRUE(controller->showsCrosshair());
    EXPECT_TRUE(crosshair().isShown());
    EXPECT_FALSE(fake.cursor.isVisible());
    controller->showCrosshair();
    EXPECT_FALSE(controller->showsCrosshair());
    EXPECT_TRUE(fake.overlayWindows.windows().empty());
    EXPECT_TRUE(fake.cursor.isVisible());
}

TEST_F(ControllerOverlays, ShowsTheCrosshairStepByStep)
{
    start();
    controller->showCrosshair();
    EXPECT_EQ(takeLines({"screens", "overlay", "pointer", "serialQueues", "mainLoop", "cursor"}),
        (Lines{"screens.mainScreen", "overlayWindows.make 1", "pointer.location", "serialQueues.make tarnwick.capture",
            "overlay 1 makeKeyAndOrderFront", "mainLoop.repeatingTimer 16666666", "cursor.hide"}));
}

TEST_F(ControllerOverlays, RemovesTheCrosshairStepByStep)
{
    start();
    controller->showCrosshair();
    settle();
    fake.log.clear();
    controller->showCrosshair();
    EXPECT_EQ(fake.log.lines(), (Lines{"overlay 1 orderOut", "overlay 1 close", "timer.stop", "cursor.show"}));
}

TEST_F(ControllerOverlays, ShowsTheLoupeStepByStep)
{
    start();
    fake.pointer.moveTo(Platform::Point{500.5, 300.25});
    controller->showLoupe();
    EXPECT_EQ(fake.log.lines(),
        (Lines{
            "pointer.location", "loupe.updateCursor 500.5 300.25", "loupe.makeKeyAndOrderFront", "mainLoop.repeatingTimer 16666666", "cursor.hide"}));
    fake.log.clear();
    controller->showLoupe();
    EXPECT_EQ(fake.log.lines(), (Lines{"loupe.orderOut", "timer.stop", "cursor.show"}));
}

TEST_F(ControllerOverlays, KeepsTheCursorHiddenUntilTheLastOverlayGoes)
{
    start();
    controller->showCrosshair();
    controller->showLoupe();
    controller->showCrosshair();
    EXPECT_EQ(takeLines({"cursor"}), (Lines{"cursor.hide"}));
    tick();
    EXPECT_EQ(takeLines({"cursor", "loupe"}), (Lines{"loupe.updateCursor 0 0"}));
    controller->showLoupe();
    EXPECT_EQ(takeLines({"cursor"}), (Lines{"cursor.show"}));
    EXPECT_EQ(fake.cursor.hideCount(), 0);
}

TEST_F(ControllerOverlays, ChangesNothingWhenAnOverlayThatIsNotShownIsDismissed)
{
    start();
    controller->dismissCrosshair();
    controller->dismissLoupe();
    EXPECT_TRUE(fake.log.lines().empty());
    controller->showLoupe();
    fake.log.clear();
    controller->dismissCrosshair();
    EXPECT_TRUE(fake.log.lines().empty());
    EXPECT_TRUE(controller->showsLoupe());
    EXPECT_EQ(fake.mainLoop.activeTimers(), 1);
}

TEST_F(ControllerOverlays, DismissesTheCrosshairOnEscapeOnceTheKeyHandlerHasReturned)
{
    start();
    controller->showCrosshair();
    fake.overlayWindows.pressKey({.keyCode = 53});
    EXPECT_TRUE(controller->showsCrosshair());
    fake.mainLoop.runUntilIdle();
    EXPECT_FALSE(controller->showsCrosshair());
    EXPECT_TRUE(fake.cursor.isVisible());
}

TEST_F(ControllerOverlays, KeepsTheCrosshairOnOtherKeys)
{
    start();
    controller->showCrosshair();
    fake.overlayWindows.pressKey({.keyCode = 36});
    fake.mainLoop.runUntilIdle();
    EXPECT_TRUE(controller->showsCrosshair());
}

TEST_F(ControllerOverlays, DismissesTheCrosshairThatCannotStayAboveEverything)
{
    start();
    controller->showCrosshair();
    crosshair().requestDismissal();
    EXPECT_TRUE(controller->showsCrosshair());
    fake.mainLoop.runUntilIdle();
    EXPECT_FALSE(controller->showsCrosshair());
}

TEST_F(ControllerOverlays, TakesTwoDismissalsOfOneOverlay)
{
    start();
    controller->showCrosshair();
    fake.overlayWindows.pressKey({.keyCode = 53});
    fake.overlayWindows.pressKey({.keyCode = 53});
    fake.mainLoop.runUntilIdle();
    EXPECT_FALSE(controller->showsCrosshair());
    EXPECT_EQ(fake.cursor.hideCount(), 0);
}

TEST_F(ControllerOverlays, DismissesTheLoupeOnceItsCallbackHasReturned)
{
    start();
    controller->showLoupe();
    dismissLoupeFromInside();
    EXPECT_TRUE(controller->showsLoupe());
    fake.mainLoop.runUntilIdle();
    EXPECT_FALSE(controller->showsLoupe());
}

TEST_F(ControllerOverlays, ShowsTheCrosshairOnTheMainScreenOnly)
{
    fake.screens.set({{"MAIN", {0, 0, 1920, 1080}, 1}, {"SIDE", {1920, 56, 1280, 1024}, 1}}, 1);
    start();
    controller->showCrosshair();
    ASSERT_EQ(fake.overlayWindows.windows().size(), 1U);
    EXPECT_EQ(crosshair().frame(), (Rect{1920, 56, 1280, 1024}));
}

TEST_F(ControllerOverlays, ShowsAnEmptyCrosshairWithoutAMainScreen)
{
    fake.screens.set({});
    start();
    controller->showCrosshair();
    EXPECT_TRUE(crosshair().isShown());
    EXPECT_EQ(crosshair().frame(), (Rect{0, 0, 0, 0}));
    settle();
    EXPECT_EQ(fake.cursor.hideCount(), 1);
}

TEST_F(ControllerOverlays, PutsThePointerIntoTheCoordinatesOfTheWindow)
{
    fake.screens.set({{"MAIN", {0, 0, 1920, 1080}, 1}, {"SIDE", {1920, 56, 1280, 1024}, 1}}, 1);
    fake.pointer.moveTo(Platform::Point{2020, 256});
    start();
    controller->showCrosshair();
    settle();
    ASSERT_EQ(crosshair().pictures().size(), 2U);
    EXPECT_EQ(crosshair().pictures()[0].rectangle, (Rect{0, 199.5, 1280, 1}));
    EXPECT_EQ(crosshair().pictures()[1].rectangle, (Rect{99.5, 0, 1, 1024}));
}

TEST_F(ControllerOverlays, ExcludesTheCrosshairsOwnWindowFromItsCapture)
{
    fake.overlayWindows.setNextWindowNumber(4242);
    start();
    controller->showCrosshair();
    settle();
    ASSERT_EQ(fake.screenCapture.requests().size(), 1U);
    EXPECT_EQ(fake.screenCapture.requests()[0].windowNumber, 4242U);
}

TEST_F(ControllerOverlays, ShowsNothingWhileThePointerIsUnknownAndTriesAgain)
{
    fake.pointer.moveTo(std::nullopt);
    start();
    controller->showCrosshair();
    settle();
    tick();
    EXPECT_TRUE(crosshair().isShown());
    EXPECT_EQ(crosshair().presentCount(), 0);
    EXPECT_TRUE(fake.screenCapture.requests().empty());
    fake.pointer.moveTo(Platform::Point{100, 200});
    tick();
    EXPECT_EQ(crosshair().presentCount(), 1);
    EXPECT_EQ(crosshair().pictures()[0].rectangle, (Rect{0, 199.5, 1920, 1}));
}

TEST_F(ControllerOverlays, ShowsTheLoupeWhileThePointerIsUnknownAndPlacesItLater)
{
    fake.pointer.moveTo(std::nullopt);
    start();
    controller->showLoupe();
    EXPECT_EQ(takeLines({"loupe"}), (Lines{"loupe.makeKeyAndOrderFront"}));
    fake.pointer.moveTo(Platform::Point{100, 200});
    tick();
    EXPECT_EQ(takeLines({"loupe"}), (Lines{"loupe.updateCursor 100 200"}));
}

TEST_F(ControllerOverlays, DoesNothingForALoupeThatNobodyMakes)
{
    controller.emplace(fake.system, shortcuts);
    fake.log.clear();
    controller->showLoupe();
    EXPECT_FALSE(controller->showsLoupe());
    EXPECT_TRUE(fake.cursor.isVisible());
    EXPECT_EQ(fake.mainLoop.activeTimers(), 0);
}

TEST_F(ControllerOverlays, MakesAFreshCrosshairEachTimeOnTheSameQueue)
{
    start();
    controller->showCrosshair();
    settle();
    controller->showCrosshair();
    controller->showCrosshair();
    settle();
    EXPECT_EQ(takeLines({"overlayWindows.make", "serialQueues"}),
        (Lines{"overlayWindows.make 1", "serialQueues.make tarnwick.capture", "overlayWindows.make 2"}));
}

TEST_F(ControllerOverlays, DropsACaptureOfACrosshairThatIsDismissed)
{
    start();
    controller->showCrosshair();
    controller->showCrosshair();
    fake.log.clear();
    settle();
    EXPECT_EQ(takeLines({"overlay"}), Lines());
}

TEST_F(ControllerOverlays, LeavesNothingBehindWhenItGoes)
{
    start();
    controller->showCrosshair();
    controller->showLoupe();
    fake.overlayWindows.pressKey({.keyCode = 53});
    dismissLoupeFromInside();
    controller.reset();
    EXPECT_TRUE(fake.cursor.isVisible());
    EXPECT_EQ(fake.mainLoop.activeTimers(), 0);
    EXPECT_TRUE(fake.overlayWindows.windows().empty());
    dismissLoupeFromInside();
    settle();
    fake.hotKeys.press(optionCommandX);
    EXPECT_TRUE(fake.overlayWindows.windows().empty());
}

}  // namespace
}  // namespace Tarnwick
