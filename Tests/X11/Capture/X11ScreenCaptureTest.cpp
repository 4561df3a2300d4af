#include "Platform/X11/Capture/X11ScreenCapture.h"

#include <xcb/composite.h>

#include <cmath>
#include <thread>

#include "Support/AllocationCounter.h"
#include "Support/WaitUntil.h"
#include "X11/Capture/CaptureSetting.h"

namespace CaptureTests {
namespace {

using namespace Platform;
using namespace Platform::X11;

class X11ScreenCapture : public CaptureSetting { };

TEST_F(X11ScreenCapture, OpensNothingWithoutAServer) { EXPECT_EQ(Platform::X11::X11ScreenCapture::open(":9999", m_layout, m_stack), nullptr); }

TEST_F(X11ScreenCapture, SeesTheWindowUnderOurOwn)
{
    m_desktop.makeMappedWindow({.inner = {10, 10, 100, 100}, .colour = 0x00ff00});
    showOverlay(1, {0, 50, 320, 1});
    const auto captured = capture({20, 50, 30, 1});
    EXPECT_EQ(captured.truth, CaptureTruth::exact);
    EXPECT_EQ(captured.image.width(), 30);
    EXPECT_EQ(captured.image.height(), 1);
    EXPECT_EQ(coloursOf(captured), (Colours{0xff00ff00}));
}

TEST_F(X11ScreenCapture, SeesTheRootBackgroundUnderOurOwn)
{
    Image tile(3, 2);
    std::uint32_t colour = 0x100000;
    for (auto& pixel : tile.pixels())
        pixel = colour += 0x10;
    m_desktop.setRootTile(tile);
    const auto before = m_desktop.screenPicture({70, 31, 90, 60});
    showOverlay(1, {0, 0, 320, 200});
    EXPECT_EQ(capture({70, 31, 90, 60}).image, before);
}

TEST_F(X11ScreenCapture, FollowsANewRootBackground)
{
    m_capture->activate();
    m_desktop.setRootTile(tileOf(0x123456));
    EXPECT_EQ(coloursOf(capture({0, 0, 10, 10})), (Colours{0xff123456}));
    m_desktop.setRootTile(tileOf(0x654321));
    EXPECT_EQ(coloursOf(capture({0, 0, 10, 10})), (Colours{0xff654321}));
}

TEST_F(X11ScreenCapture, LeavesOutOverlaysAboveAndSeesThoseBelow)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    const auto lower = m_desktop.makeMappedWindow({.inner = {0, 50, 320, 1}, .colour = 0x0000ff});
    const auto upper = m_desktop.makeMappedWindow({.inner = {0, 40, 30, 30}, .colour = 0xff0000});
    m_stack.set({{7, {{lower, {0, 50, 320, 1}}}, XCB_WINDOW_NONE}, {8, {{upper, {0, 40, 30, 30}}}, XCB_WINDOW_NONE}});
    EXPECT_EQ(coloursOf(capture({0, 50, 20, 1}, 7)), (Colours{0xff00ff00}));
    EXPECT_EQ(coloursOf(capture({0, 50, 20, 1}, 8)), (Colours{0xff0000ff}));
    EXPECT_EQ(coloursOf(capture({0, 50, 20, 1}, 99)), (Colours{0xffff0000}));
}

TEST_F(X11ScreenCapture, LeavesOutForeignWindowsAboveTheOverlay)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    showOverlay(1, {0, 50, 320, 1});
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0xff0000});
    EXPECT_EQ(coloursOf(capture({0, 50, 20, 1})), (Colours{0xff00ff00}));
}

TEST_F(X11ScreenCapture, TreatsAnOverlayThatIsNotShownYetAsTheHighest)
{
    const auto window = m_desktop.makeWindow({.inner = {0, 0, 320, 1}, .colour = 0x112233});
    m_stack.set({{1, {{window, {}}}, XCB_WINDOW_NONE}});
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    EXPECT_EQ(coloursOf(capture({0, 0, 20, 1})), (Colours{0xff00ff00}));
}

