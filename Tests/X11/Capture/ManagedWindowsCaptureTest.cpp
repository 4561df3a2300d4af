// Windows in the frames of a real window manager, seen through an overlay that has covered
// them from the start: nothing of the screen itself can help.
#include <sstream>

#include "Support/Desktop/WindowManager.h"
#include "Support/TemporaryFolder.h"
#include "Support/WaitUntil.h"
#include "X11/Capture/CaptureSetting.h"

namespace CaptureTests {
namespace {

using namespace Platform;
using namespace Platform::X11;
using namespace std::chrono_literals;

class ManagedWindowsCapture : public CaptureSetting {
protected:
    explicit ManagedWindowsCapture(TestSupport::WindowManagerKind kind = TestSupport::WindowManagerKind::openboxWithPicom)
        : m_windowManager(m_server, kind, m_home.path())
    {
    }

    void SetUp() override
    {
        CaptureSetting::SetUp();
        m_desktop.setRootTile(tileOf(0x0000ff));
        m_capture->activate();
        m_overlay = showOverlay(1, m_desktop.screen());
        ASSERT_TRUE(TestSupport::waitUntil([this] { return coloursOf(m_desktop.screenPicture()) == Colours{0xff000000 | overlayColour}; }));
    }

    // As a program that sets the property on its own window, which the window manager put
    // into a frame.
    xcb_window_t showClient(std::uint32_t opacity)
    {
        const auto client = m_desktop.makeWindow({.inner = {60, 60, 150, 90}, .colour = 0xff0000, .isOverrideRedirect = false});
        m_desktop.setOpacity(client, opacity);
        m_desktop.map(client);
        EXPECT_TRUE(TestSupport::waitUntil([&] { return isFramed(client); }));
        m_desktop.restack(m_overlay, XCB_STACK_MODE_ABOVE);
        return client;
    }

    bool isFramed(xcb_window_t client)
    {
        auto& c = m_desktop.connection();
        const auto tree = adopt(xcb_query_tree_reply(c, xcb_query_tree(c, client), nullptr));
        const auto attributes = adopt(xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, client), nullptr));
        return tree && attributes && tree->parent != c.root() && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    }

    Image captured() { return capture({0, 0, 320, 200}, 1, CaptureResolution::best).image; }

    // The screen that comes to light when the overlay goes, at rest.
    Image screenBeneath()
    {
        m_desktop.unmap(m_overlay);
        Image picture;
        TestSupport::waitUntil([&] {
            const auto former = std::exchange(picture, m_desktop.screenPicture());
            return picture == former && !coloursOf(picture).contains(0xff000000 | overlayColour);
        });
        cover();
        return picture;
    }

    // picom sometimes does not show a window that was unmapped and soon mapped again.
    void cover()
    {
        const auto isCovered = [this] { return coloursOf(m_desktop.screenPicture()) == Colours{0xff000000 | overlayColour}; };
        for (int attempt = 0; attempt < 5; ++attempt) {
            m_desktop.map(m_overlay);
            if (TestSupport::waitUntil(isCovered, 500ms))
                return;
            m_desktop.unmap(m_overlay);
            m_desktop.sync();
        }
        FAIL() << "the overlay is not shown again";
    }

    void expectTheScreenBeneath()
    {
        const auto seen = [this] { return captured() == screenBeneath(); };
        EXPECT_TRUE(TestSupport::waitUntil(seen)) << differences(captured(), screenBeneath());
    }

    static std::string differences(const Image& picture, const Image& expected)
    {
        int count = 0;
        std::ostringstream text;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (picture.pixel(x, y) != expected.pixel(x, y) && count++ == 0)
                    text << x << "," << y << " is " << std::hex << picture.pixel(x, y) << ", not " << expected.pixel(x, y) << std::dec << "; ";
            }
        }
        text << count << " pixels differ";
        return text.str();
    }

    TestSupport::TemporaryFolder m_home;
    TestSupport::WindowManager m_windowManager;
    xcb_window_t m_overlay = XCB_WINDOW_NONE;
};

TEST_F(ManagedWindowsCapture, TakesTheOpacityOfTheClientInAFrame)
{
    const auto client = showClient(0x80000000);
    expectTheScreenBeneath();
    EXPECT_EQ(captured().pixel(130, 120), 0xff7f0080);
    m_desktop.setOpacity(client, 0xc0c0c0c0);
    EXPECT_TRUE(TestSupport::waitUntil([this] { return captured().pixel(130, 120) == 0xffc0003f; }));
    expectTheScreenBeneath();
}

TEST_F(ManagedWindowsCapture, TakesAFrameWithoutOpacityForOpaque)
{
    showClient(0xffffffff);
    expectTheScreenBeneath();
    EXPECT_EQ(captured().pixel(130, 120), 0xffff0000);
}

// These draw shadows and place windows as they like: the middle of the client says enough.
class SelfCompositingManager : public ManagedWindowsCapture, public testing::WithParamInterface<TestSupport::WindowManagerKind> {
protected:
    SelfCompositingManager() : ManagedWindowsCapture(GetParam()) { }

    DevicePoint middleOf(xcb_window_t client)
    {
        auto& c = m_desktop.connection();
        const auto place = adopt(xcb_translate_coordinates_reply(c, xcb_translate_coordinates(c, client, c.root(), 75, 45), nullptr));
        return {place->dst_x, place->dst_y};
    }

    bool waitForColour(xcb_window_t client, std::uint32_t colour)
    {
        const auto shows = [&] {
            const auto middle = middleOf(client);
            return captured().pixel(middle.x, middle.y) == colour && screenBeneath().pixel(middle.x, middle.y) == colour;
        };
        return TestSupport::waitUntil(shows, 20s);
    }
};

INSTANTIATE_TEST_SUITE_P(Xfwm4, SelfCompositingManager, testing::Values(TestSupport::WindowManagerKind::xfwm4WithCompositor),
    [](const auto& parameter) { return nameOf(parameter.param); });

TEST_P(SelfCompositingManager, ShowsTheOpacityOfTheClientThatItsFrameHasNot)
{
    const auto client = showClient(0x80000000);
    EXPECT_TRUE(waitForColour(client, 0xff7f0080));
    m_desktop.setOpacity(client, 0xc0c0c0c0);
    EXPECT_TRUE(waitForColour(client, 0xffc0003f));
    auto& c = m_desktop.connection();
    xcb_delete_property(c, client, c.atom("_NET_WM_WINDOW_OPACITY"));
    EXPECT_TRUE(waitForColour(client, 0xffff0000));
}

}  // namespace
}  // namespace CaptureTests
