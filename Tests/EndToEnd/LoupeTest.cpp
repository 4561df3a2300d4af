// What a person sees and feels of the loupe, under window managers with and without a
// compositor.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <thread>

#include "EndToEnd/ColouredWindow.h"
#include "EndToEnd/EveryWindowManager.h"
#include "EndToEnd/ExpectedScreen.h"
#include "EndToEnd/LoupeScene.h"
#include "Support/Desktop/PaintedOnce.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;
using Events = std::vector<std::string>;

namespace {

auto windowManagersOfTheLoupe()
{
    using enum WindowManagerKind;
    return testing::Values(none, openboxWithPicom, xfwm4, xfwm4WithCompositor);
}

class LoupeTest : public testing::TestWithParam<WindowManagerKind> {
protected:
    LoupeScene scene{GetParam()};
    Desktop& desktop = scene.desktop();
};

INSTANTIATE_TEST_SUITE_P(Under, LoupeTest, windowManagersOfTheLoupe(), nameOfParameter);

TEST_P(LoupeTest, MagnifiesExactlyWhatLiesAtThePointer)
{
    scene.pressShortcut();
    EXPECT_TRUE(scene.showsLoupeAt(300, 300));
}

TEST_P(LoupeTest, KeepsEveryPictureRightWhileThePointerRests)
{
    desktop.pointer().moveTo(700, 420);
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeAt(700, 420));
    const ExpectedLoupe loupe{.x = 700, .y = 420, .isBlended = scene.isBlended()};
    for (int picture = 0; picture < 50; ++picture)
        ASSERT_EQ(whatIsWrong(loupe, scene.beneath(), desktop.screenshot()), std::nullopt) << "picture " << picture;
}

TEST_P(LoupeTest, FollowsThePointerAcrossEveryEdge)
{
    scene.pressShortcut();
    const std::pair<int, int> positions[] = {{301, 300}, {640, 90}, {0, 0}, {1279, 0}, {1279, 799}, {0, 799}, {1240, 500}, {777, 555}};
    for (const auto& [x, y] : positions) {
        desktop.pointer().moveTo(x, y);
        EXPECT_TRUE(scene.showsLoupeAt(x, y)) << "at " << x << ", " << y;
    }
    scene.pressEscape();
    EXPECT_TRUE(scene.showsBeneath());
}

// Across the edges of the windows, where a compositor may draw shadows: each step brings
// into the middle what the loupe's rim covered before.
TEST_P(LoupeTest, ShowsTheScreenAsItWasWhereItComesInSmallSteps)
{
    desktop.pointer().moveTo(160, 440);
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeAt(160, 440));
    for (int step = 1; step <= 14; ++step) {
        const int y = 440 + step * 8;
        desktop.pointer().moveTo(160, y);
        ASSERT_TRUE(scene.showsLoupeAt(160, y)) << "step " << step;
    }
}

TEST_P(LoupeTest, IsDismissedByEscape)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeAt(300, 300));
    scene.pressEscape();
    EXPECT_TRUE(scene.showsBeneath());
    EXPECT_TRUE(scene.showsCursorAt(300, 300));
}

TEST_P(LoupeTest, IsDismissedByTheSameShortcutAndShownByTheNext)
{
    for (int round = 0; round < 3; ++round) {
        scene.pressShortcut();
        ASSERT_TRUE(scene.showsLoupeAt(300, 300));
        EXPECT_TRUE(scene.showsNoCursor());
        scene.pressShortcut();
        ASSERT_TRUE(scene.showsBeneath());
    }
}

TEST_P(LoupeTest, ShowsWhatChangesBeneathItWhileItRests)
{
    ColouredWindow window(desktop, {600, 300, 200, 200}, 0x204060);
    const auto with = [&](std::uint32_t colour) { return window.over(scene.beneath(), colour); };
    desktop.pointer().moveTo(700, 400);
    ASSERT_TRUE(scene.shows(with(0x204060)));
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeOver(with(0x204060), {.x = 700, .y = 400}));
    for (const std::uint32_t colour : {0xd08020U, 0x20d080U, 0x204060U, 0xffffffU}) {
        std::this_thread::sleep_for(longRest);
        window.setColour(colour);
        EXPECT_TRUE(scene.showsLoupeOver(with(colour), {.x = 700, .y = 400})) << std::hex << colour;
    }
    std::this_thread::sleep_for(longRest);
    desktop.pointer().moveTo(690, 410);
    EXPECT_TRUE(scene.showsLoupeOver(with(0xffffff), {.x = 690, .y = 410}));
}

TEST_P(LoupeTest, LeavesAWindowWholeThatIsPaintedOnlyOnce)
{
    const PaintedOnce window(desktop.displayName(), {250, 250, 300, 200});
    const auto beneath = desktop.screenshotAtRest();
    scene.pressShortcut();
    EXPECT_TRUE(scene.showsLoupeOver(beneath, {.x = 300, .y = 300}));
    desktop.pointer().moveTo(500, 380);
    EXPECT_TRUE(scene.showsLoupeOver(beneath, {.x = 500, .y = 380}));
    scene.pressEscape();
    EXPECT_TRUE(scene.shows(beneath));
}

