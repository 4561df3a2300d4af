// What a session holds in the server, and what becomes of a capture when the screen changes
// between its questions and their answers.
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "Support/WaitUntil.h"
#include "X11/Capture/CaptureSessionFixture.h"

namespace CaptureTests {
namespace {

using namespace Platform;
using namespace Platform::X11;

class CaptureSession : public CaptureSessionFixture {
protected:
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
    // Held while the windows were there.
    const auto captureWindowsThatGo = [&] {
        const auto destroyed = m_desktop.makeMappedWindow({.inner = {0, 0, 50, 50}, .colour = 0x00ff00});
        const auto unmapped = m_desktop.makeMappedWindow({.inner = {60, 0, 50, 50}, .colour = 0x80400000, .isArgb = true});
        const auto captured = captureBeneathAnOverlay();
        EXPECT_EQ(captured.image.pixel(10, 10), 0xff00ff00);
        EXPECT_EQ(captured.image.pixel(70, 10), 0xff400000);
        auto held = resources();
        m_desktop.destroy(destroyed);
        m_desktop.unmap(unmapped);
        captureSettled({0, 0, 320, 200});
        return held;
    };
    captureWindowsThatGo();
    const auto before = resources();
    for (int i = 0; i < 10; ++i) {
        const auto held = captureWindowsThatGo();
        EXPECT_GT(held.at("PIXMAP"), before.at("PIXMAP"));
        EXPECT_GT(held.at("PICTURE"), before.at("PICTURE"));
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

// As many as it watched before the other overlay came.
TEST_F(CaptureSession, WatchesNoWindowsForAnOverlayThatIsGone)
{
    m_desktop.makeMappedWindow({.inner = {0, 0, 320, 200}, .colour = 0x00ff00});
    showOverlay(1, {0, 50, 320, 1});
    start();
    const auto watches = [this] { return resources()["DamageExt"]; };
    const auto rest = [&](std::uint32_t number, std::uint32_t expected) {
        return TestSupport::waitUntil([&] {
            captureNow({0, 50, 320, 1}, number);
            return watches() == expected;
        });
    };
    EXPECT_TRUE(rest(1, 1));
    showOverlay(2, {0, 70, 320, 1});
    EXPECT_TRUE(rest(2, 2));
    m_entries.pop_back();
    m_stack.set(m_entries);
    captureNow({0, 50, 320, 1});
    EXPECT_LE(watches(), 1U);
}

}  // namespace
}  // namespace CaptureTests
