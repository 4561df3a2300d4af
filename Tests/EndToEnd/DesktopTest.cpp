// The test bed itself: what the other tests here rely on.
#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include "EndToEnd/EveryWindowManager.h"
#include "Support/Desktop/Desktop.h"
#include "Support/Desktop/ForeignHotKey.h"
#include "Support/Desktop/TestPattern.h"
#include "Support/Desktop/TestWindow.h"
#include "Support/Desktop/VisibleCursor.h"
#include "Support/Desktop/Wallpaper.h"
#include "Support/WaitUntil.h"

using namespace TestSupport;
using Platform::X11::DeviceRect;
using Events = std::vector<std::string>;

namespace {

class DesktopTest : public testing::TestWithParam<WindowManagerKind> { };

INSTANTIATE_TEST_SUITE_P(On, DesktopTest, everyWindowManager(), nameOfParameter);

TEST_P(DesktopTest, ShowsTheContentsOfTheActiveWindow)
{
    Desktop desktop(GetParam());
    TestWindow window(desktop.displayName(), "one", {100, 90, 500, 400}, 1);
    window.activate();
    EXPECT_TRUE(waitUntil([&] { return window.isPaintedOn(desktop.screenshot()); }));
    const auto contents = window.contents();
    const auto screen = desktop.screenshot();
    const auto pattern = testPattern(500, 400, 1);
    EXPECT_EQ(screen.pixel(contents.x, contents.y), pattern.pixel(0, 0));
    EXPECT_EQ(screen.pixel(contents.x + 250, contents.y + 170), pattern.pixel(250, 170));
    EXPECT_EQ(contents, (DeviceRect{100, 90, 500, 400}));
    EXPECT_EQ(desktop.focus(), window.id());
}

TEST_P(DesktopTest, BringsKeysAndClicksToTheWindow)
{
    Desktop desktop(GetParam());
    TestWindow window(desktop.displayName(), "one", {100, 90, 500, 400}, 1);
    window.activate();
    window.takeEvents();
    desktop.pointer().moveTo(300, 300);
    desktop.pointer().click(1);
    Events events;
    const auto haveArrived = [&](std::size_t count) {
        for (auto& event : window.takeEvents())
            events.push_back(std::move(event));
        return events.size() >= count;
    };
    // A window manager may look at a click first, and hold it back meanwhile.
    EXPECT_TRUE(waitUntil([&] { return haveArrived(2); }));
    desktop.keyboard().tap(KEY_A);
    EXPECT_TRUE(waitUntil([&] { return haveArrived(4); }));
    EXPECT_EQ(events, (Events{"ButtonPress 1", "ButtonRelease 1", "KeyPress 30", "KeyRelease 30"}));
}

TEST_P(DesktopTest, SeesThePointersPictureInTheFrameBufferOnly)
{
    Desktop desktop(GetParam());
    TestWindow window(desktop.displayName(), "one", {100, 90, 500, 400}, 1);
    window.activate();
    desktop.pointer().moveTo(300, 300);
    EXPECT_TRUE(waitUntil([&] { return showsVisibleCursor(desktop.frameBuffer().read(), 300, 300); }));
    EXPECT_EQ(visibleCursorPixels(desktop.frameBuffer().read()), 256);
    EXPECT_EQ(visibleCursorPixels(desktop.screenshot()), 0);
}

TEST(ForeignHotKey, IsSeenAsTakenWhileItIsHeld)
{
    Desktop desktop(WindowManagerKind::none);
    const auto isTaken = [&] { return isHotKeyTaken(desktop.displayName(), KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1); };
    EXPECT_FALSE(isTaken());
    {
        ForeignHotKey hotKey(desktop.displayName(), KEY_X, XCB_MOD_MASK_4 | XCB_MOD_MASK_1);
        EXPECT_TRUE(isTaken());
        desktop.keyboard().chord({KEY_LEFTMETA, KEY_LEFTALT, KEY_X});
        EXPECT_EQ(hotKey.takePresses(), 1);
    }
    EXPECT_TRUE(waitUntil([&] { return !isTaken(); }));
}

TEST(Wallpaper, CoversTheRootWindow)
{
    Desktop desktop(WindowManagerKind::none);
    const auto pattern = testPattern(1280, 800, 7);
    const Wallpaper wallpaper(desktop.displayName(), pattern);
    EXPECT_EQ(desktop.screenshot(), pattern);
}

}  // namespace
