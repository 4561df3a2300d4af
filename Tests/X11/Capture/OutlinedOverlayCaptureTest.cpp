// An outlined overlay covers what is captured for it, and more than that.
#include <sstream>

#include "Support/WaitUntil.h"
#include "X11/Capture/CaptureSetting.h"

namespace CaptureTests {
namespace {

using namespace Platform;

constexpr int side = 60;
constexpr int sampleSide = 10;
constexpr int toMiddle = sampleSide / 2;

class OutlinedOverlayCapture : public CaptureSetting {
protected:
    void SetUp() override
    {
        CaptureSetting::SetUp();
        m_compositor = m_server.start({"picom", "--backend", "xrender", "--config", "/dev/null", "--shadow"});
        ASSERT_TRUE(TestSupport::waitUntil([this] { return m_desktop.connection().hasCompositor(); }));
        m_desktop.setRootTile(tileOf(0xffffff));
        m_foreign = m_desktop.makeMappedWindow({.inner = {60, 20, 100, 80}, .colour = 0x00ff00, .isOverrideRedirect = false});
        ASSERT_TRUE(TestSupport::waitUntil([this] { return coloursOf(m_desktop.screenPicture({0, 105, 320, 1})).size() > 5; }));
        m_before = m_desktop.screenPicture();
        m_capture->activate();
    }

    // As an overlay window is placed, captured for and moved, in this order.
    Image captureAt(int x, int y)
    {
        const DeviceRect frame = {x - side / 2, y - side / 2, side, side};
        const bool isNew = m_entries.empty();
        if (isNew)
            m_entries.push_back({.windowNumber = 1, .isOutlined = true});
        m_entries[0].upcoming = frame;
        m_stack.set(m_entries);
        auto captured = capture({double(x - toMiddle), double(y - toMiddle), sampleSide, sampleSide});
        if (isNew) {
            m_window = m_desktop.makeMappedWindow({.inner = frame, .colour = overlayColour});
            m_entries[0].pictures = {{m_window, frame}};
        }
        m_desktop.move(m_window, frame.x, frame.y);
        m_entries[0].pictures[0].frame = frame;
        m_stack.set(m_entries);
        m_desktop.sync();
        EXPECT_TRUE(TestSupport::waitUntil([&] { return m_desktop.screenPicture({x, y, 1, 1}).pixel(0, 0) == (0xff000000 | overlayColour); }));
        return captured.image;
    }

    // How many pixels of an answer are not as the screen was before, and the first of them.
    std::string wrongAt(int x, int y)
    {
        const auto image = captureAt(x, y);
        const auto expected = beforeAt(x, y);
        int count = 0;
        std::ostringstream first;
        for (int row = 0; row < sampleSide; ++row) {
            for (int column = 0; column < sampleSide; ++column) {
                const auto is = image.pixel(column, row);
                const auto mustBe = expected.pixel(column, row);
                if (is != mustBe && count++ == 0)
                    first << " (" << column << ", " << row << ") is " << std::hex << is << ", not " << mustBe;
            }
        }
        return count == 0 ? "" : std::to_string(count) + first.str();
    }

    Image beforeAt(int x, int y) const
    {
        Image part(sampleSide, sampleSide);
        auto pixel = part.pixels().begin();
        for (int row = 0; row < sampleSide; ++row) {
            for (int column = 0; column < sampleSide; ++column)
                *pixel++ = m_before.pixel(x - toMiddle + column, y - toMiddle + row);
        }
        return part;
    }

    TestSupport::Process m_compositor;
    xcb_window_t m_foreign = XCB_WINDOW_NONE;
    xcb_window_t m_window = XCB_WINDOW_NONE;
    Image m_before;
};

TEST_F(OutlinedOverlayCapture, KnowsTheShadowsThatItCoveredBeforeTheyCameIntoTheMiddle)
{
    for (int step = 0; step < 12; ++step)
        EXPECT_EQ(wrongAt(110, 60 + step * 5), "") << step;
    for (int step = 0; step < 30; ++step)
        EXPECT_EQ(wrongAt(110 - step * 3, 105), "") << step;
}

TEST_F(OutlinedOverlayCapture, KnowsThemWhenItGoesToAndFro)
{
    for (int step = 0; step < 12; ++step) {
        const int y = step % 2 == 0 ? 70 : 104;
        EXPECT_EQ(wrongAt(110, y), "") << step;
    }
}

TEST_F(OutlinedOverlayCapture, SeesWhatChangesBeneathIt)
{
    captureAt(110, 98);
    const std::uint32_t blue = 0x0000ff;
    xcb_change_window_attributes(m_desktop.connection(), m_foreign, XCB_CW_BACK_PIXEL, &blue);
    xcb_clear_area(m_desktop.connection(), 0, m_foreign, 0, 0, 0, 0);
    m_desktop.sync();
    const auto image = captureAt(110, 98);
    EXPECT_EQ(image.pixel(0, 0), 0xff0000ff);
    EXPECT_EQ(image.pixel(9, 6), 0xff0000ff);
    // Below the window's edge its shadow has stayed.
    EXPECT_EQ(image.pixel(5, 8), m_before.pixel(110, 101));
    EXPECT_NE(image.pixel(5, 8), 0xffffffff);
}

TEST_F(OutlinedOverlayCapture, MakesOneRoundTripStandingAndMoving)
{
    captureAt(110, 60);
    captureAt(112, 62);
    const auto before = m_capture->roundTrips();
    captureAt(114, 66);
    captureAt(114, 66);
    EXPECT_EQ(m_capture->roundTrips() - before, 2U);
}

}  // namespace
}  // namespace CaptureTests