TEST_P(LoupeTest, ChangesItsSizeAndZoomByKeys)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeAt(300, 300));
    auto& keyboard = desktop.keyboard();
    keyboard.tap(KEY_2);
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 260, .sampleSide = 65}));
    keyboard.tap(KEY_DOT);
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 260, .sampleSide = 51}));
    scene.tapTimes(KEY_1, 4);
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 120, .sampleSide = 23}));
    scene.tapTimes(KEY_DOT, 7);
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 120, .sampleSide = 11}));
    scene.tapTimes(KEY_COMMA, 11);
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 120, .sampleSide = 119}));
    scene.tapTimes(KEY_2, 9);
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 400, .sampleSide = 399}));
    scene.pressEscape();
    EXPECT_TRUE(scene.showsBeneath());
}

TEST_P(LoupeTest, LeavesTheFocusWhereItIsAndSwallowsKeys)
{
    const auto focus = desktop.focus();
    const auto activeWindow = desktop.activeWindow();
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeAt(300, 300));
    EXPECT_EQ(desktop.focus(), focus);
    EXPECT_EQ(desktop.activeWindow(), activeWindow);
    for (const std::uint16_t key : std::initializer_list<std::uint16_t>{KEY_A, KEY_ENTER, KEY_3, KEY_SPACE, KEY_F5})
        desktop.keyboard().tap(key);
    desktop.keyboard().chord({KEY_LEFTCTRL, KEY_C});
    EXPECT_TRUE(scene.showsLoupeAt(300, 300));
    scene.pressEscape();
    ASSERT_TRUE(scene.showsBeneath());
    EXPECT_EQ(desktop.focus(), focus);
    EXPECT_EQ(desktop.activeWindow(), activeWindow);
    desktop.keyboard().tap(KEY_B);
    EXPECT_EQ(scene.eventsUpTo("KeyRelease 48"), (Events{"KeyPress 48", "KeyRelease 48"}));
}

TEST_P(LoupeTest, SwallowsClicks)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeAt(300, 300));
    for (std::uint8_t button = 1; button <= 5; ++button)
        desktop.pointer().click(button);
    EXPECT_TRUE(scene.showsLoupeAt(300, 300));
    scene.pressEscape();
    ASSERT_TRUE(scene.showsBeneath());
    desktop.pointer().click(1);
    EXPECT_EQ(scene.eventsUpTo("ButtonRelease 1"), (Events{"ButtonPress 1", "ButtonRelease 1"}));
}

// The crosshair comes second: it lies above and inverts what the loupe shows.
TEST_P(LoupeTest, LiesBelowACrosshairThatIsShownLater)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeAt(300, 300));
    const auto withLoupe = desktop.screenshotAtRest();
    desktop.keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X});
    EXPECT_TRUE(scene.shows(withCrosshair(withLoupe, 300, 300)));
    scene.pressEscape();
    EXPECT_TRUE(scene.shows(withLoupe));
    EXPECT_TRUE(scene.showsNoCursor());
    scene.pressEscape();
    EXPECT_TRUE(scene.showsBeneath());
    EXPECT_TRUE(scene.showsCursorAt(300, 300));
}

// The loupe comes second: it lies above and magnifies the crosshair's lines.
TEST_P(LoupeTest, MagnifiesTheLinesOfACrosshairThatWasShownBefore)
{
    desktop.keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X});
    const auto withLines = withCrosshair(scene.beneath(), 300, 300);
    ASSERT_TRUE(scene.shows(withLines));
    scene.pressShortcut();
    EXPECT_TRUE(scene.showsLoupeOver(withLines, {.x = 300, .y = 300}));
    desktop.keyboard().tap(KEY_2);
    EXPECT_TRUE(scene.showsLoupeOver(withLines, {.x = 300, .y = 300, .diameter = 260, .sampleSide = 65}));
    scene.pressEscape();
    EXPECT_TRUE(scene.shows(withLines));
    scene.pressEscape();
    EXPECT_TRUE(scene.showsBeneath());
}

struct LoupeKeys : testing::Test {
    LoupeScene scene{WindowManagerKind::openbox};
    XTestKeyboard& keyboard = scene.desktop().keyboard();

    void TearDown() override { keyboard.setLayout("us"); }
};

TEST_F(LoupeKeys, ActTheSameWithModifiers)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeAt(300, 300));
    keyboard.chord({KEY_LEFTSHIFT, KEY_2});
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 260, .sampleSide = 65}));
    keyboard.chord({KEY_LEFTCTRL, KEY_1});
    EXPECT_TRUE(scene.showsLoupeAt(300, 300));
    keyboard.chord({KEY_LEFTALT, KEY_LEFTSHIFT, KEY_DOT});
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .sampleSide = 43}));
    keyboard.chord({KEY_LEFTMETA, KEY_COMMA});
    EXPECT_TRUE(scene.showsLoupeAt(300, 300));
    keyboard.lockModifiers(XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2);
    keyboard.tap(KEY_2);
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 260, .sampleSide = 65}));
    keyboard.lockModifiers(0);
    keyboard.chord({KEY_LEFTSHIFT, KEY_ESC});
    EXPECT_TRUE(scene.showsBeneath());
}

