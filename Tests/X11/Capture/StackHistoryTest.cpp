#include "Platform/X11/Capture/StackHistory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace CaptureTests {
namespace {

using namespace Platform::X11;
using namespace std::chrono_literals;

constexpr xcb_window_t low = 0x600001;
constexpr xcb_window_t middle = 0x600002;
constexpr xcb_window_t high = 0x600003;
constexpr xcb_window_t ours = 0x700001;

// Windows far apart, and areas in the middle of each: shadows reach 40 pixels.
class StackHistory : public testing::Test {
protected:
    StackHistory()
    {
        add(low, 0);
        add(middle, 200);
        add(high, 400);
        update(0ms);
    }

    ToplevelWindow& add(xcb_window_t id, int x)
    {
        auto& window = *m_model.add(id);
        window.needsAttributes = false;
        m_model.setGeometry(window, {x, 0, 100, 100}, 0);
        m_model.setMapped(window, true);
        return window;
    }

    void update(std::chrono::milliseconds when) { m_history.update(m_model, m_overlays, Platform::X11::StackHistory::Time(when)); }

    // The windows' numbers in which the middle counts as changed, as a text.
    std::string changed() const
    {
        std::string numbers;
        for (int i = 0; i < 4; ++i) {
            Region region;
            m_history.addRecent({200 * i + 50, 50, 1, 1}, region);
            if (!region.isEmpty())
                numbers += std::to_string(i);
        }
        return numbers;
    }

    template <typename Event> void handle(Event event, std::uint8_t type)
    {
        event.response_type = type;
        alignas(xcb_generic_event_t) char bytes[sizeof(xcb_generic_event_t)] = {};
        std::memcpy(bytes, &event, sizeof event);
        m_model.handle(reinterpret_cast<const xcb_generic_event_t&>(bytes));
    }
    void raise(xcb_window_t window, xcb_window_t above, int x)
    {
        xcb_configure_notify_event_t event{};
        event.event = root;
        event.window = window;
        event.above_sibling = above;
        event.x = static_cast<std::int16_t>(x);
        event.width = 100;
        event.height = 100;
        handle(event, XCB_CONFIGURE_NOTIFY);
    }

    static constexpr xcb_window_t root = 0x1e0;
    Platform::X11::StackHistory m_history;
    StackModel m_model{{root, 0x200000, 0x1fffff, 0, 0, {}}};
    std::vector<OverlayEntry> m_overlays{{1, {{ours, {200, 0, 100, 1}}}, XCB_WINDOW_NONE}};
};

TEST_F(StackHistory, TakesWhatIsThereAtFirstForOld) { EXPECT_EQ(changed(), ""); }

TEST_F(StackHistory, RemembersAWindowThatCameForAMoment)
{
    add(0x600004, 600);
    update(100ms);
    EXPECT_EQ(changed(), "3");
    update(400ms);
    EXPECT_EQ(changed(), "3");
    update(401ms);
    EXPECT_EQ(changed(), "");
}

TEST_F(StackHistory, RemembersAWindowThatWent)
{
    m_model.setMapped(*m_model.find(middle), false);
    update(1ms);
    EXPECT_EQ(changed(), "1");
}

TEST_F(StackHistory, RemembersBothPlacesOfAWindowThatMoved)
{
    raise(high, middle, 600);
    update(1ms);
    EXPECT_EQ(changed(), "23");
}

TEST_F(StackHistory, RemembersWindowsThatLieInAnotherOrder)
{
    raise(low, middle, 0);
    update(1ms);
    EXPECT_EQ(changed(), "01");
}

TEST_F(StackHistory, RemembersAWindowOfAnotherOpacity)
{
    m_model.find(low)->opacity = 0x80000000;
    update(1ms);
    EXPECT_EQ(changed(), "0");
}

TEST_F(StackHistory, KnowsWhereAShadowReaches)
{
    m_model.setMapped(*m_model.find(low), false);
    update(1ms);
    Region region;
    m_history.addRecent({135, 50, 20, 1}, region);
    EXPECT_EQ((std::vector<DeviceRect>{region.rects().begin(), region.rects().end()}), (std::vector<DeviceRect>{{135, 50, 5, 1}}));
}

TEST_F(StackHistory, LeavesOurOwnWindowsOut)
{
    add(ours, 200);
    update(1ms);
    EXPECT_EQ(changed(), "");
    raise(ours, high, 600);
    update(2ms);
    EXPECT_EQ(changed(), "");
}

}  // namespace
}  // namespace CaptureTests
