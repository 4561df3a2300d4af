#include "Platform/X11/Capture/CoverHistory.h"

#include <gtest/gtest.h>

namespace CaptureTests {
namespace {

using namespace Platform::X11;
using namespace std::chrono_literals;

constexpr xcb_window_t strip = 0x600001;
constexpr xcb_window_t other = 0x600002;

class CoverHistory : public testing::Test {
protected:
    using Rects = std::vector<DeviceRect>;

    void show(const DeviceRect& frame, std::chrono::milliseconds when)
    {
        m_history.update(std::vector<OverlayEntry>{{1, {{strip, frame}}, XCB_WINDOW_NONE}}, Platform::X11::CoverHistory::Time(when));
    }

    Rects covered() const
    {
        Region region;
        m_history.findCovered({0, 0, 9, 1}, m_model, m_below, region);
        return {region.rects().begin(), region.rects().end()};
    }

    void addWindow(xcb_window_t id, const DeviceRect& frame)
    {
        auto& window = *m_model.add(id);
        m_model.setGeometry(window, frame, 0);
        m_model.setMapped(window, true);
        window.needsAttributes = false;
    }

    Platform::X11::CoverHistory m_history;
    StackModel m_model{{0x1e0, 0x200000, 0x1fffff, 0, 0, {}}};
    BelowOverlay m_below{0, {strip}};
};

TEST_F(CoverHistory, CountsTheMomentFromTheLastTimeThatAWindowLayThere)
{
    show({0, 0, 1, 1}, 0ms);
    show({0, 0, 1, 1}, 1000ms);
    EXPECT_EQ(covered(), (Rects{{0, 0, 1, 1}}));
    show({5, 0, 1, 1}, 1300ms);
    EXPECT_EQ(covered(), (Rects{{0, 0, 1, 1}, {5, 0, 1, 1}}));
    show({5, 0, 1, 1}, 1301ms);
    EXPECT_EQ(covered(), (Rects{{5, 0, 1, 1}}));
}

TEST_F(CoverHistory, CountsAWindowThatComesBackToAPlaceAnew)
{
    show({0, 0, 1, 1}, 0ms);
    show({5, 0, 1, 1}, 200ms);
    show({0, 0, 1, 1}, 400ms);
    show({5, 0, 1, 1}, 600ms);
    EXPECT_EQ(covered(), (Rects{{0, 0, 1, 1}, {5, 0, 1, 1}}));
    show({5, 0, 1, 1}, 701ms);
    EXPECT_EQ(covered(), (Rects{{5, 0, 1, 1}}));
}

TEST_F(CoverHistory, CountsOurWindowsWhereTheServerStillHasThem)
{
    addWindow(strip, {3, 0, 2, 1});
    addWindow(other, {7, 0, 1, 1});
    m_below.top = 2;
    EXPECT_EQ(covered(), (Rects{{3, 0, 2, 1}}));
    m_below.leftOut.clear();
    EXPECT_EQ(covered(), Rects{});
    m_below.top = 1;
    EXPECT_EQ(covered(), (Rects{{7, 0, 1, 1}}));
}

TEST_F(CoverHistory, CountsOnlyWhatLiesInTheArea)
{
    show({-5, 0, 7, 3}, 0ms);
    EXPECT_EQ(covered(), (Rects{{0, 0, 2, 1}}));
    show({}, 1ms);
    EXPECT_EQ(covered(), (Rects{{0, 0, 2, 1}}));
}

}  // namespace
}  // namespace CaptureTests
