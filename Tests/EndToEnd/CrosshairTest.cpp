// What a person sees and feels of the crosshair, under every window manager.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <thread>

#include "EndToEnd/ColouredWindow.h"
#include "EndToEnd/CrosshairScene.h"
#include "EndToEnd/EveryWindowManager.h"
#include "EndToEnd/ExpectedScreen.h"
#include "Support/Desktop/ForeignHotKey.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;
using Events = std::vector<std::string>;

namespace {

class CrosshairTest : public testing::TestWithParam<WindowManagerKind> {
protected:
    CrosshairScene scene{GetParam()};
    Desktop& desktop = scene.desktop();
};

INSTANTIATE_TEST_SUITE_P(Under, CrosshairTest, everyWindowManager(), nameOfParameter);

TEST_P(CrosshairTest, InvertsExactlyTheRowAndTheColumnOfThePointer)
{
    scene.pressShortcut();
    EXPECT_TRUE(scene.showsCrosshairAt(300, 300));
}

TEST_P(CrosshairTest, KeepsEveryPictureRightWhileThePointerRests)
{
    desktop.pointer().moveTo(700, 420);
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(700, 420));
    const auto expected = withCrosshair(scene.beneath(), 700, 420);
    for (int picture = 0; picture < 50; ++picture)
        ASSERT_EQ(difference(expected, desktop.screenshot()), std::nullopt) << "picture " << picture;
}

TEST_P(CrosshairTest, ShowsWhatChangesBeneathItWhileItRests)
{
    ColouredWindow window(desktop, {600, 300, 200, 200}, 0x204060);
    const auto with = [&](std::uint32_t colour) { return window.over(scene.beneath(), colour); };
    desktop.pointer().moveTo(700, 400);
    ASSERT_TRUE(scene.shows(with(0x204060)));
    scene.pressShortcut();
    ASSERT_TRUE(scene.shows(withCrosshair(with(0x204060), 700, 400)));
    for (const std::uint32_t colour : {0xd08020U, 0x20d080U, 0xffffffU}) {
        std::this_thread::sleep_for(longRest);
        window.setColour(colour);
        EXPECT_TRUE(scene.shows(withCrosshair(with(colour), 700, 400))) << std::hex << colour;
    }
    std::this_thread::sleep_for(longRest);
    desktop.pointer().moveTo(690, 410);
    EXPECT_TRUE(scene.shows(withCrosshair(with(0xffffff), 690, 410)));
}

TEST_P(CrosshairTest, FollowsThePointerIntoEveryCorner)
{
    scene.pressShortcut();
    const std::pair<int, int> positions[] = {{301, 300}, {640, 90}, {0, 0}, {1279, 0}, {1279, 799}, {0, 799}, {777, 555}};
    for (const auto& [x, y] : positions) {
        desktop.pointer().moveTo(x, y);
        EXPECT_TRUE(scene.showsCrosshairAt(x, y)) << "at " << x << ", " << y;
    }
}

TEST_P(CrosshairTest, IsDismissedByEscape)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    scene.pressEscape();
    EXPECT_TRUE(scene.showsNoCrosshair());
}

TEST_P(CrosshairTest, IsDismissedByTheSameShortcutAndShownByTheNext)
{
    for (int round = 0; round < 3; ++round) {
        scene.pressShortcut();
        ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
        scene.pressShortcut();
        ASSERT_TRUE(scene.showsNoCrosshair());
    }
}

TEST_P(CrosshairTest, LeavesTheFocusWhereItIs)
{
    const auto focus = desktop.focus();
    const auto activeWindow = desktop.activeWindow();
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    EXPECT_EQ(desktop.focus(), focus);
    EXPECT_EQ(desktop.activeWindow(), activeWindow);
    scene.pressEscape();
    ASSERT_TRUE(scene.showsNoCrosshair());
    EXPECT_EQ(desktop.focus(), focus);
    EXPECT_EQ(desktop.activeWindow(), activeWindow);
    desktop.keyboard().tap(KEY_B);
    EXPECT_EQ(scene.eventsUpTo("KeyRelease 48"), (Events{"KeyPress 48", "KeyRelease 48"}));
    EXPECT_EQ(scene.otherWindow().takeEvents(), Events{});
}

// Where the focus follows the pointer, what lies under it is entered when the crosshair goes.
TEST_P(CrosshairTest, LeavesTheFocusWhenThePointerEndsOverAnotherWindow)
{
    const auto focus = desktop.focus();
    const auto activeWindow = desktop.activeWindow();
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    desktop.pointer().moveTo(900, 600);
    ASSERT_TRUE(scene.showsCrosshairAt(900, 600));
    scene.pressEscape();
    EXPECT_TRUE(scene.showsNoCrosshair());
    EXPECT_EQ(desktop.focus(), focus);
    EXPECT_EQ(desktop.activeWindow(), activeWindow);
}

