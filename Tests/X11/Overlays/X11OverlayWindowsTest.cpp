#include "Platform/X11/Overlays/X11OverlayWindows.h"

#include <gtest/gtest.h>
#include <linux/input-event-codes.h>

#include <set>

#include "Support/AllocationCounter.h"
#include "Support/Desktop/TestWindow.h"
#include "X11/Overlays/OverlaysSetting.h"

namespace OverlayTests {
namespace {

using TestSupport::TestWindow;

using X11OverlayWindowsTest = OverlaysSetting;

TEST_F(X11OverlayWindowsTest, ShowsPicturesAtTheirPixelsAndNothingElse)
{
    const auto before = desktop.screenshot();
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    const auto row = solid(800, 1, red);
    const auto column = solid(1, 600, green);
    // Row 600 - 400.5 - 0.5 = 199.5, which is pixel row 199 of the y-down screen, halves up.
    const Picture pictures[] = {{.rectangle = {0, 400.5, 800, 1}, .image = &row}, {.rectangle = {299.5, 0, 1, 600}, .image = &column}};
    overlay->present(pictures);

    const auto shown = screenshot();
    for (int y = 0; y < 600; ++y) {
        for (int x = 0; x < 800; ++x) {
            const auto expected = x == 300 ? green : y == 199 ? red : before.pixel(x, y);
            ASSERT_EQ(shown.pixel(x, y), expected) << x << "," << y;
        }
    }
    overlay->orderOut();
    EXPECT_EQ(screenshot(), before);
}

TEST_F(X11OverlayWindowsTest, MovesPicturesAndLeavesNothingBehind)
{
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    const auto row = solid(800, 1, red);
    for (int y = 100; y < 110; ++y) {
        const Picture picture{.rectangle = {0, 600.0 - y - 1, 800, 1}, .image = &row};
        overlay->present({&picture, 1});
    }
    const auto shown = screenshot();
    EXPECT_EQ(shown.pixel(400, 109), red);
    EXPECT_NE(shown.pixel(400, 108), red);
    EXPECT_NE(shown.pixel(400, 100), red);
}

TEST_F(X11OverlayWindowsTest, PresentsTwoLinesThatMoveWithoutAnAllocation)
{
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    const auto row = solid(800, 1, red);
    const auto column = solid(1, 600, green);
    const auto presentAt = [&](double by) {
        const Picture pictures[] = {{.rectangle = {0, 400 - by, 800, 1}, .image = &row}, {.rectangle = {300 + by, 0, 1, 600}, .image = &column}};
        overlay->present(pictures);
        requests->waitForServer();
    };
    // The queue of the server's news grows first.
    for (int i = 0; i < 20; ++i)
        presentAt(i);
    const TestSupport::AllocationCounter counter;
    for (int i = 1; i <= 100; ++i)
        presentAt(i);
    EXPECT_EQ(counter.count(), 0);
    EXPECT_TRUE(shows(100, 299, red));
    EXPECT_TRUE(shows(400, 100, green));
}

TEST_F(X11OverlayWindowsTest, StretchesAPictureWithoutSmoothing)
{
    setScale(2);
    const auto overlay = makeOverlay({0, 0, 400, 300});
    overlay->makeKeyAndOrderFront();
    Image row(400, 1);
    for (int x = 0; x < 400; ++x)
        row.pixels()[static_cast<std::size_t>(x)] = x % 2 == 0 ? red : green;
    const Picture picture{.rectangle = {0, 199, 400, 1}, .image = &row};
    overlay->present({&picture, 1});
    const auto shown = screenshot();
    for (int x = 0; x < 800; ++x) {
        ASSERT_EQ(shown.pixel(x, 200), x / 2 % 2 == 0 ? red : green) << x;
        ASSERT_EQ(shown.pixel(x, 201), x / 2 % 2 == 0 ? red : green) << x;
        ASSERT_NE(shown.pixel(x, 199), red);
        ASSERT_NE(shown.pixel(x, 202), red);
    }
}

TEST_F(X11OverlayWindowsTest, CutsPicturesAtTheFrame)
{
    const auto overlay = makeOverlay({100, 100, 200, 200});
    overlay->makeKeyAndOrderFront();
    Image row(300, 1);
    for (int x = 0; x < 300; ++x)
        row.pixels()[static_cast<std::size_t>(x)] = x == 50 ? green : red;
    const Picture picture{.rectangle = {-50, 10, 300, 1}, .image = &row};
    overlay->present({&picture, 1});
    const auto shown = screenshot();
    EXPECT_NE(shown.pixel(99, 489), red);
    EXPECT_EQ(shown.pixel(100, 489), green);
    EXPECT_EQ(shown.pixel(101, 489), red);
    EXPECT_EQ(shown.pixel(299, 489), red);
    EXPECT_NE(shown.pixel(300, 489), red);
}

TEST_F(X11OverlayWindowsTest, DrawsAPlainColourOpaqueWithoutACompositor)
{
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    const Picture picture{.rectangle = {10, 10, 20, 20}, .colour = 0x80000040};
    overlay->present({&picture, 1});
    EXPECT_TRUE(shows(15, 585, 0xff000040));
}

TEST_F(X11OverlayWindowsTest, ShowsWhatWasPresentedBeforeItCameToTheFront)
{
    const auto overlay = makeOverlay();
    const auto row = solid(800, 1, red);
    const Picture picture{.rectangle = {0, 100, 800, 1}, .image = &row};
    overlay->present({&picture, 1});
    EXPECT_FALSE(shows(5, 499, red));
    overlay->makeKeyAndOrderFront();
    overlay->present({&picture, 1});
    EXPECT_TRUE(shows(5, 499, red));
}

TEST_F(X11OverlayWindowsTest, TakesAwayPicturesThatAreNoLongerPresented)
{
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    const auto row = solid(800, 1, red);
    const Picture pictures[] = {{.rectangle = {0, 100, 800, 1}, .image = &row}, {.rectangle = {0, 200, 800, 1}, .image = &row}};
    overlay->present(pictures);
    EXPECT_TRUE(shows(5, 399, red));
    overlay->present({pictures, 1});
    EXPECT_TRUE(shows(5, 499, red));
    EXPECT_FALSE(shows(5, 399, red));
}

TEST_F(X11OverlayWindowsTest, SwallowsClicksOnItsFrameOnly)
{
    TestWindow window(desktop.displayName(), "beneath", {0, 0, 800, 600}, 1);
    window.takeEvents();
    {
        const auto overlay = makeOverlay({0, 0, 400, 600});
        overlay->makeKeyAndOrderFront();
        screenshot();
        desktop.pointer().moveTo(100, 100);
        desktop.pointer().click(1);
        desktop.pointer().moveTo(500, 100);
        desktop.pointer().click(3);
        EXPECT_EQ(window.takeEvents(), (std::vector<std::string>{"ButtonPress 3", "ButtonRelease 3"}));
    }
    screenshot();
    desktop.pointer().moveTo(100, 100);
    desktop.pointer().click(1);
    EXPECT_EQ(window.takeEvents(), (std::vector<std::string>{"ButtonPress 1", "ButtonRelease 1"}));
}

TEST_F(X11OverlayWindowsTest, SwallowsClicksAgainAfterAFrameThatWasEmpty)
{
    TestWindow window(desktop.displayName(), "beneath", {0, 0, 800, 600}, 1);
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    screenshot();
    desktop.pointer().moveTo(100, 100);
    window.takeEvents();
    for (const double side : {0.0, -100.0}) {
        overlay->setFrame({100, 100, side, 600});
        screenshot();
        desktop.pointer().click(1);
        EXPECT_EQ(window.takeEvents(), (std::vector<std::string>{"ButtonPress 1", "ButtonRelease 1"})) << side;
        overlay->setFrame({0, 0, 800, 600});
        screenshot();
        desktop.pointer().click(1);
        EXPECT_EQ(window.takeEvents(), std::vector<std::string>{}) << side;
    }
}

TEST_F(X11OverlayWindowsTest, ComesAboveWindowsMappedOrRaisedLater)
{
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    const auto row = solid(800, 1, red);
    const Picture picture{.rectangle = {0, 400, 800, 1}, .image = &row};
    overlay->present({&picture, 1});
    settle();
    // As the pump does; what a window covered is not kept by the server.
    const auto showsBoth = [&](int x, std::uint32_t colour) {
        overlay->present({&picture, 1});
        return shows(x, 210, colour) && shows(x, 199, red);
    };
    const auto window = mapForeign({100, 100, 300, 300}, blue, false);
    EXPECT_TRUE(loopUntil([&] { return showsBoth(200, blue); }));

    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(desktop.connection(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    desktop.connection().flush();
    settle();
    EXPECT_TRUE(loopUntil([&] { return showsBoth(200, blue); }));

    mapForeign({300, 150, 100, 100}, green, true);
    EXPECT_TRUE(loopUntil([&] { return showsBoth(350, green); }));
    EXPECT_EQ(delegate.dismissRequests, 0);
}

TEST_F(X11OverlayWindowsTest, ComesAboveAWindowMappedAfterTheLastPicture)
{
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    const auto row = solid(800, 1, red);
    const Picture picture{.rectangle = {0, 400, 800, 1}, .image = &row};
    for (int i = 0; i < 3; ++i) {
        overlay->present({&picture, 1});
        settle();
    }
    const auto window = mapForeign({100, 100, 300, 300}, blue, false);
    const auto isLowest = [&] {
        const auto tree =
            adopt(xcb_query_tree_reply(desktop.connection(), xcb_query_tree(desktop.connection(), desktop.connection().root()), nullptr));
        return tree && xcb_query_tree_children(tree.get())[0] == window;
    };
    EXPECT_TRUE(loopUntil(isLowest));
}

TEST_F(X11OverlayWindowsTest, StaysBeneathAScreenLockerAndAsksToBeDismissed)
{
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    const auto row = solid(800, 1, red);
    const Picture picture{.rectangle = {0, 400, 800, 1}, .image = &row};
    overlay->present({&picture, 1});
    settle();
    mapForeign({0, 0, 800, 600}, blue, true);
    EXPECT_TRUE(loopUntil([&] { return delegate.dismissRequests == 1; }));
    EXPECT_TRUE(shows(200, 199, blue));
}

TEST_F(X11OverlayWindowsTest, GivesUpAgainstAWindowThatRaisesItselfForEver)
{
    const auto overlay = makeOverlay();
    overlay->makeKeyAndOrderFront();
    settle();
    const auto rival = mapForeign({100, 100, 50, 50}, blue, true);
    int raises = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
    const auto rivalIsOnTop = [&] {
        const auto& connection = desktop.connection();
        const auto tree = adopt(xcb_query_tree_reply(connection, xcb_query_tree(connection, connection.root()), nullptr));
        return xcb_query_tree_children(tree.get())[xcb_query_tree_children_length(tree.get()) - 1] == rival;
    };
    loopUntil([&] {
        if (!rivalIsOnTop()) {
            ++raises;
            const std::uint32_t above = XCB_STACK_MODE_ABOVE;
            xcb_configure_window(desktop.connection(), rival, XCB_CONFIG_WINDOW_STACK_MODE, &above);
            desktop.connection().flush();
        }
        return std::chrono::steady_clock::now() >= end;
    });
    EXPECT_GE(raises, 2);
    EXPECT_LE(raises, 10);
}

TEST_F(X11OverlayWindowsTest, NeedsTheCaptureFromTheFirstOverlayToTheLast)
{
    auto first = makeOverlay();
    auto second = makeOverlay();
    first.reset();
    EXPECT_EQ(capture.calls, "activateBeforeContents ");
    second.reset();
    EXPECT_EQ(capture.calls, "activateBeforeContents deactivate ");
    EXPECT_NE(makeOverlay()->windowNumber(), 1);
}

TEST_F(X11OverlayWindowsTest, TellsTheCaptureWhatItIsMadeOf)
{
    const auto lower = makeOverlay();
    const auto upper = makeOverlay();
    upper->makeKeyAndOrderFront();
    lower->makeKeyAndOrderFront();
    upper->makeKeyAndOrderFront();
    const auto row = solid(800, 1, red);
    const Picture picture{.rectangle = {0, 400, 800, 1}, .image = &row};
    upper->present({&picture, 1});

    std::vector<OverlayEntry> entries;
    stack.copyTo(entries);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].windowNumber, lower->windowNumber());
    EXPECT_EQ(entries[1].windowNumber, upper->windowNumber());
    ASSERT_EQ(entries[1].pictures.size(), 1U);
    EXPECT_EQ(entries[1].pictures[0].frame, (DeviceRect{0, 199, 800, 1}));

    upper->orderOut();
    stack.copyTo(entries);
    EXPECT_EQ(entries[0].windowNumber, upper->windowNumber());
    EXPECT_EQ(entries[0].pictures[0].frame, DeviceRect());
}

TEST_F(X11OverlayWindowsTest, ShowsNothingInAnEmptyFrame)
{
    const auto before = desktop.screenshot();
    const auto overlay = makeOverlay({0, 0, 0, 0});
    overlay->makeKeyAndOrderFront();
    const auto row = solid(800, 1, red);
    const Picture picture{.rectangle = {0, 400, 800, 1}, .image = &row};
    overlay->present({&picture, 1});
    EXPECT_EQ(screenshot(), before);
    desktop.keyboard().tap(KEY_ESC);
    EXPECT_TRUE(loopUntil([&] { return delegate.keys == std::vector<int>{53}; }));
}

TEST_F(X11OverlayWindowsTest, AsksForTheFormerActiveWindowWhenItsGoingMovedTheFocus)
{
    auto& connection = desktop.connection();
    const auto former = mapForeign({0, 0, 50, 50}, blue, false);
    const auto other = mapForeign({60, 0, 50, 50}, green, false);
    const auto setActive = [&](xcb_window_t window) {
        xcb_change_property(
            connection, XCB_PROP_MODE_REPLACE, connection.root(), connection.atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW, 32, 1, &window);
        connection.flush();
    };
    const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, connection.root(), XCB_CW_EVENT_MASK, &mask);
    setActive(former);
    {
        const auto overlay = makeOverlay();
        overlay->makeKeyAndOrderFront();
        settle();
        // What happens while it is up is the user's wish.
        setActive(other);
        settle();
        setActive(former);
        overlay->orderOut();
    }
    screenshot();
    setActive(other);
    std::vector<xcb_window_t> asked;
    loopUntil([&] {
        while (const auto event = Event(xcb_poll_for_event(connection))) {
            if (eventType(*event) == XCB_CLIENT_MESSAGE)
                asked.push_back(reinterpret_cast<xcb_client_message_event_t&>(*event).window);
        }
        return !asked.empty();
    });
    EXPECT_EQ(asked, std::vector<xcb_window_t>{former});
}

}  // namespace
}  // namespace OverlayTests
