// Where nothing changes, a caller who allows it is told so instead of being shown it again.
#include <chrono>
#include <thread>

#include "Platform/X11/Capture/StillScenes.h"
#include "Support/WaitUntil.h"
#include "X11/Capture/CaptureSetting.h"

namespace CaptureTests {
namespace {

using namespace Platform;
using namespace std::chrono_literals;

class StillScenesTest : public CaptureSetting {
protected:
    // A line over a window that reaches beyond it, as a crosshair has them.
    void SetUp() override
    {
        CaptureSetting::SetUp();
        m_desktop.setRootTile(tileOf(0xffffff));
        m_window = m_desktop.makeMappedWindow({.inner = {20, 20, 200, 100}, .colour = 0x00ff00});
        showOverlay(1, line);
        m_desktop.sync();
        m_capture->activate();
    }

    const Captured& captureAgain(const Rect& rect = lineRect, std::uint32_t number = 1)
    {
        m_desktop.sync();
        m_answer.mayBeStill = true;
        m_capture->windowsBelow(number, CaptureResolution::nominal, {&rect, 1}, {&m_answer, 1});
        return m_answer;
    }

    // With an answer that will not be given again for the while that the scene lasts.
    bool becomesStill(const Rect& rect = lineRect, std::uint32_t number = 1)
    {
        captureAgain({0, 0, 1, 1}, number);
        return TestSupport::waitUntil([&] {
            const auto now = std::chrono::steady_clock::now();
            if (captureAgain(rect, number).truth == CaptureTruth::still)
                return true;
            m_shown = now;
            return false;
        });
    }

    // What is told of a change may be on its way for a moment, but is not waited for until
    // all is shown again anyway.
    bool comesToShow(const Colours& colours)
    {
        return comesTo([&] { return coloursOf(captureAgain()) == colours; });
    }
    template <typename Condition> bool comesTo(Condition&& condition)
    {
        return TestSupport::waitUntil(condition) && std::chrono::steady_clock::now() - m_shown < soon;
    }

    // In the time in which a scene at rest would long be still.
    template <typename Capture> bool isEverStill(Capture&& capture)
    {
        const auto end = std::chrono::steady_clock::now() + 500ms;
        while (std::chrono::steady_clock::now() < end) {
            if (capture().truth == CaptureTruth::still)
                return true;
            std::this_thread::sleep_for(2ms);
        }
        return false;
    }