TEST_F(X11ScreenCapture, ShowsAlphaOpaqueWithoutACompositor)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0x80400000, .isArgb = true});
    EXPECT_EQ(coloursOf(capture({0, 0, 20, 1})), (Colours{0xff400000}));
}

TEST_F(X11ScreenCapture, AnswersAllRectanglesInOneRoundTrip)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    m_desktop.sync();
    m_capture->activate();
    const std::array<Rect, 3> rects = {{{0, 50, 320, 1}, {100, 0, 1, 200}, {90, 40, 21, 21}}};
    std::array<Captured, 3> answers;
    m_capture->windowsBelow(1, CaptureResolution::nominal, rects, answers);
    const auto before = m_capture->roundTrips();
    m_capture->windowsBelow(1, CaptureResolution::nominal, rects, answers);
    EXPECT_EQ(m_capture->roundTrips() - before, 1U);
    EXPECT_EQ(answers[0].image.width(), 320);
    EXPECT_EQ(answers[1].image.height(), 200);
    EXPECT_EQ(answers[2].image.pixel(20, 20), 0xff00ff00);
}

TEST_F(X11ScreenCapture, AllocatesNothingInSteadyState)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 200, 200}, .colour = 0x00ff00});
    showOverlay(1, {0, 50, 320, 1});
    m_desktop.sync();
    m_capture->activate();
    std::array<Captured, 2> answers;
    const auto captureAt = [&](int x, int y) {
        const std::array<Rect, 2> rects = {{{0, double(y), 320, 1}, {double(x), 0, 1, 200}}};
        m_capture->windowsBelow(1, CaptureResolution::nominal, rects, answers);
    };
    const auto captureAlongTheWay = [&] {
        for (int i = 0; i < 100; ++i)
            captureAt(10 + i, 20 + i);
    };
    captureAlongTheWay();
    const TestSupport::AllocationCounter counter;
    captureAlongTheWay();
    EXPECT_EQ(counter.count(), 0);
    EXPECT_EQ(answers[0].truth, CaptureTruth::exact);
}

TEST_F(X11ScreenCapture, GivesPixelsOffTheScreenAsTransparent)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    const auto image = capture({-5, -2, 10, 4}).image;
    EXPECT_EQ(image.pixel(4, 3), 0U);
    EXPECT_EQ(image.pixel(5, 1), 0U);
    EXPECT_EQ(image.pixel(5, 2), 0xff00ff00);
    EXPECT_EQ(image.pixel(9, 3), 0xff00ff00);
}

TEST_F(X11ScreenCapture, GivesPixelsBetweenMonitorsAsTransparent)
{
    useMonitors({{"MAIN", {0, 0, 100, 200}, 1}, {"SIDE", {100, 0, 220, 50}, 1}});
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    const auto image = capture({98, 48, 4, 4}).image;
    EXPECT_EQ(image.pixel(1, 3), 0xff00ff00);
    EXPECT_EQ(image.pixel(2, 1), 0xff00ff00);
    EXPECT_EQ(image.pixel(2, 2), 0U);
}

TEST_F(X11ScreenCapture, TakesTheTopLeftPixelOfEachPointAtScaleTwo)
{
    useMonitors({{"MAIN", m_desktop.screen(), 2}});
    Image tile(4, 2);
    for (int i = 0; i < 8; ++i)
        tile.pixels()[static_cast<std::size_t>(i)] = static_cast<std::uint32_t>(i);
    m_desktop.setRootTile(tile);
    const auto nominal = capture({0, 0, 3, 2});
    ASSERT_EQ(nominal.image.width(), 3);
    ASSERT_EQ(nominal.image.height(), 2);
    EXPECT_EQ(nominal.image.pixel(0, 0), 0xff000000);
    EXPECT_EQ(nominal.image.pixel(1, 0), 0xff000002);
    EXPECT_EQ(nominal.image.pixel(2, 1), 0xff000000);
    const auto best = capture({0, 0, 3, 2}, 1, CaptureResolution::best);
    ASSERT_EQ(best.image.width(), 6);
    ASSERT_EQ(best.image.height(), 4);
    EXPECT_EQ(best.image.pixel(3, 1), 0xff000007);
    // A strip through the middle of a point.
    const auto strip = capture({0, 0.5, 3, 1});
    ASSERT_EQ(strip.image.height(), 1);
    EXPECT_EQ(strip.image.pixel(1, 0), 0xff000006);
}

