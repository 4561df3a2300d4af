// What a session holds in the server, and what becomes of a capture when the screen changes
// between its questions and their answers.
#include "Platform/X11/Capture/CaptureSession.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <sstream>
#include <thread>

#include "Support/WaitUntil.h"
#include "X11/Capture/CaptureSetting.h"
#include "X11/Capture/ServerResources.h"

namespace CaptureTests {
namespace {

using namespace Platform;
using namespace Platform::X11;

class CaptureSession : public CaptureSetting {
protected:
    void start() { m_session = std::make_unique<Platform::X11::CaptureSession>(*m_captureServer, m_layout, m_stack, WindowContents::kept); }

    Captured captureNow(const Rect& rect, std::uint32_t number = 1)
    {
        std::array<Captured, 1> answers;
        m_session->capture(number, CaptureResolution::nominal, {&rect, 1}, answers);
        return std::move(answers[0]);
    }
    Captured captureSettled(const Rect& rect)
    {
        m_desktop.sync();
        return captureNow(rect);
    }

    // Of this process; true for one that goes when nobody has it any more.
    static std::vector<bool> sharedMemorySegments()
    {
        std::ifstream file("/proc/sysvipc/shm");
        std::string line;
        std::getline(file, line);
        std::vector<bool> segments;
        while (std::getline(file, line)) {
            constexpr unsigned long goes = 01000;
            std::istringstream columns(line);
            std::string key;
            std::string identifier;
            std::string permissions;
            std::string size;
            pid_t creator = 0;
            columns >> key >> identifier >> permissions >> size >> creator;
            if (creator == getpid())
                segments.push_back((std::stoul(permissions, nullptr, 8) & goes) != 0);
        }
        return segments;
    }

    ServerResources resources() { return serverResources(m_captureServer->connection()); }

    // The changes happen when the capture has asked everything and the server has answered
    // nothing: it serves this client alone until they are done.
    template <typename Changes> Captured captureDuring(const Rect& rect, Changes&& changes)
    {
        m_desktop.sync();
        xcb_grab_server(m_desktop.connection());
        m_desktop.sync();
        std::atomic<pid_t> thread = 0;
        Captured captured;
        std::thread capturing([&] {
            thread = gettid();
            captured = captureNow(rect);
        });
        EXPECT_TRUE(TestSupport::waitUntil([&] { return thread != 0 && waits(thread); }));
        changes();
        xcb_ungrab_server(m_desktop.connection());
        m_desktop.sync();
        capturing.join();
        return captured;
    }

    // As a compositor is known to others.
    void takeCompositorSelection()
    {
        auto& c = m_desktop.connection();
        xcb_set_selection_owner(c, m_desktop.makeInputOnlyWindow({-9, -9, 1, 1}), c.atom("_NET_WM_CM_S0"), XCB_CURRENT_TIME);
        m_desktop.sync();
    }

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
    std::unique_ptr<CaptureServer> m_captureServer = CaptureServer::open(m_server.displayName());
    std::unique_ptr<Platform::X11::CaptureSession> m_session;

private:
    // Sleeps, and goes on sleeping.
    static bool waits(pid_t thread)
    {
        for (int i = 0; i < 10; ++i) {
            std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
            std::stringstream text;
            text << file.rdbuf();
            if (text.str().find(") S ") == std::string::npos)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
};

TEST_F(CaptureSession, GivesBackAllThatItHeldInTheServer)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 100, 100}, .colour = 0x00ff00});
    m_desktop.makeMappedWindow({.inner = {50, 50, 100, 100}, .colour = 0x80400000, .isArgb = true});
    takeCompositorSelection();
    const auto before = resources();
    start();
    captureSettled({0, 0, 200, 150});
    EXPECT_GT(resources()["PIXMAP"], before.contains("PIXMAP") ? before.at("PIXMAP") : 0);
    m_session.reset();
    EXPECT_EQ(resources(), before);
}

// It would outlive the program.
TEST_F(CaptureSession, LeavesNoSharedMemoryBehind)
{
    start();
    captureSettled({0, 0, 20, 20});
    captureSettled({0, 0, 320, 200});
    const auto segments = sharedMemorySegments();
    EXPECT_EQ(segments.size(), 1U);
    EXPECT_TRUE(std::all_of(segments.begin(), segments.end(), [](bool goesWithItsUsers) { return goesWithItsUsers; }));
    m_session.reset();
    resources();
    EXPECT_EQ(sharedMemorySegments().size(), 0U);
}

