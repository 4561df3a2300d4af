#include "Platform/X11/X11Screens.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include "Platform/Qt/QtMainLoop.h"
#include "Platform/X11/X11Pointer.h"
#include "Support/LoopUntil.h"
#include "Support/PrivateServer.h"

namespace Platform::X11 {
namespace {

using TestSupport::loopUntil;

class X11ScreensTest : public testing::Test {
protected:
    static QCoreApplication& application()
    {
        static int argc = 1;
        static char name[] = "test";
        static char* argv[] = {name, nullptr};
        static QCoreApplication instance(argc, argv);
        return instance;
    }

    X11ScreensTest() : server("3200x1080x24")
    {
        application();
        mainLoop = std::make_unique<QtMainLoop>();
        requests = Connection::open(server.displayName());
        changes = Connection::open(server.displayName());
    }

    void setMonitors()
    {
        xrandr({"--setmonitor", "*MAIN", "1920/508x1080/286+0+0", "screen"});
        xrandr({"--setmonitor", "SIDE", "1280/339x1024/271+1920+0", "none"});
    }

    void xrandr(std::vector<std::string> command)
    {
        command.insert(command.begin(), "xrandr");
        auto process = server.start(command);
        ASSERT_EQ(process.waitForExit(std::chrono::seconds(10)), 0);
    }

    X11Screens& open()
    {
        screens = std::make_unique<X11Screens>(
            *requests, *changes, *mainLoop, *mainLoop, layout, [this](const std::string& name) { return scales[name] == 0 ? 1 : scales[name]; });
        return *screens;
    }

    xcb_window_t mapWindow(std::int16_t x, std::int16_t y, std::uint16_t width, std::uint16_t height)
    {
        const auto window = requests->newId();
        xcb_create_window(*requests, 0, window, requests->root(), x, y, width, height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, 0, 0, nullptr);
        xcb_map_window(*requests, window);
        return window;
    }

    void setActiveWindow(xcb_window_t window)
    {
        xcb_change_property(
            *requests, XCB_PROP_MODE_REPLACE, requests->root(), requests->atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW, 32, 1, &window);
    }

    void movePointer(std::int16_t x, std::int16_t y) { xcb_warp_pointer(*requests, XCB_NONE, requests->root(), 0, 0, 0, 0, x, y); }

    TestSupport::PrivateServer server;
    std::unique_ptr<QtMainLoop> mainLoop;
    std::unique_ptr<Connection> requests;
    std::unique_ptr<Connection> changes;
    SharedMonitorLayout layout;
    std::map<std::string, double> scales;
    std::unique_ptr<X11Screens> screens;
};

TEST_F(X11ScreensTest, ListsThePrimaryMonitorFirst)
{
    xrandr({"--setmonitor", "SIDE", "1280/339x1024/271+0+0", "none"});
    xrandr({"--setmonitor", "*MAIN", "1920/508x1080/286+1280+0", "screen"});
    const auto list = open().screens();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0], (Screen{"MAIN", {0, 0, 1920, 1080}, 1}));
    EXPECT_EQ(list[1], (Screen{"SIDE", {-1280, 56, 1280, 1024}, 1}));
}

TEST_F(X11ScreensTest, TakesTheScalesItIsTold)
{
    setMonitors();
    scales = {{"MAIN", 2}, {"SIDE", 1}};
    const auto list = open().screens();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0], (Screen{"MAIN", {0, 0, 960, 540}, 2}));
    EXPECT_EQ(list[1], (Screen{"SIDE", {960, -484, 1280, 1024}, 1}));
}

TEST_F(X11ScreensTest, TellsObserversOfMonitorsMadeAndDeletedLive)
{
    setMonitors();
    auto& watched = open();
    int changeCount = 0;
    const auto token = watched.observe([&] { ++changeCount; });
    xrandr({"--delmonitor", "SIDE"});
    EXPECT_TRUE(loopUntil([&] { return watched.screens().size() == 1; }));
    EXPECT_GE(changeCount, 1);
    xrandr({"--setmonitor", "SIDE", "640/169x480/127+1920+0", "none"});
    EXPECT_TRUE(loopUntil([&] { return watched.screens().size() == 2; }));
    EXPECT_EQ(watched.screens()[1].frame, (Rect{1920, 600, 640, 480}));
}

TEST_F(X11ScreensTest, StaysQuietWhenNothingDiffers)
{
    auto& watched = open();
    int changeCount = 0;
    const auto token = watched.observe([&] { ++changeCount; });
    watched.readAgain();
    EXPECT_EQ(changeCount, 0);
    scales["screen"] = 2;
    watched.readAgain();
    EXPECT_EQ(changeCount, 1);
}

TEST_F(X11ScreensTest, TakesTheActiveWindowsScreenAsTheMainOne)
{
    setMonitors();
    movePointer(10, 10);
    // 400 of its 600 columns lie on SIDE.
    setActiveWindow(mapWindow(1720, 100, 600, 400));
    EXPECT_EQ(open().mainScreen()->name, "SIDE");
}

TEST_F(X11ScreensTest, TakesTheFrameThatTheActiveWindowLiesIn)
{
    setMonitors();
    const auto frame = mapWindow(2000, 100, 600, 400);
    const auto client = requests->newId();
    xcb_create_window(*requests, 0, client, frame, 5, 20, 100, 100, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, 0, 0, nullptr);
    setActiveWindow(client);
    EXPECT_EQ(open().mainScreen()->name, "SIDE");
}

TEST_F(X11ScreensTest, TakesTheFocusWindowsScreenWhereNothingIsActive)
{
    setMonitors();
    movePointer(10, 10);
    const auto window = mapWindow(2000, 100, 600, 400);
    xcb_set_input_focus(*requests, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    EXPECT_EQ(open().mainScreen()->name, "SIDE");
}

TEST_F(X11ScreensTest, TakesThePointersScreenWhereNothingHasTheFocus)
{
    setMonitors();
    auto& list = open();
    movePointer(2500, 10);
    EXPECT_EQ(list.mainScreen()->name, "SIDE");
    movePointer(25, 10);
    EXPECT_EQ(list.mainScreen()->name, "MAIN");
}

TEST_F(X11ScreensTest, PassesOverAnActiveWindowThatIsGone)
{
    setMonitors();
    movePointer(2500, 10);
    const auto window = mapWindow(100, 100, 600, 400);
    setActiveWindow(window);
    xcb_destroy_window(*requests, window);
    EXPECT_EQ(open().mainScreen()->name, "SIDE");
}

TEST_F(X11ScreensTest, TellsThePointerInDesktopSpace)
{
    setMonitors();
    scales = {{"SIDE", 2}};
    open();
    X11Pointer pointer(*requests, layout);
    movePointer(700, 300);
    EXPECT_EQ(pointer.location(), (Point{700, 780}));
    movePointer(1923, 1);
    EXPECT_EQ(pointer.location(), (Point{1921.5, 1079.5}));
}

TEST_F(X11ScreensTest, HasNoPointerOnABrokenConnection)
{
    open();
    X11Pointer pointer(*requests, layout);
    server.process().kill();
    EXPECT_EQ(pointer.location(), std::nullopt);
    EXPECT_EQ(screens->mainScreen()->name, "screen");
}

}  // namespace
}  // namespace Platform::X11