TEST_F(X11ScreenCapture, GivesNoPictureForRectanglesWithoutPixels)
{
    for (const Rect rect : {Rect{0, 0, 0, 5}, Rect{0, 0, 5, -1}, Rect{0, 0, 1e9, 1}, Rect{NAN, 0, 5, 5}}) {
        const auto captured = capture(rect);
        EXPECT_EQ(captured.truth, CaptureTruth::none);
        EXPECT_TRUE(captured.image.isEmpty());
    }
}

TEST_F(X11ScreenCapture, GivesNoneWhenTheServerIsGone)
{
    m_capture->activate();
    EXPECT_EQ(capture({0, 0, 5, 5}).truth, CaptureTruth::exact);
    m_server.process().kill();
    const auto captured = capture({0, 0, 5, 5});
    EXPECT_EQ(captured.truth, CaptureTruth::none);
    EXPECT_TRUE(captured.image.isEmpty());
    m_capture->deactivate();
}

TEST_F(X11ScreenCapture, CapturesAlsoWhileInactive)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    showOverlay(1, {0, 50, 320, 1});
    m_capture->activate();
    m_capture->deactivate();
    EXPECT_EQ(coloursOf(capture({0, 50, 20, 1})), (Colours{0xff00ff00}));
}

TEST_F(X11ScreenCapture, ListensAndRedirectsOnlyWhileActive)
{
    auto& c = m_desktop.connection();
    const auto window = m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0x00ff00});
    m_desktop.sync();
    Platform::X11::adopt(xcb_composite_query_version_reply(c, xcb_composite_query_version(c, 0, 4), nullptr));
    const auto isRedirected = [&] { return !adopt(xcb_request_check(c, xcb_composite_name_window_pixmap_checked(c, window, c.newId()))); };
    const auto eventsOf = [&](xcb_window_t id) {
        return adopt(xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, id), nullptr))->all_event_masks;
    };
    EXPECT_FALSE(isRedirected());
    m_capture->activate();
    capture({0, 0, 300, 10});
    EXPECT_TRUE(isRedirected());
    EXPECT_NE(eventsOf(c.root()) & XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, 0U);
    EXPECT_NE(eventsOf(window), 0U);
    m_capture->deactivate();
    EXPECT_TRUE(TestSupport::waitUntil([&] { return !isRedirected(); }));
    EXPECT_EQ(eventsOf(c.root()) & XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, 0U);
    EXPECT_EQ(eventsOf(window), 0U);
}

TEST_F(X11ScreenCapture, LeavesNothingOfACaptureWhileInactive)
{
    auto& c = m_desktop.connection();
    const auto window = m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0x00ff00});
    EXPECT_EQ(coloursOf(capture({0, 0, 20, 20})), (Colours{0xff00ff00}));
    const auto hasPixmap = [&] { return !adopt(xcb_request_check(c, xcb_composite_name_window_pixmap_checked(c, window, c.newId()))); };
    EXPECT_TRUE(TestSupport::waitUntil([&] { return !hasPixmap(); }));
}

TEST_F(X11ScreenCapture, MayBeActivatedTwice)
{
    m_capture->activate();
    const auto before = m_capture->roundTrips();
    m_capture->activate();
    EXPECT_EQ(m_capture->roundTrips(), before);
    m_capture->deactivate();
    m_capture->deactivate();
    EXPECT_EQ(capture({0, 0, 5, 5}).truth, CaptureTruth::exact);
}

TEST_F(X11ScreenCapture, LetsThreadsWaitForOneAnother)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    m_desktop.sync();
    long wrong = 0;
    std::thread other([&] {
        for (int i = 0; i < 200; ++i) {
            m_capture->activate();
            m_capture->deactivate();
        }
    });
    for (int i = 0; i < 200; ++i)
        wrong += coloursOf(capture({0, 0, 5, 5})) != Colours{0xff00ff00} ? 1 : 0;
    other.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace CaptureTests