TEST_F(CaptureSession, GivesBackThePixmapsOfWindowsThatAreGone)
{
    start();
    // What lies beneath an overlay is put together from the windows' pixmaps.
    const auto captureBeneathAnOverlay = [this] {
        const auto overlay = showOverlay(1, {0, 0, 320, 20});
        auto captured = captureSettled({0, 0, 320, 200});
        m_entries.clear();
        m_stack.set(m_entries);
        m_desktop.destroy(overlay);
        return captured;
    };
    captureBeneathAnOverlay();
    captureSettled({0, 0, 320, 200});
    const auto before = resources();
    for (int i = 0; i < 10; ++i) {
        const auto destroyed = m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0x00ff00});
        const auto unmapped = m_desktop.makeMappedWindow({.inner = {60, 0, 50, 50}, .colour = 0x80400000, .isArgb = true});
        const auto captured = captureBeneathAnOverlay();
        EXPECT_EQ(captured.image.pixel(10, 10), 0xff00ff00);
        EXPECT_EQ(captured.image.pixel(70, 10), 0xff400000);
        EXPECT_GT(resources().at("PIXMAP"), before.at("PIXMAP"));
        m_desktop.destroy(destroyed);
        m_desktop.unmap(unmapped);
        captureSettled({0, 0, 320, 200});
        const auto after = resources();
        EXPECT_EQ(after.at("PIXMAP"), before.at("PIXMAP"));
        EXPECT_EQ(after.at("PICTURE"), before.at("PICTURE"));
    }
}

TEST_F(CaptureSession, HoldsABoundedNumberOfPixmapsHoweverManySizesAreCaptured)
{
    // A window and what lies beside it are put together in a pixmap.
    m_desktop.makeMappedWindow({.inner = {1, 0, 2, 200}, .colour = 0x0000ff});
    showOverlay(1, m_desktop.screen());
    start();
    for (int side = 4; side < 200; side += 4)
        captureSettled({0, 0, double(side), double(side)});
    EXPECT_LE(resources().at("PIXMAP"), 12U);
}

TEST_F(CaptureSession, SeesBeneathAWindowThatGoesMeanwhile)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    const auto known = m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0x0000ff});
    const auto unknown = m_desktop.makeMappedWindow({.inner = {100, 0, 50, 50}, .colour = 0xff0000});
    start();
    EXPECT_EQ(coloursOf(captureSettled({10, 10, 5, 5})), (Colours{0xff0000ff}));
    EXPECT_EQ(coloursOf(captureDuring({10, 10, 5, 5}, [&] { m_desktop.destroy(known); })), (Colours{0xff00ff00}));
    // Its contents were not asked for before.
    EXPECT_EQ(coloursOf(captureDuring({110, 10, 5, 5}, [&] { m_desktop.unmap(unknown); })), (Colours{0xff00ff00}));
}

TEST_F(CaptureSession, SeesAWindowThatComesMeanwhile)
{
    start();
    captureSettled({10, 10, 5, 5});
    const auto make = [&] { m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0x0000ff}); };
    EXPECT_EQ(coloursOf(captureDuring({10, 10, 5, 5}, make)), (Colours{0xff0000ff}));
}

TEST_F(CaptureSession, SeesAWindowThatMovesChangesItsSizeOrIsRestackedMeanwhile)
{
    const auto floor = m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    const auto window = m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0x0000ff});
    start();
    EXPECT_EQ(coloursOf(captureSettled({10, 10, 5, 5})), (Colours{0xff0000ff}));
    EXPECT_EQ(coloursOf(captureDuring({10, 10, 5, 5}, [&] { m_desktop.move(window, 100, 0); })), (Colours{0xff00ff00}));
    EXPECT_EQ(coloursOf(captureDuring({110, 60, 5, 5}, [&] { m_desktop.resize(window, 50, 100); })), (Colours{0xff0000ff}));
    EXPECT_EQ(coloursOf(captureDuring({110, 60, 5, 5}, [&] { m_desktop.restack(floor, XCB_STACK_MODE_ABOVE); })), (Colours{0xff00ff00}));
}