// On a French keyboard the physical "1" types "&" and the physical "," types ";".
TEST_F(LoupeKeys, StayWhereTheyAreOnOtherLayouts)
{
    for (const char* layout : {"fr", "de"}) {
        keyboard.setLayout(layout);
        scene.pressShortcut();
        ASSERT_TRUE(scene.showsLoupeAt(300, 300)) << layout;
        keyboard.tap(KEY_2);
        EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 260, .sampleSide = 65})) << layout;
        keyboard.tap(KEY_1);
        keyboard.tap(KEY_DOT);
        EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .sampleSide = 43})) << layout;
        keyboard.tap(KEY_COMMA);
        EXPECT_TRUE(scene.showsLoupeAt(300, 300)) << layout;
        keyboard.tap(KEY_ESC);
        ASSERT_TRUE(scene.showsBeneath()) << layout;
    }
}

TEST_F(LoupeKeys, RepeatWhileTheyAreHeld)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeAt(300, 300));
    keyboard.repeatQuickly();
    keyboard.press(KEY_2);
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 400, .sampleSide = 99}));
    keyboard.release(KEY_2);
    keyboard.press(KEY_DOT);
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 400, .sampleSide = 39}));
    keyboard.release(KEY_DOT);
}

TEST(LoupeSettings, SurviveARestartOfTheProgram)
{
    LoupeScene scene(WindowManagerKind::openbox);
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeAt(300, 300));
    scene.desktop().keyboard().tap(KEY_2);
    scene.desktop().keyboard().tap(KEY_COMMA);
    ASSERT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 260, .sampleSide = 85}));
    scene.restartProgram();
    ASSERT_TRUE(scene.showsBeneath());
    scene.pressShortcut();
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 260, .sampleSide = 85}));
}

TEST(LoupeSettings, AreUsedAsTheyAreStored)
{
    LoupeScene scene(SceneOptions{.windowManager = WindowManagerKind::none, .settings = R"({"loupe.diameter": 130, "loupe.zoom": 12.5})"});
    scene.pressShortcut();
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 130, .sampleSide = 9}));
    scene.desktop().keyboard().tap(KEY_1);
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 120, .sampleSide = 9}));
    scene.desktop().keyboard().tap(KEY_DOT);
    EXPECT_TRUE(scene.showsLoupe({.x = 300, .y = 300, .diameter = 120, .sampleSide = 11}));
}

TEST(LoupeSettings, EndTheProgramWithALineWhereTheZoomIsZero)
{
    LoupeScene scene(SceneOptions{.windowManager = WindowManagerKind::none, .settings = R"({"loupe.zoom": 0})"});
    scene.pressShortcut();
    EXPECT_EQ(scene.program().process().waitForExit(std::chrono::seconds(5)), 128 + SIGABRT);
    EXPECT_NE(scene.program().standardError().find("loupe.zoom 0"), std::string::npos) << scene.program().standardError();
    EXPECT_TRUE(scene.showsBeneath());
    EXPECT_TRUE(scene.showsCursorAt(300, 300));
}

SceneOptions twoMonitors()
{
    return {.windowManager = WindowManagerKind::openbox,
        .width = 2304,
        .height = 800,
        .monitors = {{"MAIN", {0, 0, 1280, 800}, 1}, {"SIDE", {1280, 0, 1024, 768}, 1}}};
}

TEST(LoupeOnTwoMonitors, FollowsThePointerToTheOther)
{
    LoupeScene scene(twoMonitors());
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsLoupeAt(300, 300));
    for (const auto& [x, y] : {std::pair{1800, 400}, {1280, 300}, {1279, 300}, {1200, 600}, {1330, 90}}) {
        scene.desktop().pointer().moveTo(x, y);
        EXPECT_TRUE(scene.showsLoupeAt(x, y)) << x << ", " << y;
    }
}

TEST(LoupeAtScaleTwo, MagnifiesEveryDevicePixel)
{
    LoupeScene scene(SceneOptions{.windowManager = WindowManagerKind::openbox, .environment = {{"QT_SCALE_FACTOR", "2"}}});
    scene.desktop().pointer().moveTo(500, 400);
    scene.pressShortcut();
    EXPECT_TRUE(scene.showsLoupe({.x = 500, .y = 400, .scale = 2}));
    scene.tapTimes(KEY_1, 3);
    scene.tapTimes(KEY_DOT, 6);
    EXPECT_TRUE(scene.showsLoupe({.x = 500, .y = 400, .diameter = 120, .sampleSide = 11, .scale = 2}));
    scene.desktop().pointer().moveTo(20, 780);
    EXPECT_TRUE(scene.showsLoupe({.x = 20, .y = 780, .diameter = 120, .sampleSide = 11, .scale = 2}));
}

}  // namespace