    static constexpr auto soon = Platform::X11::StillScenes::longestStillness - 100ms;
    static constexpr DeviceRect line = {0, 50, 320, 1};
    static constexpr Rect lineRect = {40, 50, 100, 1};
    xcb_window_t m_window = XCB_WINDOW_NONE;
    Captured m_answer;
    std::chrono::steady_clock::time_point m_shown;
};

TEST_F(StillScenesTest, AskTheServerForNothing)
{
    ASSERT_TRUE(becomesStill());
    const auto before = m_capture->roundTrips();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(captureAgain().truth, CaptureTruth::still);
    EXPECT_EQ(m_capture->roundTrips(), before);
}

TEST_F(StillScenesTest, LeaveTheAnswerAsItWas)
{
    ASSERT_TRUE(becomesStill());
    EXPECT_EQ(m_answer.image.width(), 100);
    EXPECT_EQ(coloursOf(m_answer), (Colours{0xff00ff00}));
}

TEST_F(StillScenesTest, AreShownAgainToACallerWhoKeepsNothing)
{
    EXPECT_FALSE(isEverStill([&] { return capture(lineRect); }));
    ASSERT_TRUE(becomesStill());
    EXPECT_EQ(coloursOf(capture(lineRect)), (Colours{0xff00ff00}));
}

TEST_F(StillScenesTest, AreNoneOfAMovingPlace)
{
    int step = 0;
    EXPECT_FALSE(isEverStill([&]() -> const Captured& { return captureAgain({20.0 + (++step % 2), 50, 100, 1}); }));
}

TEST_F(StillScenesTest, EndWithAnotherPlaceOrResolutionOrOverlay)
{
    ASSERT_TRUE(becomesStill());
    EXPECT_EQ(captureAgain({41, 50, 100, 1}).truth, CaptureTruth::exact);
    EXPECT_EQ(captureAgain().truth, CaptureTruth::exact);
    ASSERT_TRUE(becomesStill());
    m_capture->windowsBelow(1, CaptureResolution::best, {&lineRect, 1}, {&m_answer, 1});
    EXPECT_EQ(m_answer.truth, CaptureTruth::exact);
    EXPECT_EQ(captureAgain().truth, CaptureTruth::exact);
    ASSERT_TRUE(becomesStill());
    EXPECT_EQ(captureAgain(lineRect, 99).truth, CaptureTruth::exact);
    EXPECT_EQ(coloursOf(m_answer), (Colours{0xff000000 | overlayColour}));
}

TEST_F(StillScenesTest, ShowDrawingBeneathTheOverlay)
{
    for (const std::uint32_t colour : {0xff0000U, 0x0000ffU, 0x00ff00U}) {
        ASSERT_TRUE(becomesStill());
        m_desktop.fill(m_window, {0, 0, 200, 100}, colour);
        EXPECT_TRUE(comesToShow({0xff000000 | colour}));
    }
    ASSERT_TRUE(becomesStill());
    m_desktop.fill(m_window, {20, 30, 1, 1}, 0x123456);
    EXPECT_TRUE(comesToShow({0xff00ff00, 0xff123456}));
}

TEST_F(StillScenesTest, StayStillWhereDrawingIsElsewhere)
{
    ASSERT_TRUE(becomesStill());
    m_desktop.fill(m_window, {0, 40, 200, 60}, 0xff0000);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(captureAgain().truth, CaptureTruth::still);
    m_desktop.fill(m_window, {0, 0, 200, 40}, 0x0000ff);
    EXPECT_TRUE(comesToShow({0xff0000ff}));
}

TEST_F(StillScenesTest, ShowWindowsThatComeMoveAndGo)
{
    ASSERT_TRUE(becomesStill());
    const auto news = m_desktop.makeWindow({.inner = {40, 40, 30, 30}, .colour = 0x0000ff});
    m_desktop.restack(news, XCB_STACK_MODE_BELOW, m_entries[0].pictures[0].window);
    m_desktop.map(news);
    EXPECT_TRUE(comesToShow({0xff00ff00, 0xff0000ff}));
    ASSERT_TRUE(becomesStill());
    m_desktop.restack(news, XCB_STACK_MODE_BELOW);
    EXPECT_TRUE(comesToShow({0xff00ff00}));
    ASSERT_TRUE(becomesStill());
    m_desktop.move(m_window, 100, 20);
    EXPECT_TRUE(comesToShow({0xff00ff00, 0xff0000ff, 0xffffffff}));
    ASSERT_TRUE(becomesStill());
    const std::array<DeviceRect, 1> half = {{{20, 0, 50, 100}}};
    m_desktop.setShape(m_window, half);
    EXPECT_TRUE(comesTo([&] { return captureAgain().image.pixel(70, 0) == 0xffffffff; }));
    ASSERT_TRUE(becomesStill());
    m_desktop.unmap(news);
    EXPECT_TRUE(comesToShow({0xff00ff00, 0xffffffff}));
    ASSERT_TRUE(becomesStill());
    m_desktop.destroy(m_window);
    EXPECT_TRUE(comesToShow({0xffffffff}));
}

TEST_F(StillScenesTest, AreShownAgainAfterAWhile)
{
    ASSERT_TRUE(becomesStill());
    EXPECT_TRUE(TestSupport::waitUntil([&] { return captureAgain().truth == CaptureTruth::exact; }));
    EXPECT_EQ(captureAgain().truth, CaptureTruth::still);
}

TEST_F(StillScenesTest, ShowANewRootBackground)
{
    m_desktop.destroy(m_window);
    ASSERT_TRUE(TestSupport::waitUntil([&] { return coloursOf(captureAgain()) == Colours{0xffffffff}; }));
    ASSERT_TRUE(becomesStill());
    m_desktop.setRootTile(tileOf(0x123456));
    EXPECT_TRUE(comesToShow({0xff123456}));
}

TEST_F(StillScenesTest, AreToldOfEachOverlay)
{
    const DeviceRect upper = {40, 40, 30, 30};
    showOverlay(2, upper);
    const auto areBothStill = [&] {
        const bool isFirst = captureAgain().truth == CaptureTruth::still;
        return captureAgain({45, 45, 10, 10}, 2).truth == CaptureTruth::still && isFirst;
    };
    ASSERT_TRUE(becomesStill());
    EXPECT_TRUE(TestSupport::waitUntil(areBothStill));
    // The lower overlay is drawn in: the upper one sees that.
    m_desktop.fill(m_entries[0].pictures[0].window, {0, 0, 320, 1}, 0xff0000);
    EXPECT_TRUE(comesTo([&] { return coloursOf(captureAgain({45, 45, 10, 10}, 2)) == Colours{0xff00ff00, 0xffff0000}; }));
    EXPECT_EQ(captureAgain().truth, CaptureTruth::still);
}

TEST_F(StillScenesTest, AreAllOfARequestOrNone)
{
    const std::array<Rect, 2> rects = {{{40, 50, 100, 1}, {60, 30, 1, 60}}};
    showOverlay(1, {60, 0, 1, 200});
    std::array<Captured, 2> answers;
    const auto capture = [&] {
        m_desktop.sync();
        m_capture->windowsBelow(1, CaptureResolution::nominal, rects, answers);
        return answers[0].truth == CaptureTruth::still || answers[1].truth == CaptureTruth::still;
    };
    answers[0].mayBeStill = true;
    EXPECT_FALSE(isEverStill([&]() -> const Captured& {
        capture();
        return answers[0];
    }));
    answers[1].mayBeStill = true;
    m_shown = std::chrono::steady_clock::now();
    EXPECT_TRUE(TestSupport::waitUntil(capture));
    EXPECT_EQ(answers[0].truth, answers[1].truth);
    m_desktop.fill(m_window, {40, 60, 1, 1}, 0xff0000);
    EXPECT_TRUE(comesTo([&] { return !capture(); }));
    EXPECT_EQ(coloursOf(answers[0]), (Colours{0xff00ff00}));
    EXPECT_EQ(coloursOf(answers[1]), (Colours{0xff00ff00, 0xffff0000}));
}

TEST_F(StillScenesTest, AreShownAnewOnceTheCaptureIsActiveAgain)
{
    ASSERT_TRUE(becomesStill());
    m_capture->deactivate();
    m_capture->activate();
    EXPECT_EQ(captureAgain().truth, CaptureTruth::exact);
    EXPECT_TRUE(becomesStill());
}

TEST_F(StillScenesTest, HaveNoPlaceWithoutAMonitor)
{
    ASSERT_TRUE(becomesStill());
    useMonitors({{"OTHER", {0, 0, 100, 100}, 1}});
    EXPECT_NE(captureAgain().truth, CaptureTruth::still);
    EXPECT_EQ(m_answer.image.pixel(99, 0), 0U);
}

class StillScenesUnderCompositor : public StillScenesTest {
protected:
    void SetUp() override
    {
        m_compositor = m_server.start({"picom", "--backend", "xrender", "--config", "/dev/null", "--shadow"});
        ASSERT_TRUE(TestSupport::waitUntil([this] { return m_desktop.connection().hasCompositor(); }));
        StillScenesTest::SetUp();
    }