TEST_P(CrosshairTest, SwallowsKeys)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    for (const std::uint16_t key : std::initializer_list<std::uint16_t>{KEY_A, KEY_ENTER, KEY_SPACE, KEY_DOWN, KEY_F5, KEY_KP5})
        desktop.keyboard().tap(key);
    desktop.keyboard().chord({KEY_LEFTCTRL, KEY_C});
    EXPECT_TRUE(scene.showsCrosshairAt(300, 300));
    scene.pressEscape();
    ASSERT_TRUE(scene.showsNoCrosshair());
    desktop.keyboard().tap(KEY_B);
    EXPECT_EQ(scene.eventsUpTo("KeyRelease 48"), (Events{"KeyPress 48", "KeyRelease 48"}));
}

TEST_P(CrosshairTest, SwallowsClicks)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    for (std::uint8_t button = 1; button <= 5; ++button)
        desktop.pointer().click(button);
    EXPECT_TRUE(scene.showsCrosshairAt(300, 300));
    desktop.pointer().moveTo(700, 600);  // over the other window
    desktop.pointer().click(1);
    EXPECT_TRUE(scene.showsCrosshairAt(700, 600));
    desktop.pointer().moveTo(300, 300);
    scene.pressEscape();
    ASSERT_TRUE(scene.showsNoCrosshair());
    desktop.pointer().click(1);
    EXPECT_EQ(scene.eventsUpTo("ButtonRelease 1"), (Events{"ButtonPress 1", "ButtonRelease 1"}));
    EXPECT_EQ(scene.otherWindow().takeEvents(), Events{});
}

TEST_P(CrosshairTest, HidesThePointersPictureAndBringsItBack)
{
    ASSERT_TRUE(scene.showsCursorAt(300, 300));
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    EXPECT_TRUE(scene.showsNoCursor());
    desktop.pointer().moveTo(400, 350);
    ASSERT_TRUE(scene.showsCrosshairAt(400, 350));
    EXPECT_TRUE(scene.showsNoCursor());
    scene.pressEscape();
    EXPECT_TRUE(scene.showsCursorAt(400, 350));
}

TEST_P(CrosshairTest, LetsOtherProgramsHotKeysThrough)
{
    ForeignHotKey hotKey(desktop.displayName(), KEY_F11, XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_SHIFT);
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    desktop.keyboard().chord({KEY_LEFTCTRL, KEY_LEFTSHIFT, KEY_F11});
    EXPECT_TRUE(waitUntil([&] { return hotKey.takePresses() == 1; }));
    EXPECT_TRUE(scene.showsCrosshairAt(300, 300));
}

TEST_P(CrosshairTest, GivesWayToAScreenLocker)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    auto locker = desktop.server().start({"i3lock", "--nofork", "--color", "204060", "--no-unlock-indicator"});
    Platform::Image locked(1280, 800);
    std::fill(locked.pixels().begin(), locked.pixels().end(), 0xff204060);
    EXPECT_TRUE(waitUntil([&] { return desktop.screenshot() == locked; })) << difference(locked, desktop.screenshot()).value_or("");
    EXPECT_TRUE(scene.takesOverlaysAway());
    scene.activeWindow().takeEvents();
    desktop.keyboard().tap(KEY_A);
    locker.kill();
    EXPECT_TRUE(scene.showsNoCrosshair());
    EXPECT_TRUE(scene.showsCursorAt(300, 300));
    EXPECT_EQ(desktop.focus(), scene.activeWindow().id());
    desktop.keyboard().tap(KEY_B);
    EXPECT_EQ(scene.eventsUpTo("KeyRelease 48"), (Events{"KeyPress 48", "KeyRelease 48"}));
}

TEST_P(CrosshairTest, LeavesNothingBehindWhenTheProgramIsKilled)
{
    scene.pressShortcut();
    ASSERT_TRUE(scene.showsCrosshairAt(300, 300));
    scene.program().process().kill();
    EXPECT_TRUE(scene.showsNoCrosshair());
    EXPECT_TRUE(scene.showsCursorAt(300, 300));
    EXPECT_TRUE(waitUntil([&] { return !isHotKeyTaken(desktop.displayName(), KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1); }));
    desktop.keyboard().tap(KEY_A);
    desktop.pointer().click(1);
    EXPECT_EQ(scene.eventsUpTo("ButtonRelease 1"), (Events{"KeyPress 30", "KeyRelease 30", "ButtonPress 1", "ButtonRelease 1"}));
}

}  // namespace
