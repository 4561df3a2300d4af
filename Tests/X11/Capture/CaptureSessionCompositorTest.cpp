// What a session takes for what compositors show: the wallpaper, and the opacity of windows
// and of their clients.
#include "X11/Capture/CaptureSessionFixture.h"

namespace CaptureTests {
namespace {

using namespace Platform::X11;

class CaptureSessionCompositor : public CaptureSessionFixture {
protected:
    // As a window manager is known.
    static void manageWindows(Desktop& desktop)
    {
        auto& c = desktop.connection();
        const auto window = desktop.makeInputOnlyWindow({-9, -9, 1, 1});
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, c.root(), c.atom("_NET_SUPPORTING_WM_CHECK"), XCB_ATOM_WINDOW, 32, 1, &window);
        desktop.sync();
    }

    // A red client of half opacity in so many frames, one in the other, on blue.
    xcb_window_t showFramedClient(int frames, std::uint32_t opacity = 0x80000000)
    {
        auto& c = m_desktop.connection();
        m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x0000ff});
        const auto client = m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0xff0000});
        auto inner = client;
        for (int i = 0; i < frames; ++i) {
            m_frame = m_desktop.makeWindow({.inner = {0, 0, 50, 50}, .colour = 0xff0000});
            const auto decoration = m_desktop.makeMappedWindow({.inner = {0, 0, 10, 3}, .colour = 0xff0000});
            xcb_reparent_window(c, decoration, m_frame, 0, 0);
            xcb_reparent_window(c, inner, m_frame, 0, 0);
            inner = m_frame;
            m_desktop.map(m_frame);
        }
        const std::uint32_t state[] = {1, 0};
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, client, c.atom("WM_STATE"), c.atom("WM_STATE"), 32, 2, state);
        m_desktop.setOpacity(client, opacity);
        showOverlay(1, {0, 0, 320, 100});
        return client;
    }

    Colours coloursThere() { return coloursOf(captureSettled({20, 20, 5, 5})); }

    xcb_window_t m_frame = XCB_WINDOW_NONE;  // the outermost
};

// Compositors do not show the server's own background, but the wallpaper that somebody set,
// or grey.
TEST_F(CaptureSessionCompositor, TakesTheBackgroundThatCompositorsShowWhileThereIsOne)
{
    auto& c = m_desktop.connection();
    const std::uint32_t red = 0xff0000;
    xcb_change_window_attributes(c, c.root(), XCB_CW_BACK_PIXEL, &red);
    xcb_clear_area(c, 0, c.root(), 0, 0, 0, 0);
    showOverlay(1, {0, 0, 320, 100});
    start();
    EXPECT_EQ(coloursOf(captureSettled({10, 10, 5, 5})), (Colours{0xffff0000}));
    takeCompositorSelection();
    EXPECT_EQ(coloursOf(captureSettled({10, 10, 5, 5})), (Colours{0xff808080}));
    xcb_set_selection_owner(c, XCB_WINDOW_NONE, c.atom("_NET_WM_CM_S0"), XCB_CURRENT_TIME);
    EXPECT_EQ(coloursOf(captureSettled({10, 10, 5, 5})), (Colours{0xffff0000}));
}

TEST_F(CaptureSessionCompositor, TakesTheWallpaperThatCompositorsLookForFirst)
{
    auto& c = m_desktop.connection();
    const auto setWallpaper = [&](std::string_view property, std::uint32_t colour) {
        m_desktop.setRootTile(tileOf(colour));
        const auto first = c.atom("_XROOTPMAP_ID");
        const auto value = adopt(xcb_get_property_reply(c, xcb_get_property(c, 0, c.root(), first, XCB_ATOM_PIXMAP, 0, 1), nullptr));
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, c.root(), c.atom(property), XCB_ATOM_PIXMAP, 32, 1, xcb_get_property_value(value.get()));
    };
    takeCompositorSelection();
    showOverlay(1, {0, 0, 320, 100});
    setWallpaper("_XSETROOT_ID", 0x123456);
    setWallpaper("_XROOTPMAP_ID", 0x654321);
    start();
    EXPECT_EQ(coloursOf(captureSettled({10, 10, 5, 5})), (Colours{0xff654321}));
    xcb_delete_property(c, c.root(), c.atom("_XROOTPMAP_ID"));
    EXPECT_EQ(coloursOf(captureSettled({10, 10, 5, 5})), (Colours{0xff123456}));
}