    TestSupport::Process m_compositor;
};

TEST_F(StillScenesUnderCompositor, AskTheServerForNothingAndShowDrawing)
{
    ASSERT_TRUE(becomesStill());
    const auto before = m_capture->roundTrips();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(captureAgain().truth, CaptureTruth::still);
    EXPECT_EQ(m_capture->roundTrips(), before);
    m_desktop.fill(m_window, {0, 0, 200, 100}, 0x0000ff);
    EXPECT_TRUE(comesToShow({0xff0000ff}));
    EXPECT_TRUE(becomesStill());
}

// A compositor paints late, and more than windows.
TEST_F(StillScenesUnderCompositor, AreNoneWhereTheScreenIsRead)
{
    EXPECT_FALSE(isEverStill([&]() -> const Captured& { return captureAgain({40, 60, 100, 1}); }));
    EXPECT_FALSE(isEverStill([&]() -> const Captured& { return captureAgain({40, 50, 100, 2}); }));
    EXPECT_TRUE(becomesStill());
}

TEST_F(StillScenesUnderCompositor, EndWithTheCompositor)
{
    ASSERT_TRUE(becomesStill());
    m_compositor.kill();
    EXPECT_TRUE(TestSupport::waitUntil([&] { return captureAgain().truth == CaptureTruth::exact; }));
    EXPECT_TRUE(becomesStill());
}

}  // namespace
}  // namespace CaptureTests
