#include <csignal>

#include "Support/WaitUntil.h"
#include "X11/Capture/CaptureSetting.h"

namespace CaptureTests {
namespace {

using namespace Platform;

class CaptureUnderCompositor : public CaptureSetting {
protected:
    void startCompositor()
    {
        m_compositor = m_server.start({"picom", "--backend", "xrender", "--config", "/dev/null", "--shadow"});
        ASSERT_TRUE(TestSupport::waitUntil([this] { return m_desktop.connection().hasCompositor(); }));
    }

    bool waitForColour(DevicePoint point, std::uint32_t colour)
    {
        return TestSupport::waitUntil([&] { return m_desktop.screenPicture({point.x, point.y, 1, 1}).pixel(0, 0) == colour; });
    }

    // A window with a shadow on a white screen, painted.
    void showWindowWithShadow()
    {
        m_desktop.setRootTile(tileOf(0xffffff));
        m_desktop.makeMappedWindow({.inner = {60, 60, 100, 80}, .colour = 0x00ff00, .isOverrideRedirect = false});
        ASSERT_TRUE(waitForColour({100, 100}, 0xff00ff00));
        ASSERT_TRUE(TestSupport::waitUntil([this] { return coloursOf(m_desktop.screenPicture(row)).size() > 5; }));
        m_desktop.sync();
    }

    static constexpr DeviceRect row = {0, 130, 320, 1};
    static constexpr Rect rowRect = {0, 130, 320, 1};
    TestSupport::Process m_compositor;
};

TEST_F(CaptureUnderCompositor, SeesShadowsWhereNothingCoversThem)
{
    startCompositor();
    showWindowWithShadow();
    m_capture->activate();
    const auto captured = capture(rowRect);
    EXPECT_EQ(captured.truth, CaptureTruth::exact);
    EXPECT_EQ(captured.image, m_desktop.screenPicture(row));
}

TEST_F(CaptureUnderCompositor, KeepsTheShadowsThatItCovers)
{
    startCompositor();
    showWindowWithShadow();
    m_capture->activate();
    const auto before = capture(rowRect).image;
    showOverlay(1, row);
    ASSERT_TRUE(waitForColour({10, 130}, 0xff000000 | overlayColour));
    for (int i = 0; i < 3; ++i) {
        const auto captured = capture(rowRect);
        EXPECT_EQ(captured.truth, CaptureTruth::recovered);
        EXPECT_EQ(captured.image, before);
    }
}

TEST_F(CaptureUnderCompositor, SeesWhatChangesUnderTheOverlay)
{
    startCompositor();
    showWindowWithShadow();
    m_capture->activate();
    capture(rowRect);
    showOverlay(1, row);
    ASSERT_TRUE(waitForColour({10, 130}, 0xff000000 | overlayColour));
    const auto news = m_desktop.makeWindow({.inner = {200, 100, 50, 50}, .colour = 0x0000ff});
    m_desktop.map(news);
    m_desktop.restack(news, XCB_STACK_MODE_BELOW);
    EXPECT_EQ(coloursOf(capture({200, 130, 50, 1})), (Colours{0xff0000ff}));
}

// It has not painted the window when the capture already knows it.
TEST_F(CaptureUnderCompositor, BelievesNoScreenWhereAWindowIsNew)
{
    startCompositor();
    showWindowWithShadow();
    m_capture->activate();
    EXPECT_EQ(coloursOf(capture({200, 130, 50, 1})), (Colours{0xffffffff}));
    m_compositor.signal(SIGSTOP);
    m_desktop.makeMappedWindow({.inner = {200, 100, 50, 50}, .colour = 0x0000ff});
    EXPECT_EQ(coloursOf(capture({200, 130, 50, 1})), (Colours{0xff0000ff}));
    EXPECT_EQ(m_desktop.screenPicture({220, 130, 1, 1}).pixel(0, 0), 0xffffffff);
    // What was answered meanwhile is not taken for the screen's: below a line that came there it stays right.
    showOverlay(1, row);
    m_compositor.signal(SIGCONT);
    ASSERT_TRUE(waitForColour({10, 130}, 0xff000000 | overlayColour));
    EXPECT_EQ(coloursOf(capture({200, 130, 50, 1})), (Colours{0xff0000ff}));
}

TEST_F(CaptureUnderCompositor, BlendsTranslucentWindowsThatAreNewUnderTheOverlay)
{
    startCompositor();
    showWindowWithShadow();
    m_capture->activate();
    capture({100, 130, 20, 1});
    const auto overlay = showOverlay(1, row);
    ASSERT_TRUE(waitForColour({10, 130}, 0xff000000 | overlayColour));
    const auto news = m_desktop.makeWindow({.inner = {100, 100, 20, 50}, .colour = 0x80800000, .isArgb = true});
    m_desktop.map(news);
    m_desktop.restack(overlay, XCB_STACK_MODE_ABOVE);
    EXPECT_EQ(coloursOf(capture({100, 130, 20, 1})), (Colours{0xff807f00}));
    m_desktop.setOpacity(news, 0x80808080);
    EXPECT_EQ(coloursOf(capture({100, 130, 20, 1})), (Colours{0xff40bf00}));
}

TEST_F(CaptureUnderCompositor, GoesOnWhenACompositorComesAndGoes)
{
    m_desktop.setRootTile(tileOf(0xffffff));
    m_desktop.makeMappedWindow({.inner = {60, 60, 100, 80}, .colour = 0x00ff00});
    m_capture->activate();
    showOverlay(1, row);
    const auto isRight = [this] {
        const auto captured = capture(rowRect);
        return captured.truth != CaptureTruth::none && captured.image.pixel(100, 0) == 0xff00ff00 && captured.image.pixel(319, 0) == 0xffffffff;
    };
    EXPECT_TRUE(isRight());
    startCompositor();
    for (int i = 0; i < 50; ++i)
        EXPECT_TRUE(isRight());
    EXPECT_EQ(capture(rowRect).truth, CaptureTruth::recovered);
    m_compositor.kill();
    ASSERT_TRUE(TestSupport::waitUntil([this] { return !m_desktop.connection().hasCompositor(); }));
    EXPECT_TRUE(isRight());
    EXPECT_EQ(capture(rowRect).truth, CaptureTruth::exact);
}

TEST_F(CaptureUnderCompositor, MakesOneRoundTripForScreenAndWindows)
{
    startCompositor();
    showWindowWithShadow();
    m_capture->activate();
    capture(rowRect);
    const auto before = m_capture->roundTrips();
    capture(rowRect);
    EXPECT_EQ(m_capture->roundTrips() - before, 1U);
}

}  // namespace
}  // namespace CaptureTests
