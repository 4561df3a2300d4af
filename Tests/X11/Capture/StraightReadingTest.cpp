#include "Platform/X11/Capture/StraightReading.h"

#include <gtest/gtest.h>
#include <xcb/composite.h>

#include "Support/PrivateServer.h"
#include "X11/Capture/Desktop.h"

namespace CaptureTests {
namespace {

using namespace Platform::X11;
using Pixels = std::vector<std::uint32_t>;

class StraightReading : public testing::Test {
protected:
    StraightReading() { xcb_composite_redirect_subwindows(m_c, m_c.root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC); }

    PaintStep stepFor(xcb_window_t window, const DeviceRect& area, DevicePoint source = {}) const
    {
        PaintStep step;
        step.window = window;
        step.contents = 1;
        step.visual = m_c.screen().root_visual;
        step.depth = m_c.screen().root_depth;
        step.area = area;
        step.source = source;
        return step;
    }
    static PaintStep onScreen(const DeviceRect& area)
    {
        PaintStep step;
        step.isOnScreen = true;
        step.area = area;
        return step;
    }

    xcb_window_t window(const DeviceRect& frame, std::uint32_t colour) { return m_desktop.makeMappedWindow({.inner = frame, .colour = colour}); }

    // Nothing where the steps have to be painted.
    Pixels read(const std::vector<PaintStep>& steps, const DeviceRect& area)
    {
        m_desktop.sync();
        m_images.begin();
        const auto picture = addStraight(*m_captureServer, m_painter, m_images, steps, area);
        EXPECT_TRUE(m_images.read());
        Pixels pixels;
        if (picture) {
            for (const auto pixel : m_images.pixels(*picture))
                pixels.push_back(pixel & 0xffffff);
        }
        return pixels;
    }

    static constexpr std::uint32_t red = 0xff0000;
    static constexpr std::uint32_t green = 0x00ff00;
    static constexpr std::uint32_t blue = 0x0000ff;

    TestSupport::PrivateServer m_server{"320x200x24"};
    Desktop m_desktop{m_server.displayName()};
    std::unique_ptr<CaptureServer> m_captureServer = CaptureServer::open(m_server.displayName());
    Connection& m_c = m_captureServer->connection();
    Platform::X11::Painter m_painter{*m_captureServer};
    ImageReader m_images{*m_captureServer};
};

TEST_F(StraightReading, PutsARowTogether)
{
    window({0, 0, 320, 200}, green);
    const auto hidden = window({20, 0, 20, 20}, blue);
    window({22, 10, 1, 1}, red);
    EXPECT_EQ(read({onScreen({20, 10, 2, 1}), onScreen({23, 10, 1, 1}), stepFor(hidden, {22, 10, 1, 1}, {2, 10})}, {20, 10, 4, 1}),
        (Pixels{blue, blue, blue, blue}));
    EXPECT_EQ(
        read({onScreen({18, 10, 4, 1}), stepFor(hidden, {22, 10, 2, 1}, {2, 10})}, {18, 10, 6, 1}), (Pixels{green, green, blue, blue, blue, blue}));
}

TEST_F(StraightReading, PutsAColumnTogether)
{
    const auto upper = window({0, 0, 10, 10}, red);
    const auto lower = window({0, 10, 10, 10}, blue);
    EXPECT_EQ(read({stepFor(lower, {5, 10, 1, 2}, {5, 0}), stepFor(upper, {5, 8, 1, 2}, {5, 8})}, {5, 8, 1, 4}), (Pixels{red, red, blue, blue}));
    // Rows of several pixels too.
    EXPECT_EQ(read({stepFor(lower, {5, 10, 2, 1}, {5, 0}), stepFor(upper, {5, 9, 2, 1}, {5, 9})}, {5, 9, 2, 2}), (Pixels{red, red, blue, blue}));
}

TEST_F(StraightReading, ReadsAPartOfAWindow)
{
    Image pattern(4, 2);
    for (std::uint32_t i = 0; i < 8; ++i)
        pattern.pixels()[i] = i;
    const auto id = window({100, 50, 4, 2}, red);
    m_desktop.setPatternBackground(id, pattern, false);
    EXPECT_EQ(read({stepFor(id, {101, 50, 2, 2}, {1, 0})}, {101, 50, 2, 2}), (Pixels{1, 2, 5, 6}));
}

TEST_F(StraightReading, ReadsSeveralPicturesAtOnce)
{
    const auto left = stepFor(window({0, 0, 10, 10}, red), {0, 0, 3, 1});
    const auto right = stepFor(window({10, 0, 10, 10}, blue), {10, 0, 2, 2});
    m_desktop.sync();
    m_images.begin();
    const auto first = addStraight(*m_captureServer, m_painter, m_images, {&left, 1}, left.area);
    const auto second = addStraight(*m_captureServer, m_painter, m_images, {&right, 1}, right.area);
    ASSERT_TRUE(first && second && m_images.read());
    EXPECT_EQ(m_images.pixels(*first).size(), 3U);
    EXPECT_EQ(m_images.pixels(*first)[2] & 0xffffff, red);
    EXPECT_EQ(m_images.pixels(*second).size(), 4U);
    EXPECT_EQ(m_images.pixels(*second)[3] & 0xffffff, blue);
}

TEST_F(StraightReading, LeavesToBePaintedWhatIsNotThereAsItIsWanted)
{
    const auto id = window({0, 0, 20, 20}, red);
    const auto step = stepFor(id, {0, 0, 4, 4});
    auto blended = step;
    blended.isBlended = true;
    auto ofOtherDepth = step;
    ofOtherDepth.depth = 32;
    PaintStep background;
    background.area = step.area;
    EXPECT_EQ(read({step}, step.area), Pixels(16, red));
    EXPECT_TRUE(read({blended}, step.area).empty());
    EXPECT_TRUE(read({ofOtherDepth}, step.area).empty());
    EXPECT_TRUE(read({background}, step.area).empty());
    // Of so many parts that reading them one by one would take longer.
    std::vector<PaintStep> dots(20, stepFor(id, {0, 0, 1, 1}));
    for (std::size_t x = 0; x < dots.size(); ++x)
        dots[x].area.x = dots[x].source.x = static_cast<int>(x);
    EXPECT_TRUE(read(dots, {0, 0, 20, 1}).empty());
    // Side by side in more than one row.
    EXPECT_TRUE(read({stepFor(id, {0, 0, 2, 4}), stepFor(id, {2, 0, 2, 4}, {2, 0})}, step.area).empty());
}

}  // namespace
}  // namespace CaptureTests
