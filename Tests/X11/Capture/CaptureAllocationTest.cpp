// What is captured at every tick allocates nothing once the capture's memories are full.
#include <utility>

#include "Support/AllocationCounter.h"
#include "Support/WaitUntil.h"
#include "X11/Capture/CaptureSetting.h"

namespace CaptureTests {
namespace {

using namespace Platform;

// More places than the capture remembers, at a pace: what lay somewhere for the last 300 ms
// counts as covered there, and no place is come to again so soon.
constexpr int places = 80;
constexpr std::chrono::milliseconds pace{5};

DevicePoint placeOf(int tick) { return {60 + 2 * (tick % places), 50 + tick % places}; }

class CaptureAllocation : public CaptureSetting {
protected:
    void startCompositor()
    {
        m_compositor = m_server.start({"picom", "--backend", "xrender", "--config", "/dev/null", "--shadow"});
        ASSERT_TRUE(TestSupport::waitUntil([this] { return m_desktop.connection().hasCompositor(); }));
    }

    void showForeign()
    {
        m_desktop.setRootTile(tileOf(0xffffff));
        m_foreign = m_desktop.makeMappedWindow({.inner = {60, 20, 100, 80}, .colour = 0x00ff00, .isOverrideRedirect = false});
        m_desktop.sync();
        m_capture->activate();
    }

    // What lies beneath changes now and then.
    void changeForeign(int tick)
    {
        if (tick % 3 == 0)
            m_desktop.fill(m_foreign, {0, 0, 50, 50}, static_cast<std::uint32_t>(tick % places));
    }

    // Of rounds of ticks, one does not in the end.
    template <typename Tick> static bool ceasesToAllocate(Tick&& tick)
    {
        return TestSupport::waitUntil([&] {
            const TestSupport::AllocationCounter counter;
            const auto start = std::chrono::steady_clock::now();
            for (int i = 0; i < places; ++i) {
                std::this_thread::sleep_until(start + i * pace);
                tick(i);
            }
            return counter.count() == 0;
        });
    }

    TestSupport::Process m_compositor;
    xcb_window_t m_foreign = XCB_WINDOW_NONE;
};

struct LoupeSetting {
    bool hasCompositor;
    bool mayBeRows;
};

// An outlined overlay that covers what is captured for it.
class LoupeCaptureAllocation : public CaptureAllocation, public testing::WithParamInterface<LoupeSetting> {
protected:
    static constexpr int side = 60;
    static constexpr int sampleSide = 10;
    static constexpr int toMiddle = 5;

    static DeviceRect frameAt(DevicePoint middle) { return {middle.x - side / 2, middle.y - side / 2, side, side}; }

    void showLoupe()
    {
        const auto frame = frameAt(placeOf(0));
        m_loupe = m_desktop.makeMappedWindow({.inner = frame, .colour = overlayColour});
        m_stack.set({{.windowNumber = 1, .pictures = {{m_loupe, frame}}, .isOutlined = true, .upcoming = frame}});
        m_desktop.sync();
    }

    void tick(int number)
    {
        if (number == 0)
            m_answersInRows = 0;
        const auto middle = placeOf(number);
        const auto frame = frameAt(middle);
        changeForeign(number);
        m_desktop.sync();
        m_stack.place(1, frame);
        m_answer.mayBeRows = GetParam().mayBeRows;
        const Rect rect{double(middle.x - toMiddle), double(middle.y - toMiddle), sampleSide, sampleSide};
        m_capture->windowsBelow(1, CaptureResolution::best, {&rect, 1}, {&m_answer, 1});
        m_answersInRows += m_answer.rows != nullptr ? 1 : 0;
        m_desktop.move(m_loupe, frame.x, frame.y);
        m_stack.movePicture(m_loupe, frame);
    }

    xcb_window_t m_loupe = XCB_WINDOW_NONE;
    Captured m_answer;
    int m_answersInRows = 0;
};

INSTANTIATE_TEST_SUITE_P(Settings, LoupeCaptureAllocation,
    testing::Values(LoupeSetting{false, false}, LoupeSetting{true, false}, LoupeSetting{true, true}), [](const auto& setting) {
        return std::string(setting.param.hasCompositor ? "UnderACompositor" : "WithoutACompositor") + (setting.param.mayBeRows ? "InRows" : "");
    });

TEST_P(LoupeCaptureAllocation, EndsWhileItMoves)
{
    if (GetParam().hasCompositor)
        startCompositor();
    showForeign();
    showLoupe();
    EXPECT_TRUE(ceasesToAllocate([this](int number) { tick(number); }));
    EXPECT_EQ(m_answer.truth, GetParam().hasCompositor ? CaptureTruth::recovered : CaptureTruth::exact);
    EXPECT_EQ(m_answersInRows > 0, GetParam().mayBeRows);
}

TEST_F(CaptureAllocation, EndsWhileACrosshairMovesUnderACompositor)
{
    startCompositor();
    showForeign();
    const std::array<xcb_window_t, 2> lines = {
        m_desktop.makeMappedWindow({.inner = {0, 50, 320, 1}, .colour = overlayColour}),
        m_desktop.makeMappedWindow({.inner = {60, 0, 1, 200}, .colour = overlayColour}),
    };
    m_stack.set({{1, {{lines[0], {0, 50, 320, 1}}, {lines[1], {60, 0, 1, 200}}}, XCB_WINDOW_NONE}});
    std::array<Captured, 2> answers;
    const auto tick = [&](int number) {
        const auto [x, y] = placeOf(number);
        changeForeign(number);
        m_desktop.sync();
        const std::array<Rect, 2> rects = {{{0, double(y), 320, 1}, {double(x), 0, 1, 200}}};
        m_capture->windowsBelow(1, CaptureResolution::nominal, rects, answers);
        m_desktop.move(lines[0], 0, y);
        m_desktop.move(lines[1], x, 0);
        m_stack.movePicture(lines[0], {0, y, 320, 1});
        m_stack.movePicture(lines[1], {x, 0, 1, 200});
    };
    EXPECT_TRUE(ceasesToAllocate(tick));
    EXPECT_EQ(answers[0].truth, CaptureTruth::recovered);
    EXPECT_EQ(answers[1].truth, CaptureTruth::recovered);
}

}  // namespace
}  // namespace CaptureTests
