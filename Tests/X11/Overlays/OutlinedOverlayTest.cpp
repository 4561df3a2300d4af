// An overlay that is one thing with an outline of its own, with and without a compositor.
#include <gtest/gtest.h>
#include <xcb/shape.h>

#include <future>

#include "Support/AllocationCounter.h"
#include "Support/Desktop/TestWindow.h"
#include "X11/Overlays/OutlinedSetting.h"

namespace OverlayTests {
namespace {

using TestSupport::TestWindow;
using TestSupport::WindowManagerKind;

class OutlinedOverlay : public OutlinedSetting { };

TEST_F(OutlinedOverlay, HasHardEdgesAndItsOwnColoursWithoutACompositor)
{
    const auto overlay = makeDisc(200, 100);
    EXPECT_EQ(wrongPixelsHard(200, 100), 0);
    overlay->orderOut();
    EXPECT_EQ(screenshot(), plain(800, 600, ground));
}

TEST_F(OutlinedOverlay, FollowsItsFrameOffTheScreenAndBack)
{
    const auto overlay = makeDisc(200, 100);
    for (const auto& [left, top] : {std::pair{-60, 100}, {-60, -60}, {740, -60}, {740, 540}, {-110, 590}, {300, 300}}) {
        moveTo(*overlay, left, top);
        EXPECT_EQ(wrongPixelsHard(left, top), 0) << left << ", " << top;
    }
    moveTo(*overlay, -500, -400);
    EXPECT_EQ(screenshot(), plain(800, 600, ground));
}

TEST_F(OutlinedOverlay, IsShapedAnewOnlyWhenTheOutlineChanges)
{
    const auto overlay = makeDisc(200, 100);
    auto& connection = desktop.connection();
    screenshot();
    adopt(xcb_shape_query_version_reply(connection, xcb_shape_query_version(connection), nullptr));
    xcb_shape_select_input(connection, pictureWindow(), 1);
    const auto shapes = [&] {
        screenshot();
        int count = 0;
        while (const auto event = Event(xcb_poll_for_event(connection)))
            count += eventType(*event) == connection.firstEvent(xcb_shape_id) ? 1 : 0;
        return count;
    };
    EXPECT_EQ(shapes(), 0);
    for (int i = 0; i < 10; ++i)
        moveTo(*overlay, 200 + i, 100);
    present(*overlay, disc(blue));
    EXPECT_EQ(shapes(), 0);
    auto cut = picture;
    cut.pixels()[60 * side + 60] = 0;
    present(*overlay, cut);
    EXPECT_EQ(shapes(), 1);
    present(*overlay, picture, discAlpha);
    EXPECT_EQ(shapes(), 1);
    present(*overlay, disc(blue), discAlpha);
    EXPECT_EQ(shapes(), 0);
    present(*overlay, cut, discAlpha + 1);
    EXPECT_EQ(shapes(), 1);
}

TEST_F(OutlinedOverlay, IsOpaqueInTheColoursOfEachPictureOfTheSameAlpha)
{
    const auto overlay = makeDisc(200, 100);
    auto greenish = picture;
    for (auto& pixel : greenish.pixels())
        pixel = pixel == core ? 0xff00ff00 : pixel == tinted ? 0x80008000 : pixel;
    present(*overlay, greenish, discAlpha);
    const auto screen = screenshot();
    EXPECT_EQ(screen.pixel(260, 160), 0xff00ff00U);
    EXPECT_EQ(screen.pixel(260, 100 + side + 10), 0xff00ff00U);
    EXPECT_EQ(screen.pixel(200, 160), ground);
}

TEST_F(OutlinedOverlay, PresentsWithoutAnAllocationAndWithoutWaitingForTheServer)
{
    const auto overlay = makeDisc(200, 100);
    moveTo(*overlay, 201, 100);
    requests->waitForServer();  // as it does for the pointer between two ticks
    holdServer();
    auto presenting = std::async(std::launch::async, [&] {
        const TestSupport::AllocationCounter counter;
        moveTo(*overlay, 202, 100);
        return counter.count();
    });
    const bool hasReturned = presenting.wait_for(std::chrono::seconds(5)) == std::future_status::ready;
    letServerGo();
    EXPECT_TRUE(hasReturned);
    EXPECT_EQ(presenting.get(), 0);
    EXPECT_EQ(wrongPixelsHard(202, 100), 0);
}

// The shared memory holds one picture.
TEST_F(OutlinedOverlay, WaitsWithAPictureForTheServerToReadTheOneBefore)
{
    const auto overlay = makeDisc(200, 100);
    moveTo(*overlay, 201, 100);
    screenshot();
    holdServer();
    auto presenting = std::async(std::launch::async, [&] {
        for (const int x : {202, 203})
            moveTo(*overlay, x, 100);
    });
    EXPECT_EQ(presenting.wait_for(std::chrono::milliseconds(300)), std::future_status::timeout);
    letServerGo();
    presenting.get();
    EXPECT_EQ(wrongPixelsHard(203, 100), 0);
}

TEST_F(OutlinedOverlay, GrowsAndShrinks)
{
    const auto overlay = makeDisc(200, 100);
    for (const int size : {400, 120, 300}) {
        const auto square = plain(size, size, core);
        overlay->setFrame({100, 600.0 - 50 - size, double(size), double(size)});
        const Picture shown{.rectangle = {0, 0, double(size), double(size)}, .image = &square};
        overlay->present({&shown, 1});
        const auto screen = screenshot();
        EXPECT_EQ(std::count(screen.pixels().begin(), screen.pixels().end(), core), long{size} * size);
        EXPECT_EQ(screen.pixel(100, 50), core);
    }
}

TEST_F(OutlinedOverlay, ShowsThePartOfAHugeOneThatLiesOnTheScreen)
{
    const auto overlay = makeDisc(200, 100);
    Image halves(2, 1);
    halves.pixels()[0] = core;
    halves.pixels()[1] = blue;
    for (const double size : {3e4, 1e5, 1e9}) {
        overlay->setFrame({300 - size / 2, 300 - size / 2, size, size});
        EXPECT_EQ(overlay->frame().width, size);
        const Picture shown{.rectangle = {0, 0, size, size}, .image = &halves};
        overlay->present({&shown, 1});
        const auto screen = screenshot();
        EXPECT_EQ(screen.pixel(0, 599), core) << size;
        EXPECT_EQ(screen.pixel(299, 0), core) << size;
        EXPECT_EQ(screen.pixel(300, 0), blue) << size;
        EXPECT_EQ(screen.pixel(799, 599), blue) << size;
    }
    // As much of it lies on the screen, but another part.
    halves.pixels()[1] = 0;
    for (const auto& [left, size] : {std::pair{-3600.0, 8000.0}, {-3000.0, 8000.0}, {-3000.0, 6800.0}}) {
        overlay->setFrame({left, 3600 - size, size, size});
        ImageSource source(halves, discAlpha + 1);
        const Picture shown{.rectangle = {0, 0, size, size}, .source = &source};
        overlay->present({&shown, 1});
        const auto screen = screenshot();
        EXPECT_EQ(screen.pixel(399, 300), core) << left;
        EXPECT_EQ(screen.pixel(400, 300), left + size / 2 > 400 ? core : ground) << left << " " << size;
    }
    overlay->setFrame({-5e17, -5e17, 1e18, 1e18});
    present(*overlay, picture);
    moveTo(*overlay, 200, 100);
    EXPECT_EQ(wrongPixelsHard(200, 100), 0);
}

// Further than any sensible overlay its window does not reach.
TEST_F(OutlinedOverlay, DrawsAllOfASourceOfWhichAPartIsFarOffTheScreen)
{
    const auto overlay = makeDisc(200, 100);
    Image wide(3000, 100);
    for (std::size_t i = 0; i < wide.pixels().size(); ++i)
        wide.pixels()[i] = i % 3000 < 2500 ? core : blue;
    overlay->setFrame({-2200, 400, 3000, 100});
    ImageSource source(wide, discAlpha + 1);
    const Picture shown{.rectangle = {0, 0, 3000, 100}, .source = &source};
    overlay->present({&shown, 1});
    const auto screen = screenshot();
    EXPECT_EQ(screen.pixel(0, 150), core);
    EXPECT_EQ(screen.pixel(299, 150), core);
    EXPECT_EQ(screen.pixel(300, 150), blue);
    EXPECT_EQ(screen.pixel(799, 150), blue);
    EXPECT_EQ(screen.pixel(799, 200), ground);
}

TEST_F(OutlinedOverlay, TellsTheCaptureWhereItWillLieBeforeItMoves)
{
    const auto overlay = makeDisc(200, 100);
    overlay->setFrame(frameAt(-30, 120));
    std::vector<OverlayEntry> entries;
    stack.copyTo(entries);
    EXPECT_TRUE(entries[0].isOutlined);
    EXPECT_EQ(entries[0].upcoming, (DeviceRect{-30, 120, side, side + footer}));
    EXPECT_EQ(entries[0].pictures[0].frame, (DeviceRect{200, 100, side, side + footer}));
}

TEST_F(OutlinedOverlay, ChangesItsFormatWhenACompositorComesAndGoes)
{
    const auto overlay = makeDisc(200, 100);
    settle();
    ASSERT_EQ(wrongPixelsHard(200, 100), 0);
    auto picom = desktop.server().start({"picom", "--backend", "xrender", "--config", "/dev/null"});
    const auto isShown = [&](auto&& wrong) {
        present(*overlay, picture);
        return wrong() == 0;
    };
    EXPECT_TRUE(loopUntil([&] { return isShown([&] { return wrongPixelsBlended(200, 100); }); })) << wrongPixelsBlended(200, 100);
    picom.kill();
    EXPECT_TRUE(loopUntil([&] { return isShown([&] { return wrongPixelsHard(200, 100); }); })) << wrongPixelsHard(200, 100);
}

// Under a compositor that draws one for every window that does not forbid it.
class OverlayShadow : public OutlinedSetting, public testing::WithParamInterface<bool> {
protected:
    TestSupport::Process picom{desktop.server().start({"picom", "--backend", "xrender", "--config", "/dev/null", "--shadow"})};
};

INSTANTIATE_TEST_SUITE_P(
    Styles, OverlayShadow, testing::Bool(), [](const auto& style) { return std::string(style.param ? "WithAShadow" : "WithoutAShadow"); });

TEST_P(OverlayShadow, IsThereWhereTheStyleHasOne)
{
    ASSERT_TRUE(loopUntil([this] { return requests->hasCompositor(); }));
    const auto overlay = overlays->makeOverlayWindow({.frame = frameAt(200, 100), .hasShadow = GetParam()}, delegate);
    overlay->makeKeyAndOrderFront();
    present(*overlay, plain(side, side + footer, core));
    ASSERT_TRUE(loopUntil([this] { return shows(260, 160, core); }));
    const auto screen = desktop.screenshotAtRest();
    EXPECT_EQ(screen.pixel(260, 99 + side + footer), core);
    EXPECT_EQ(screen.pixel(260, 100 + side + footer) == ground, !GetParam());
    EXPECT_EQ(screen.pixel(200 + side, 160) == ground, !GetParam());
}

class OutlinedOverlayUnder : public OutlinedSetting, public testing::WithParamInterface<WindowManagerKind> {
protected:
    OutlinedOverlayUnder() : OutlinedSetting(GetParam()) { }
};

INSTANTIATE_TEST_SUITE_P(WindowManagers, OutlinedOverlayUnder,
    testing::Values(WindowManagerKind::none, WindowManagerKind::openboxWithPicom, WindowManagerKind::xfwm4WithCompositor),
    [](const auto& kind) { return TestSupport::nameOf(kind.param); });

TEST_P(OutlinedOverlayUnder, TakesClicksInsideItsOutlineOnly)
{
    TestWindow window(desktop.displayName(), "beneath", {100, 60, 500, 400}, 1);
    window.activate();
    const auto overlay = makeDisc(200, 100);
    settle();
    desktop.pointer().moveTo(450, 400);
    window.takeEvents();
    // The core, the rim and the bar.
    for (const auto& [x, y] : {std::pair{260, 160}, {202, 160}, {240, 234}}) {
        desktop.pointer().moveTo(x, y);
        desktop.pointer().click(1);
    }
    EXPECT_EQ(window.takeEvents(), std::vector<std::string>{});
    // A corner, and beside the bar. A window manager may look at a click before it lets it through.
    for (const auto& [x, y] : {std::pair{205, 105}, {205, 234}}) {
        desktop.pointer().moveTo(x, y);
        desktop.pointer().click(1);
        std::vector<std::string> events;
        loopUntil([&] {
            for (auto& event : window.takeEvents())
                events.push_back(std::move(event));
            return events.size() >= 2;
        });
        EXPECT_EQ(events, (std::vector<std::string>{"ButtonPress 1", "ButtonRelease 1"})) << x << ", " << y;
    }
}

class OutlinedOverlayComposited : public OutlinedOverlayUnder { };

INSTANTIATE_TEST_SUITE_P(WindowManagers, OutlinedOverlayComposited, testing::Values(WindowManagerKind::openboxWithPicom),
    [](const auto& kind) { return TestSupport::nameOf(kind.param); });

TEST_P(OutlinedOverlayComposited, BlendsWithWhatLiesBeneath)
{
    const auto overlay = makeDisc(200, 100);
    EXPECT_TRUE(loopUntil([&] { return wrongPixelsBlended(200, 100) == 0; })) << wrongPixelsBlended(200, 100);
    moveTo(*overlay, -60, 500);
    EXPECT_TRUE(loopUntil([&] { return wrongPixelsBlended(-60, 500) == 0; })) << wrongPixelsBlended(-60, 500);
}

}  // namespace
}  // namespace OverlayTests
