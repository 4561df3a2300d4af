// The capture against windows that change at random: every pixel must be the one that a
// model of the screen foretells, and the one that the screen shows.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <iostream>

#include "Platform/X11/Capture/X11ScreenCapture.h"
#include "Support/PrivateServer.h"
#include "Support/WaitUntil.h"
#include "X11/Capture/RandomDesktop.h"
#include "X11/Capture/TestedCanvasMemory.h"

namespace CaptureTests {
namespace {

using namespace Platform;
using namespace Platform::X11;

// More checks, and others, where the environment wants them.
int wantedNumber(const char* variable, int usual)
{
    const char* wanted = std::getenv(variable);
    return wanted != nullptr ? std::atoi(wanted) : usual;
}

int checkCount(int usual) { return wantedNumber("TARNWICK_CHECKS", usual); }

Rect asRect(const DeviceRect& r) { return {double(r.x), double(r.y), double(r.width), double(r.height)}; }

class CaptureChecker : public testing::Test {
protected:
    void start(bool hasCompositor)
    {
        const auto seed = static_cast<std::uint32_t>(wantedNumber("TARNWICK_SEED", 20240607));
        m_layout.set(MonitorLayout({{"MAIN", m_desktop.screen(), 1}}));
        m_random = std::make_unique<RandomDesktop>(m_desktop, m_stack, hasCompositor, seed);
        m_desktop.sync();
        m_capture->activate();
        std::cout << "seed " << seed << "\n";
    }

    void expectSame(const Image& picture, const Image& expected, const std::string& what)
    {
        ASSERT_EQ(picture.width(), expected.width()) << what;
        ASSERT_EQ(picture.height(), expected.height()) << what;
        long wrong = 0;
        std::string first;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (picture.pixel(x, y) == expected.pixel(x, y))
                    continue;
                if (wrong++ == 0)
                    first = std::to_string(x) + "," + std::to_string(y) + " is " + hex(picture.pixel(x, y)) + ", not " + hex(expected.pixel(x, y));
            }
        }
        EXPECT_EQ(wrong, 0) << what << ": " << first << "\n" << m_random->history();
        m_pixels += long{picture.width()} * picture.height();
        m_wrong += wrong;
    }

    static std::string hex(std::uint32_t value)
    {
        char text[16];
        std::snprintf(text, sizeof text, "%08x", value);
        return text;
    }

    // A compositor paints in its own time, and may leave a part unpainted until something
    // makes it paint everything. Once it was right it may pass through former orders of our
    // own windows again.
    void expectScreenAsForetold()
    {
        using namespace std::chrono_literals;
        const auto foretold = m_random->model().picture(m_desktop.screen());
        Image shown;
        const auto isAsForetold = [&] {
            shown = m_desktop.screenPicture();
            return shown == foretold;
        };
        if (!TestSupport::waitUntil(isAsForetold, 500ms)) {
            m_desktop.setRootTile(m_random->model().rootTile);
            ++m_nudges;
        }
        TestSupport::waitUntil(isAsForetold, 5s);
        expectSame(shown, foretold, "screen");
    }

    void checkCaptures()
    {
        const auto screen = m_desktop.screen();
        const auto pointer = m_random->pointer();
        const std::array<DeviceRect, 3> areas = {
            {{0, pointer.y, screen.width, 1}, {pointer.x, 0, 1, screen.height}, {pointer.x - 20, pointer.y - 20, 41, 41}}};
        const std::array<Rect, 3> rects = {asRect(areas[0]), asRect(areas[1]), asRect(areas[2])};
        for (const auto number : {RandomDesktop::crosshair, RandomDesktop::square}) {
            m_capture->windowsBelow(number, m_random->random(0, 1) == 0 ? CaptureResolution::nominal : CaptureResolution::best, rects, m_answers);
            for (std::size_t i = 0; i < areas.size(); ++i) {
                EXPECT_NE(m_answers[i].truth, CaptureTruth::none);
                expectSame(m_answers[i].image, m_random->expected(number, areas[i]), "below " + std::to_string(number));
            }
        }
    }

    // The same from the screen itself, without our windows for a moment.
    void compareWithBareScreen()
    {
        const auto screen = m_desktop.screen();
        const auto rect = asRect(screen);
        m_capture->windowsBelow(RandomDesktop::crosshair, CaptureResolution::best, {&rect, 1}, std::span(m_answers).first(1));
        m_random->setOverlaysMapped(false);
        m_desktop.sync();
        const auto matches = [&] { return m_desktop.screenPicture() == m_answers[0].image; };
        TestSupport::waitUntil(matches, std::chrono::seconds(5));
        expectSame(m_answers[0].image, m_desktop.screenPicture(), "bare screen");
        m_random->setOverlaysMapped(true);
        m_desktop.sync();
        ++m_bareChecks;
    }

    void check(int count)
    {
        for (int i = 0; i < count && m_wrong == 0 && !HasFatalFailure(); ++i) {
            m_random->change();
            if (i % 3 == 0)
                m_random->moveOverlays();
            m_desktop.sync();
            if (m_random->model().blends || i % 4 == 0)
                expectScreenAsForetold();
            checkCaptures();
            if (m_random->overlaysAreOnTop() && i % 5 == 0)
                compareWithBareScreen();
        }
        std::cout << count << " checks, " << m_bareChecks << " of them also against the bare screen, " << m_nudges << " after a nudge; " << m_pixels
                  << " pixels, " << m_wrong << " wrong\n";
        EXPECT_GT(m_bareChecks, 0);
    }

    TestSupport::PrivateServer m_server{"320x200x24"};
    Desktop m_desktop{m_server.displayName()};
    SharedMonitorLayout m_layout;
    OverlayStack m_stack;
    std::unique_ptr<X11ScreenCapture> m_capture = X11ScreenCapture::open(m_server.displayName(), m_layout, m_stack, testedCanvasMemory());
    std::unique_ptr<RandomDesktop> m_random;
    std::array<Captured, 3> m_answers;
    long m_pixels = 0;
    long m_wrong = 0;
    int m_bareChecks = 0;
    int m_nudges = 0;
};

TEST_F(CaptureChecker, HasNoWrongPixelWithoutACompositor)
{
    start(false);
    check(checkCount(1000));
}

TEST_F(CaptureChecker, HasNoWrongPixelUnderACompositor)
{
    const auto compositor = m_server.start({"picom", "--backend", "xrender", "--config", "/dev/null"});
    ASSERT_TRUE(TestSupport::waitUntil([&] { return m_desktop.connection().hasCompositor(); }));
    start(true);
    check(checkCount(300));
}

}  // namespace
}  // namespace CaptureTests