TEST_F(CaptureSessionCompositor, TakesAWindowWithoutOpacityForOpaque)
{
    auto& c = m_desktop.connection();
    takeCompositorSelection();
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x0000ff});
    const auto window = m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0xff0000});
    m_desktop.setOpacity(window, 0xc0c0c0c0);
    showOverlay(1, {0, 0, 320, 100});
    start();
    EXPECT_EQ(coloursOf(captureSettled({10, 10, 5, 5})), (Colours{0xffc0003f}));
    xcb_delete_property(c, window, c.atom("_NET_WM_WINDOW_OPACITY"));
    EXPECT_EQ(coloursOf(captureSettled({10, 10, 5, 5})), (Colours{0xffff0000}));
}

TEST_F(CaptureSessionCompositor, TakesTheOpacityOfTheClientInAFrameWhereTheCompositorManagesWindows)
{
    takeCompositorSelection();
    manageWindows(m_desktop);
    const auto client = showFramedClient(1);
    start();
    EXPECT_EQ(coloursThere(), (Colours{0xff7f0080}));
    const auto before = m_captureServer->roundTrips();
    EXPECT_EQ(coloursThere(), (Colours{0xff7f0080}));
    EXPECT_EQ(m_captureServer->roundTrips() - before, 1U);
    m_desktop.setOpacity(client, 0xc0c0c0c0);
    EXPECT_EQ(coloursThere(), (Colours{0xffc0003f}));
    EXPECT_EQ(m_captureServer->roundTrips() - before, 3U);
    xcb_delete_property(m_desktop.connection(), client, m_desktop.connection().atom("_NET_WM_WINDOW_OPACITY"));
    EXPECT_EQ(coloursThere(), (Colours{0xffff0000}));
}

TEST_F(CaptureSessionCompositor, FindsAClientInsideAWrapper)
{
    takeCompositorSelection();
    manageWindows(m_desktop);
    start();
    const auto client = showFramedClient(2);
    EXPECT_EQ(coloursThere(), (Colours{0xff7f0080}));
    m_desktop.setOpacity(client, 0xc0c0c0c0);
    EXPECT_EQ(coloursThere(), (Colours{0xffc0003f}));
}

TEST_F(CaptureSessionCompositor, PrefersTheOpacityOfTheFrame)
{
    takeCompositorSelection();
    manageWindows(m_desktop);
    showFramedClient(1);
    start();
    EXPECT_EQ(coloursThere(), (Colours{0xff7f0080}));
    m_desktop.setOpacity(m_frame, 0xc0c0c0c0);
    EXPECT_EQ(coloursThere(), (Colours{0xffc0003f}));
    xcb_delete_property(m_desktop.connection(), m_frame, m_desktop.connection().atom("_NET_WM_WINDOW_OPACITY"));
    EXPECT_EQ(coloursThere(), (Colours{0xff7f0080}));
}

TEST_F(CaptureSessionCompositor, LooksForClientsOnceTheirFrameIsMapped)
{
    takeCompositorSelection();
    manageWindows(m_desktop);
    showFramedClient(1);
    m_desktop.unmap(m_frame);
    m_desktop.sync();
    start();
    EXPECT_EQ(coloursThere(), (Colours{0xff0000ff}));
    m_desktop.map(m_frame);
    EXPECT_EQ(coloursThere(), (Colours{0xff7f0080}));
}

TEST_F(CaptureSessionCompositor, TakesTheFrameAloneWhereAnotherProgramComposites)
{
    Desktop manager(m_server.displayName());
    takeCompositorSelection();
    manageWindows(manager);
    showFramedClient(1);
    start();
    EXPECT_EQ(coloursThere(), (Colours{0xffff0000}));
    // Until the compositor takes over the windows.
    manageWindows(m_desktop);
    EXPECT_EQ(coloursThere(), (Colours{0xff7f0080}));
    manageWindows(manager);
    EXPECT_EQ(coloursThere(), (Colours{0xffff0000}));
}

TEST_F(CaptureSessionCompositor, ListensToNoClientAtItsEnd)
{
    takeCompositorSelection();
    manageWindows(m_desktop);
    showFramedClient(2);
    m_desktop.sync();
    const auto before = resources();
    start();
    EXPECT_EQ(coloursThere(), (Colours{0xff7f0080}));
    m_session.reset();
    EXPECT_EQ(resources(), before);
}

}  // namespace
}  // namespace CaptureTests
