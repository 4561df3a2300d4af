// Who gets the keys while overlays are shown, and where the focus is.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "Support/Desktop/TestWindow.h"
#include "X11/Overlays/OverlaysSetting.h"

namespace OverlayTests {
namespace {

using TestSupport::TestWindow;

using OverlayKeyboardTest = OverlaysSetting;

TEST_F(OverlayKeyboardTest, GivesKeysToTheLastOverlayOrderedFront)
{
    RecordingDelegate other;
    auto first = makeOverlay();
    auto second = overlays->makeOverlayWindow({.frame = {0, 0, 10, 10}}, other);
    first->makeKeyAndOrderFront();
    first->present({});
    second->makeKeyAndOrderFront();
    desktop.keyboard().tap(KEY_A);
    EXPECT_TRUE(loopUntil([&] { return other.keys == std::vector<int>{0}; }));
    second->orderOut();
    desktop.keyboard().tap(KEY_ESC);
    EXPECT_TRUE(loopUntil([&] { return delegate.keys == std::vector<int>{53}; }));
    EXPECT_EQ(other.keys.size(), 1U);
}

TEST_F(OverlayKeyboardTest, KeepsTheKeysWhereNobodyHasTheFocusWhenTheFirstOfTwoGoes)
{
    xcb_set_input_focus(desktop.connection(), XCB_INPUT_FOCUS_NONE, XCB_WINDOW_NONE, XCB_CURRENT_TIME);
    desktop.connection().waitForServer();
    RecordingDelegate other;
    auto first = makeOverlay();
    auto second = overlays->makeOverlayWindow({.frame = {0, 0, 10, 10}, .hasShadow = true}, other);
    first->makeKeyAndOrderFront();
    first->present({});
    second->makeKeyAndOrderFront();
    EXPECT_NE(desktop.focus(), XCB_WINDOW_NONE);
    first.reset();
    EXPECT_NE(desktop.focus(), XCB_WINDOW_NONE);
    desktop.keyboard().tap(KEY_A);
    EXPECT_TRUE(loopUntil([&] { return other.keys == std::vector<int>{0}; }));
    second->orderOut();
    EXPECT_EQ(desktop.focus(), XCB_WINDOW_NONE);
}

TEST_F(OverlayKeyboardTest, LeavesTheFocusWhereItIs)
{
    TestWindow window(desktop.displayName(), "beneath", {0, 0, 400, 300}, 1);
    window.activate();
    const auto focus = desktop.focus();
    window.takeEvents();
    {
        const auto overlay = makeOverlay();
        overlay->makeKeyAndOrderFront();
        overlay->present({});
        settle();
        EXPECT_EQ(desktop.focus(), focus);
    }
    settle();
    EXPECT_EQ(desktop.focus(), focus);
    EXPECT_EQ(window.takeEvents(), std::vector<std::string>{});
}

}  // namespace
}  // namespace OverlayTests