TEST_F(CaptureSession, SeesARootBackgroundThatChangesMeanwhile)
{
    m_desktop.setRootTile(tileOf(0x123456));
    start();
    showOverlay(1, {0, 0, 320, 100});
    EXPECT_EQ(coloursOf(captureSettled({10, 10, 5, 5})), (Colours{0xff123456}));
    EXPECT_EQ(coloursOf(captureDuring({10, 10, 5, 5}, [&] { m_desktop.setRootTile(tileOf(0x654321)); })), (Colours{0xff654321}));
}

TEST_F(CaptureSession, SeesAnOpacityThatChangesMeanwhile)
{
    takeCompositorSelection();
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x0000ff});
    const auto window = m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0xff0000});
    showOverlay(1, {0, 0, 320, 100});
    start();
    EXPECT_EQ(coloursOf(captureSettled({10, 10, 5, 5})), (Colours{0xffff0000}));
    EXPECT_EQ(coloursOf(captureDuring({10, 10, 5, 5}, [&] { m_desktop.setOpacity(window, 0x40404040); })), (Colours{0xff4000bf}));
}

TEST_F(CaptureSession, AsksAgainOnlyWhenWhatItCapturesHasChanged)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0x0000ff});
    const auto elsewhere = m_desktop.makeMappedWindow({.inner = {100, 100, 50, 50}, .colour = 0x00ff00});
    showOverlay(1, {0, 0, 320, 100});
    start();
    captureSettled({10, 10, 5, 5});
    const auto before = m_captureServer->roundTrips();
    captureDuring({10, 10, 5, 5}, [&] { m_desktop.move(elsewhere, 150, 100); });
    EXPECT_EQ(m_captureServer->roundTrips() - before, 1U);
    captureDuring({10, 10, 5, 5}, [&] { m_desktop.move(elsewhere, 0, 0); });
    EXPECT_EQ(m_captureServer->roundTrips() - before, 3U);
}

TEST_F(CaptureSession, GivesTransparentPixelsForARectangleOffTheScreen)
{
    start();
    for (const Rect rect : {Rect{-50, -50, 10, 10}, Rect{400, 10, 10, 10}}) {
        const auto captured = captureSettled(rect);
        EXPECT_EQ(captured.truth, CaptureTruth::exact);
        EXPECT_EQ(captured.image.width(), 10);
        EXPECT_EQ(coloursOf(captured), (Colours{0}));
    }
}

TEST_F(CaptureSession, BelievesNoScreenWhileACompositorHasJustCome)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0x0000ff});
    start();
    EXPECT_EQ(captureSettled({10, 10, 5, 5}).truth, CaptureTruth::exact);
    takeCompositorSelection();
    EXPECT_EQ(captureSettled({10, 10, 5, 5}).truth, CaptureTruth::recovered);
    EXPECT_TRUE(TestSupport::waitUntil([this] { return captureSettled({10, 10, 5, 5}).truth == CaptureTruth::exact; }));
}

// Compositors do not show the server's own background, but the wallpaper that somebody set,
// or grey.
TEST_F(CaptureSession, TakesTheBackgroundThatCompositorsShowWhileThereIsOne)
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

TEST_F(CaptureSession, TakesTheWallpaperThatCompositorsLookForFirst)
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

TEST_F(CaptureSession, TakesAWindowWithoutOpacityForOpaque)
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

TEST_F(CaptureSession, TakesTheOpacityOfTheClientInAFrameWhereTheCompositorManagesWindows)
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

TEST_F(CaptureSession, FindsAClientInsideAWrapper)
{
    takeCompositorSelection();
    manageWindows(m_desktop);
    start();
    const auto client = showFramedClient(2);
    EXPECT_EQ(coloursThere(), (Colours{0xff7f0080}));
    m_desktop.setOpacity(client, 0xc0c0c0c0);
    EXPECT_EQ(coloursThere(), (Colours{0xffc0003f}));
}

TEST_F(CaptureSession, PrefersTheOpacityOfTheFrame)
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

TEST_F(CaptureSession, LooksForClientsOnceTheirFrameIsMapped)
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

TEST_F(CaptureSession, TakesTheFrameAloneWhereAnotherProgramComposites)
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

TEST_F(CaptureSession, ListensToNoClientAtItsEnd)
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
